"""The module itself: names, signature, stubs, where it can be imported from."""
import ast
import inspect
import pathlib
import shutil
import subprocess
import sys

import context_delta
import pytest

STUBS = pathlib.Path(context_delta.__file__).parent / "context_delta-stubs"


def run(code, *arguments, path=()):
    """Runs code in a new interpreter, where the folders of `path` come first."""
    code = f"import sys; sys.path[:0] = {[str(each) for each in path]!r}\n{code}"
    result = subprocess.run([sys.executable, "-c", code, *map(str, arguments)], text=True,
                            capture_output=True)
    assert result.returncode == 0, result.stderr
    return result.stdout


def test_constants():
    assert (context_delta.CALLER_LOOKUPS, context_delta.CALLERS_PER_SYMBOL) == (20, 10)
    assert (context_delta.SNIPPET_FILES, context_delta.SNIPPET_LINES) == (10, 40)
    assert context_delta._SHARES == {"files": 0.4, "symbols": 0.35, "callers": 0.25}


def test_the_operation_shows_its_signature_and_summary():
    operation = context_delta.handle_build_delta_context_pack
    parameters = inspect.signature(operation).parameters
    assert {name: each.default for name, each in parameters.items()} == {
        "repository": inspect.Parameter.empty, "repo_root": inspect.Parameter.empty,
        "base_branch": None, "target_branch": None, "token_budget": 4000,
        "include_call_graph": True, "include_snippets": False, "source_only": True,
        "wiki_lens": None}
    assert operation.__doc__.splitlines()[0] == (
        "The changes of a branch since it left its base, within a token budget.")


def test_the_stubs_name_what_the_module_has():
    tree = ast.parse((STUBS / "__init__.pyi").read_text())
    assert (STUBS / "py.typed").exists()
    stubbed = {}
    for node in tree.body:
        if isinstance(node, (ast.ClassDef, ast.FunctionDef)):
            stubbed[node.name] = node
        elif isinstance(node, ast.AnnAssign) and node.target.id != "_Path":
            stubbed[node.target.id] = node
    stubbed = {name: node for name, node in stubbed.items() if name not in (
        "_ServerRepository", "_WikiLens")}
    public = {name for name in dir(context_delta) if not name.startswith("_")}
    assert public == {name for name in stubbed if not name.startswith("_")}
    for name, node in stubbed.items():
        if isinstance(node, ast.ClassDef):
            members = {each.name for each in node.body if isinstance(each, ast.FunctionDef)}
            known = set(vars(getattr(context_delta, name)))
            assert members <= known, name
            assert {each for each in known if not each.startswith("_")} <= members, name


@pytest.fixture
def server_on_disk(tmp_path):
    """The packages of a server, with just what is read when the extension is loaded."""
    for package in ("workers", "tool_handlers"):
        (tmp_path / package).mkdir()
        (tmp_path / package / "__init__.py").touch()
    (tmp_path / "workers" / "git_history.py").write_text("SYMBOLS_PER_ROW = 31\n")
    return tmp_path


def test_it_works_inside_the_servers_package_and_beside_a_copy_of_itself(server_on_disk):
    """One file under two names as well: a link is the same file to the loader."""
    module = pathlib.Path(context_delta.__file__)
    shutil.copy(module, server_on_disk / "tool_handlers")
    (server_on_disk / "utils").mkdir()
    (server_on_disk / "utils" / module.name).symlink_to(module)
    code = """
import context_delta, tool_handlers.context_delta as placed, utils.context_delta as linked
print(placed.__name__, placed.SYMBOLS_PER_FILE, context_delta.SYMBOLS_PER_FILE)
for module in (context_delta, placed, linked):
    try: module.Repository("/nowhere")
    except module.GitHistoryError as error: print(type(error).__name__)
"""
    out = run(code, path=[server_on_disk, module.parent])
    assert out.splitlines() == ["tool_handlers.context_delta 31 31"] + ["GitHistoryError"] * 3


def test_the_limit_is_read_once_when_the_module_is_loaded(server_on_disk):
    code = """
import context_delta, workers.git_history
workers.git_history.SYMBOLS_PER_ROW = 1
print(context_delta.SYMBOLS_PER_FILE)
"""
    assert run(code, path=[server_on_disk, STUBS.parent]) == "31\n"
    assert run("import context_delta; print(context_delta.SYMBOLS_PER_FILE)",
               path=[STUBS.parent]) == "50\n"


def test_a_server_that_cannot_be_loaded_says_why(server_on_disk):
    (server_on_disk / "workers" / "git_history.py").write_text("import no_such_module_at_all\n")
    code = """
try: import context_delta
except ModuleNotFoundError as error: print(error.name)
"""
    assert run(code, path=[server_on_disk, STUBS.parent]) == "no_such_module_at_all\n"


def test_help_is_written_for_every_name():
    for name in dir(context_delta):
        value = getattr(context_delta, name)
        if inspect.isclass(value) or inspect.isbuiltin(value):
            assert inspect.getdoc(value), name

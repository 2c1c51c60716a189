"""The native handle on real repositories: no server, the same pack as the command line."""
import json
import os
import pathlib
import subprocess
import sys
import threading

import context_delta
import pytest

PROGRAM = pathlib.Path(context_delta.__file__).parent.parent / "bin" / "context-delta"
GIT = ["git", "-c", "user.name=Ann", "-c", "user.email=ann@example.org"]
ENVIRONMENT = {"PATH": os.environ["PATH"], "HOME": "/nonexistent", "GIT_CONFIG_NOSYSTEM": "1",
               "GIT_AUTHOR_DATE": "2020-01-01T00:00:00Z",
               "GIT_COMMITTER_DATE": "2020-01-01T00:00:00Z"}


def git(root, *arguments):
    return subprocess.run([*GIT, "-C", root, *arguments], check=True, capture_output=True,
                          text=True, env=ENVIRONMENT).stdout


def commit(root, files):
    for name, text in files.items():
        path = root / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(text)
    git(root, "add", "-A")
    git(root, "commit", "-qm", "a change")


@pytest.fixture
def root(tmp_path):
    """A branch that changes a function with a caller, a page of a wiki about it, odd names."""
    root = tmp_path / "repository"
    root.mkdir()
    git(root, "init", "-qb", "main")
    commit(root, {"store.py": "def load():\n    return 1\n\n\ndef keep():\n    return 2\n",
                  "app.py": "from store import load\n\n\ndef run():\n    return load()\n",
                  "wiki/store.md": "---\nsources: [store.py]\n---\n# The store\n"})
    git(root, "checkout", "-qb", "topic")
    commit(root, {"store.py": "def load():\n    return 'größer'\n\n\ndef keep():\n    return 2\n",
                  "näme.py": "def new():\n    pass\n"})
    return root


def printed_pack(root, *options):
    result = subprocess.run([PROGRAM, "delta", "-C", root, "--format", "json", *options],
                            capture_output=True, text=True, env=ENVIRONMENT)
    assert result.returncode in (0, 3), result.stderr
    return result.stdout


def text_of(pack):
    return json.dumps(pack, ensure_ascii=False, separators=(",", ":")) + "\n"


@pytest.mark.parametrize("named,options", [
    ({}, []),
    ({"token_budget": 300}, ["--budget", "300"]),
    ({"include_snippets": True, "source_only": False}, ["--snippets", "--all-files"]),
    ({"include_call_graph": False}, ["--no-call-graph"]),
    ({"base_branch": "main", "target_branch": "topic"}, ["--base", "main", "--target", "topic"]),
    ({"base_branch": "topic"}, ["--base", "topic"]),
    ({"wiki_lens": "wiki"}, ["--wiki", "wiki"])])
def test_the_pack_is_that_of_the_command_line(root, named, options):
    if "wiki_lens" in named:
        named = {"wiki_lens": context_delta.WikiLens(root / "wiki")}
        options = ["--wiki", root / "wiki"]
    with context_delta.Repository(root) as repository:
        pack = context_delta.handle_build_delta_context_pack(repository, root, **named)
    assert text_of(pack) == printed_pack(root, *options)
    assert "error" not in pack


def test_a_missing_branch_is_the_error_result(root):
    pack = context_delta.handle_build_delta_context_pack(context_delta.Repository(root), str(root),
                                                         "nowhere")
    assert "nowhere" in pack["error"] and pack["affected_files"] == []
    pack = context_delta.handle_build_delta_context_pack(context_delta.Repository(root), root,
                                                         target_branch="nowhere")
    assert "target_branch" in pack["error"]


def test_the_index_answers_for_itself(root, tmp_path):
    repository = context_delta.Repository(os.fsencode(root / "wiki"), index=tmp_path / "own.sqlite")
    assert repository.root == root and repository.db.path == tmp_path / "own.sqlite"
    phases = []
    report = repository.update(lambda phase, done, total: phases.append((phase, done <= total)))
    assert (report.files, report.parsed, report.up_to_date) == (3, 3, False)
    assert {("parsing", True), ("resolving", True)} <= set(phases)
    assert repository.update().up_to_date
    [load] = repository.symbols_on_lines({"store.py": [(2, 2)]})
    assert (load.fqn, load.start_line, load.end_line) == ("store.load", 1, 2)
    [caller] = repository.callers_of([load.id])
    assert (caller.of, caller.fqn, caller.call_line, caller.total) == (load.id, "app.run", 5, 1)
    assert repository.callers_of([load.id], guessed=True) == []
    assert repository.callers_of([], limit=3) == []
    impact = repository.file_impact(["store.py", "unknown.py"])
    assert list(impact) == ["store.py"] and impact["store.py"].language == "python"


def test_an_update_that_is_given_up_leaves_the_index_as_it_was(root):
    repository = context_delta.Repository(root)
    for failure in (ValueError("enough"), KeyboardInterrupt()):
        def progress(*_):
            raise failure
        with pytest.raises(type(failure)) as raised:
            repository.update(progress)
        assert raised.value is failure
    assert repository.symbols_on_lines({"store.py": [(1, 9)]}) == []
    with pytest.raises(RuntimeError, match="progress"):
        repository.update(lambda *_: repository.update())
    assert not repository.update().up_to_date


def test_an_interrupt_ends_an_update(root):
    """The signal comes while the indexer works, which no Python code notices."""
    code = """
import context_delta, os, signal, sys
def progress(phase, done, total):
    if phase == "resolving": os.kill(os.getpid(), signal.SIGINT)
try: context_delta.Repository(sys.argv[1]).update(progress)
except KeyboardInterrupt: print("interrupted")
"""
    result = subprocess.run([sys.executable, "-c", code, root], capture_output=True, text=True,
                            env={"PYTHONPATH": ":".join(sys.path), "PATH": os.environ["PATH"]})
    assert (result.stdout, result.stderr) == ("interrupted\n", "")


def test_errors_have_types_of_their_own(root, tmp_path):
    with pytest.raises(context_delta.GitHistoryError, match="not a git repository"):
        context_delta.Repository(tmp_path)
    (tmp_path / "folder").mkdir()
    repository = context_delta.Repository(root, index=tmp_path / "folder")
    for use in (repository.update, lambda: repository.callers_of([1]),
                lambda: context_delta.handle_build_delta_context_pack(repository, root)):
        with pytest.raises(context_delta.RepositoryIndexError, match="folder"):
            use()
    repository = context_delta.Repository(root)
    with pytest.raises(context_delta.WikiError, match="nowiki"):
        context_delta.handle_build_delta_context_pack(
            repository, root, wiki_lens=context_delta.WikiLens(tmp_path / "nowiki"))
    for arguments in ({"wiki_lens": object()}, {"base_branch": 7}, {"token_budget": "many"},
                      {"token_budget": 1.5}):
        with pytest.raises(TypeError):
            context_delta.handle_build_delta_context_pack(repository, root, **arguments)
    for wrong in (3, None, "a\0b"):
        with pytest.raises((TypeError, ValueError)):
            context_delta.Repository(wrong)
    repository.close()
    with pytest.raises(ValueError, match="closed"):
        context_delta.handle_build_delta_context_pack(repository, root)


def test_the_root_is_one_of_the_repository(root, tmp_path):
    subprocess.run(["git", "clone", "-q", root, tmp_path / "other"], check=True)
    subprocess.run(["git", "-C", root, "worktree", "add", "-q", tmp_path / "linked"], check=True)
    repository = context_delta.Repository(root)
    with pytest.raises(ValueError, match="other is not in the repository"):
        context_delta.handle_build_delta_context_pack(repository, tmp_path / "other")
    pack = context_delta.handle_build_delta_context_pack(repository, tmp_path / "linked")
    assert "error" not in pack


def test_budgets_of_any_size(root):
    repository = context_delta.Repository(root)
    all_rows = context_delta.handle_build_delta_context_pack(repository, root,
                                                             token_budget=10**30)
    assert not all_rows["truncated"] and len(all_rows["affected_files"]) == 2
    none = context_delta.handle_build_delta_context_pack(repository, root, token_budget=-10**30)
    assert none["files_omitted"] == 2 and none["tokens_used"] == 0
    pages = context_delta.handle_build_delta_context_pack(
        repository, root, token_budget=-2**63, wiki_lens=context_delta.WikiLens(root / "wiki"))
    assert pages["wiki_pages"] and pages["files_omitted"] == 2


def test_a_lens_tells_a_server_too(root):
    lens = context_delta.WikiLens(root / "wiki")
    [page] = lens.pages_citing(iter(["store.py", "app.py"]))
    assert (page["page"], page["sources"], page["stale"]) == ("store.md", ["store.py"], True)


def test_threads_share_a_handle_and_run_side_by_side(root):
    """Other threads go on while git and the index work."""
    repository = context_delta.Repository(root)
    expected = context_delta.handle_build_delta_context_pack(repository, root)
    packs = []
    threads = [threading.Thread(target=lambda: packs.extend(
        context_delta.handle_build_delta_context_pack(repository, root) for _ in range(3)))
        for _ in range(6)]
    ticks = 0
    for thread in threads:
        thread.start()
    while any(thread.is_alive() for thread in threads):
        ticks += 1
    assert packs == [expected] * 18
    assert ticks > 100

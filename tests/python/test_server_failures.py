"""What a server raises arrives as it was raised."""
import sys
import traceback

import context_delta
import pytest

from toy_server import GitHistoryError, Record, World, change_of, changes_of

OPERATIONS = ["branch_changes", "resolve_commit", "file_impact", "is_source_path", "change_row",
              "changed_line_spans", "line_ranges", "symbols_on_lines", "count_symbols_on_lines",
              "callers_of", "estimate_tokens", "read_repo_text", "guessed_caller_row",
              "pages_citing"]


def full_world(**attributes):
    """A world in which every operation is called."""
    symbol = Record(id=1, path="a", start_line=1, end_line=1, fqn="f", name="f", kind="k",
                    signature=None)
    caller = Record(of=1, total=1, fqn="g", name="g", kind="k", path="b", line=1, call_line=1)
    return World(changes=changes_of([change_of("a")]), impact={"a": Record(
        references=1, symbols=1, language="python")}, spans={"a": [Record(start=1, end=1)]},
        symbols=[symbol], total_symbols=1, proven=[caller], guessed=[caller], texts={"a": "line\n"},
        pages=["page"], **attributes)


def pack_of(server):
    return context_delta.handle_build_delta_context_pack(
        server.repository, "root", "main", "topic", include_snippets=True, wiki_lens=server.lens)


def test_the_full_world_calls_every_operation(serve):
    server = serve(full_world())
    pack_of(server)
    assert {name for name, *_ in server.calls if name != "db"} == set(OPERATIONS)


@pytest.mark.parametrize("operation", OPERATIONS)
@pytest.mark.parametrize("kind", [ValueError, KeyboardInterrupt, SystemExit, StopIteration])
def test_an_exception_arrives_with_its_type_value_and_traceback(serve, operation, kind):
    failure = kind("reason", 7)
    with pytest.raises(kind) as raised:
        pack_of(serve(full_world(failing=operation, failure=failure)))
    assert raised.value is failure and failure.__context__ is None
    assert [frame.name for frame in traceback.extract_tb(failure.__traceback__)][-1] == "note"


@pytest.mark.parametrize("operation", OPERATIONS)
def test_a_git_history_error_from_anywhere_is_the_error_result(serve, operation):
    server = serve(full_world(failing=operation, failure=GitHistoryError("no such branch")))
    assert pack_of(server)["error"] == "no such branch"


@pytest.mark.parametrize("name,operation,lost", [
    ("changes", None, ["files", "base_branch", "head_commit"]),
    ("change", None, ["path", "status", "additions"]),
    ("impact", None, ["references", "language"]),
    ("span", None, ["start", "end"]),
    ("symbol", None, ["id", "path", "start_line", "fqn", "signature"]),
    ("caller", None, ["of", "total", "fqn", "call_line"])])
def test_a_record_without_an_attribute_says_which(serve, name, operation, lost):
    for attribute in lost:
        world = full_world()
        record = {"changes": world.changes, "change": world.changes.files[0],
                  "impact": world.impact["a"], "span": world.spans["a"][0],
                  "symbol": world.symbols[0], "caller": world.proven[0]}[name]
        delattr(record, attribute)
        with pytest.raises(AttributeError, match=f"'{attribute}'"):
            pack_of(serve(world))


def test_records_of_unknown_files_and_symbols_are_missing_keys(serve):
    stray = Record(id=1, path="elsewhere", start_line=1, end_line=1, fqn="f", name="f", kind="k",
                   signature=None)
    server = serve(full_world())
    server.serve("storage.repository_changes", symbols_on_lines=lambda *_, **__: [stray])
    with pytest.raises(KeyError) as raised:
        pack_of(server)
    assert raised.value.args == ("elsewhere",)

    server = serve(full_world())
    server.repository.callers_of = lambda ids, guessed, limit: [Record(of=(9, "x"))]
    with pytest.raises(KeyError) as raised:
        pack_of(server)
    assert raised.value.args == ((9, "x"),)


def test_what_cannot_be_a_key_is_a_type_error(serve):
    world = full_world()
    world.symbols[0].id = []
    with pytest.raises(TypeError, match="unhashable"):
        pack_of(serve(world))


@pytest.mark.parametrize("module", ["workers.git_history", "tool_handlers.context_docs"])
def test_a_module_that_is_gone_is_missed_by_name(serve, module):
    server = serve(full_world())
    pack_of(server)
    del sys.modules[module]
    with pytest.raises(ModuleNotFoundError, match=module.replace(".", r"\.")):
        pack_of(server)


def test_an_error_that_is_no_class_catches_nothing(serve):
    server = serve(full_world(failing="branch_changes", failure=ValueError("bad")))
    sys.modules["workers.git_history"].GitHistoryError = "no class"
    with pytest.raises(ValueError, match="bad"):
        pack_of(server)


def test_a_text_that_is_no_string_is_a_type_error(serve):
    world = full_world()
    world.texts["a"] = b"bytes"
    with pytest.raises(TypeError, match="string"):
        pack_of(serve(world))


@pytest.mark.parametrize("arguments,named", [((), {}), (("r",), {}), (("r", "p") + (1,) * 8, {}),
                                             (("r", "p"), {"budget": 1}),
                                             (("r", "p"), {"repository": 1})])
def test_wrong_arguments_are_a_type_error_that_names_the_function(arguments, named):
    with pytest.raises(TypeError, match="handle_build_delta_context_pack"):
        context_delta.handle_build_delta_context_pack(*arguments, **named)

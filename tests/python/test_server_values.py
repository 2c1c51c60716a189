"""A server's values go through the extension as themselves."""
import collections
import enum
import json
import threading

import context_delta
import pytest

from toy_server import GitHistoryError, Record, World, change_of, changes_of


def pack_of(server, *arguments, **named):
    return context_delta.handle_build_delta_context_pack(server.repository, "root", *arguments,
                                                         **named)


def one_file_world(**attributes):
    return World(changes=changes_of([change_of("a.py")]), **attributes)


def test_rows_and_pages_are_the_servers_own_objects(serve):
    class Row(dict):
        pass

    rows = []
    pages = [{"page": "p.md"}]
    symbol = Record(id="s", path="a.py", start_line=1, end_line=2, fqn="a.f", name="f",
                    kind="function", signature=None)
    caller = Record(of="s", total=1, fqn="b.g")
    server = serve(one_file_world(spans={"a.py": [Record(start=1, end=1)]}, symbols=[symbol],
                                  guessed=[caller], pages=pages))
    for name in ("change_row", "guessed_caller_row"):
        server.serve("workers.git_history" if name == "change_row" else
                     "tool_handlers.quality_impact",
                     **{name: lambda record: rows.append(Row(path="a.py")) or rows[-1]})
    pack = pack_of(server, wiki_lens=server.lens)
    assert pack["affected_files"][0] is rows[0] and pack["neighbours"][0] is rows[1]
    assert pack["wiki_pages"] is pages
    assert rows[0] == {"path": "a.py", "symbols": 0, "references": 0}
    assert rows[1]["calls"] is symbol.fqn


@pytest.mark.parametrize("value", [
    collections.OrderedDict(b=1, a=[2]), collections.namedtuple("Pair", "x y")(1, 2),
    enum.IntEnum("Level", "LOW HIGH").HIGH, type("Name", (str,), {})("nämé"), {1: "one", None: 2.5},
    10**40, -0.0, 1e22, 5e-324, float("nan"), [[[]] * 3] * 3, "\ud800", "\U0010ffff\x7f\u2028"])
def test_rows_are_priced_on_the_text_of_the_servers_serialiser(serve, value):
    server = serve(one_file_world())
    texts = []
    server.serve("workers.git_history", change_row=lambda change: {"path": "a.py", "value": value})
    server.serve("workers.context_builder", estimate_tokens=lambda text: texts.append(text) or 1)
    pack = pack_of(server)
    assert texts == [json.dumps(pack["affected_files"][0], ensure_ascii=False)]


@pytest.mark.parametrize("value", [object(), b"bytes", {("a", "tuple"): 1}, {1, 2}])
def test_a_value_of_no_json_type_raises_what_the_serialiser_raises(serve, value):
    server = serve(one_file_world())
    server.serve("workers.git_history", change_row=lambda change: {"value": value})
    with pytest.raises(TypeError) as expected:
        json.dumps({"value": value})
    with pytest.raises(TypeError) as raised:
        pack_of(server)
    assert str(raised.value) == str(expected.value)


def test_a_row_that_holds_itself_raises_what_the_serialiser_raises(serve):
    server = serve(one_file_world())
    row = {}
    row["self"] = row
    server.serve("workers.git_history", change_row=lambda change: row)
    with pytest.raises(ValueError, match="Circular"):
        pack_of(server)


def test_commits_compare_by_the_servers_own_inequality(serve):
    class Commit(str):
        def __ne__(self, other):
            return self[:4] != other[:4]

    for head, differs in ((Commit("abcd0"), False), (Commit("zzzz"), True)):
        server = serve(World(changes=changes_of([change_of("a")], head_commit="abcd1"), head=head))
        assert ("warning" in pack_of(server, None, "topic")) == differs


def test_flags_are_tested_for_truth_and_the_null_test_of_the_target_is_one(serve):
    class Unwilling:
        def __bool__(self):
            raise RuntimeError("neither true nor false")

    for name in ("include_call_graph", "include_snippets", "source_only"):
        with pytest.raises(RuntimeError, match="neither"):
            pack_of(serve(one_file_world()), **{name: Unwilling()})
    server = serve(one_file_world())
    pack_of(server, target_branch="")
    assert [name for name, *_ in server.calls if name == "resolve_commit"] == ["resolve_commit"]


def test_ids_are_anything_ordered_and_hashable(serve):
    class Id:
        def __init__(self, number):
            self.number = number

        def __lt__(self, other):
            return self.number < other.number

        def __eq__(self, other):
            return self.number == other.number

        def __hash__(self):
            return 1

    symbols = [Record(id=Id(number), path="a.py", start_line=1, end_line=1, fqn=f"f{number}",
                      name="f", kind="function", signature="") for number in (3, 1, 2, 1)]
    server = serve(one_file_world(spans={"a.py": [Record(start=1, end=1)]}, symbols=symbols,
                                  proven=[Record(of=Id(3), total=2, fqn="g", name="g", kind="k",
                                                 path="b", line=1, call_line=1)]))
    pack = pack_of(server)
    assert [row["fqn"] for row in pack["symbols"]] == ["f1", "f1", "f2", "f3"]
    assert [row["calls"] for row in pack["callers"]] == ["f3"]
    assert pack["callers_omitted"] == 1


def test_an_order_that_contradicts_itself_loses_no_symbol(serve):
    class Contrary:
        def __lt__(self, other):
            return True

    symbols = [Record(id=Contrary(), path="a.py", start_line=1, end_line=1, fqn=str(number),
                      name="f", kind="function", signature="") for number in range(99)]
    server = serve(one_file_world(spans={"a.py": [Record(start=1, end=1)]}, symbols=symbols))
    pack = pack_of(server, token_budget=10**6)
    assert sorted(int(row["fqn"]) for row in pack["symbols"]) == list(range(99))


def test_a_generator_where_a_list_is_meant_is_an_error_or_read_once(serve):
    server = serve(World(changes=changes_of(change_of(name) for name in "ab")))
    with pytest.raises(TypeError, match="len"):
        pack_of(server)
    server = serve(one_file_world(spans={"a.py": [Record(start=1, end=1)]}))
    server.serve("storage.repository_changes", symbols_on_lines=lambda *_, **__: (
        Record(id=number, path="a.py", start_line=1, end_line=1, fqn="f", name="f", kind="k",
               signature=None) for number in range(3)))
    assert len(pack_of(server)["symbols"]) == 3


def test_the_server_may_replace_what_it_offers_at_any_time(serve):
    server = serve(World(changes=changes_of([change_of("a"), change_of("b")])))

    def replace(change):
        server.serve("workers.context_builder", estimate_tokens=lambda text: 10**9)
        return {"path": change.path}

    server.serve("workers.git_history", change_row=replace)
    assert pack_of(server)["files_omitted"] == 2


def test_a_call_from_within_a_call_is_a_call_of_its_own(serve):
    server = serve(one_file_world())
    depth = 0
    inner = []

    def change_row(change):
        nonlocal depth
        depth += 1
        if depth < 50:
            inner.append(pack_of(server))
        return {"path": change.path}

    server.serve("workers.git_history", change_row=change_row)
    pack = pack_of(server)
    assert len(inner) == 49 and all(each == pack for each in inner)


def test_threads_do_not_meet(serve):
    server = serve(World(changes=changes_of([change_of(str(number)) for number in range(50)])))
    expected = pack_of(server)
    packs = []
    threads = [threading.Thread(target=lambda: packs.extend(pack_of(server) for _ in range(20)))
               for _ in range(8)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    assert packs == [expected] * 160


def test_the_error_result_has_the_text_of_the_error(serve):
    class Derived(GitHistoryError):
        def __str__(self):
            return "no héad\ud800"

    server = serve(one_file_world(failing="changed_line_spans", failure=Derived("unseen")))
    assert list(pack_of(server).items()) == [
        ("affected_files", []), ("symbols", []), ("callers", []), ("neighbours", []),
        ("snippets", []), ("tokens_used", 0), ("truncated", False), ("error", "no héad\ud800")]


def test_a_budget_of_none_is_reckoned_with_only_where_rows_are_paid(serve):
    nothing = pack_of(serve(World(changes=changes_of([]))), token_budget=None)
    assert "message" in nothing
    failing = serve(one_file_world(failing="branch_changes", failure=GitHistoryError("no base")))
    assert pack_of(failing, token_budget=None)["error"] == "no base"
    with pytest.raises(TypeError, match="NoneType"):
        pack_of(serve(one_file_world()), token_budget=None)

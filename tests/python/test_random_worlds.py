"""Over random worlds the extension gives the pack of the plain rules, by the same calls."""
import random

import context_delta
import pytest
import reference

from toy_server import (GitHistoryError, Record, ShallowHistoryError, ToyServer, World, change_of,
                        changes_of)

OPERATIONS = ("branch_changes", "resolve_commit", "file_impact", "is_source_path", "change_row",
              "changed_line_spans", "symbols_on_lines", "count_symbols_on_lines", "callers_of",
              "estimate_tokens", "read_repo_text", "guessed_caller_row", "pages_citing")


class Impact(dict):
    """A mapping with a look-up of its own."""

    def get(self, key):
        return None if "hidden" in key else super().get(key)


def random_text(dice):
    alphabet = ["a", "B", "/", "_", '"', "\\", "\n", "\x00", "\x1f", "\x7f", "é", "漢", "𝄞", "\udc80"]
    return "".join(dice.choices(alphabet, k=dice.randrange(9)))


def random_count(dice):
    return dice.choice([0, 1, dice.randrange(4), dice.randrange(50), 2**63 - 1, 2**70, True])


def random_id(dice, kind):
    number = dice.randrange(30)
    return (number, str(number), (number % 3, number))[kind]


def random_value(dice):
    return dice.choice([None, True, 3, -2**80, 0.1, 1e16, 1e-5, float("inf"), 2.0, random_text(dice),
                        [1, (2, "x")], {"k": {"deep": []}}])


def random_spans(dice):
    spans = [Record(start=1 + dice.randrange(50), end=dice.randrange(120))
             for _ in range(dice.randrange(3))]
    return dice.choice([spans, tuple(spans)])


def random_file(dice, position):
    path = f"{random_text(dice)}{position}{dice.choice(['', 'hidden'])}"
    return change_of(path, random_count(dice), random_count(dice), random_value(dice))


def random_symbol(dice, path, kind):
    return Record(id=random_id(dice, kind), path=path, start_line=dice.randrange(5),
                  end_line=random_count(dice), fqn=random_text(dice), name=random_text(dice),
                  kind="function", signature=dice.choice([None, "", random_text(dice)]))


def random_caller(dice, kind):
    return Record(of=random_id(dice, kind), total=random_count(dice), fqn=random_text(dice),
                  name=random_value(dice), kind="function", path=random_text(dice),
                  line=random_count(dice), call_line=3)


def random_world(dice):
    files = [random_file(dice, position) for position in range(dice.choice([0, 3, 12, 25]))]
    paths = [change.path for change in files]
    kind = dice.randrange(3)
    some = [path for path in paths if dice.random() < 0.6]
    impact = {path: Record(references=random_count(dice), symbols=random_count(dice),
                           language=dice.choice([None, "python"])) for path in some}
    return World(
        changes=changes_of(dice.choice([files, tuple(files)]), note=dice.choice([None, "", "n\xf6"]),
                           commit_count=random_count(dice), head_branch=random_value(dice)),
        head=dice.choice(["head", "other"]),
        impact=dice.choice([impact, Impact(impact)]),
        not_source={path for path in paths if dice.random() < 0.2},
        spans={path: random_spans(dice) for path in paths if dice.random() < 0.8},
        symbols=[random_symbol(dice, path, kind) for path in paths for _ in range(dice.randrange(4))],
        total_symbols=random_count(dice),
        proven=[random_caller(dice, kind) for _ in range(dice.randrange(30))],
        guessed=[random_caller(dice, kind) for _ in range(dice.randrange(30))],
        texts={path: dice.choice(["", "one\r\ntwo\x0bthree\u2028", "x\n" * dice.randrange(90)])
               for path in paths},
        pages=[random_value(dice) for _ in range(dice.randrange(3))])


def random_request(dice):
    """The arguments after the root, by name."""
    return dict(base_branch=dice.choice([None, "main"]), target_branch=dice.choice([None, "", "topic"]),
                token_budget=dice.choice([-5, 0, 300, 2000, 4000, 20000, True, 2**40, 10**30]),
                include_call_graph=dice.choice([True, 0, "yes", []]),
                include_snippets=dice.choice([False, 1, None]),
                source_only=dice.choice([True, "", [0]]))


def outcome(handle, seed, failing):
    """What one side gives for a world: the pack with the text of its keys' order, or the error."""
    dice = random.Random(seed)
    server = ToyServer(random_world(dice))
    if failing:
        server.world.failing = dice.choice(OPERATIONS)
        server.world.failing_call = 1 + dice.randrange(3)
        server.world.failure = dice.choice([
            GitHistoryError("no such revision: tópic"), ShallowHistoryError(), ValueError("bad"),
            KeyboardInterrupt(), KeyError("gone")])
    request = random_request(dice)
    lens = dice.choice([None, server.lens])
    try:
        pack = handle(server.repository, "root", **request, wiki_lens=lens)
        return repr(pack), server.calls
    except BaseException as error:
        return (type(error), repr(error.args)), server.calls
    finally:
        server.uninstall()


@pytest.mark.parametrize("failing", [False, True])
@pytest.mark.parametrize("first", range(0, 500, 100))
def test_gives_the_pack_of_the_plain_rules_by_the_same_calls(first, failing):
    for seed in range(first, first + 100):
        expected, expected_calls = outcome(reference.handle_build_delta_context_pack, seed, failing)
        pack, calls = outcome(context_delta.handle_build_delta_context_pack, seed, failing)
        assert calls == expected_calls, seed
        assert pack == expected, seed

"""Reference counts and memory stay flat however often the operation runs."""
import gc
import resource
import subprocess
import sys

import pytest
import test_random_worlds as worlds
from toy_server import ToyServer

import context_delta


def counted(objects):
    return [sys.getrefcount(each) for each in objects]


def run_worlds(seeds, failing):
    for seed in seeds:
        worlds.outcome(context_delta.handle_build_delta_context_pack, seed, failing)


@pytest.mark.parametrize("failing", [False, True])
def test_what_was_passed_in_is_let_go(failing):
    dice = worlds.random.Random(8)
    for _ in range(30):
        server = ToyServer(worlds.random_world(dice))
        world = server.world
        if failing:
            world.failing, world.failing_call = dice.choice(worlds.OPERATIONS), 2
            world.failure = dice.choice([ValueError(), worlds.GitHistoryError()])
        held = [world.changes, *world.changes.files, world.impact, world.spans, *world.symbols,
                *world.proven, *world.guessed, world.pages, server.repository, server.lens]

        def ask():
            try:
                context_delta.handle_build_delta_context_pack(
                    server.repository, "root", target_branch="t", include_snippets=True,
                    token_budget=9000, wiki_lens=server.lens)
            except ValueError:
                world.failure.__traceback__ = None

        try:
            ask()
            before = counted(held)
            for _ in range(3):
                world.failing_call = 2
                ask()
            gc.collect()
            assert counted(held) == before
        finally:
            server.uninstall()


def test_objects_and_memory_stay_flat():
    def measured():
        gc.collect()
        return (len(gc.get_objects()), sys.getallocatedblocks(),
                resource.getrusage(resource.RUSAGE_SELF).ru_maxrss)

    for failing in (False, True):
        run_worlds(range(60), failing)
    objects, blocks, kilobytes = measured()
    for _ in range(5):
        for failing in (False, True):
            run_worlds(range(60), failing)
    later_objects, later_blocks, later_kilobytes = measured()
    assert abs(later_objects - objects) < 50
    assert abs(later_blocks - blocks) < 500
    assert later_kilobytes - kilobytes < 4096


def test_the_interpreter_can_end_while_everything_is_alive():
    code = ("import context_delta, sys; r = context_delta.Repository(sys.argv[1]); "
            "f = context_delta.handle_build_delta_context_pack; sys.keep = (r, f)")
    result = subprocess.run([sys.executable, "-X", "dev", "-c", code, "."], capture_output=True,
                            text=True, env={"PYTHONPATH": ":".join(sys.path), "PATH": "/usr/bin"})
    assert (result.returncode, result.stdout, result.stderr) in (
        (0, "", ""), (1, "", result.stderr)), result.stderr

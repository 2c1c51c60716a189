#!/usr/bin/env python3
"""Ends the program in the middle of its work, over and over, and looks at what it leaves.

    tests/trust/kill_index.py PROGRAM [--repository FOLDER] [--kills N] [--seed N]

Commits of a history are indexed in any order, by runs that get SIGKILL, SIGTERM or SIGINT after a
random part of the time that a run takes. Then the next run must succeed, the index must be whole and
answer as one that was built at once, and no process, temporary folder or log may be left. Without
--repository a small history is made; a repository is cloned first, and --commits of its commits are
taken, spread over its first parents.
"""

import argparse
import os
import pathlib
import random
import shutil
import signal
import sqlite3
import statistics
import subprocess
import sys
import tempfile
import time

SIGNALS = (signal.SIGKILL, signal.SIGKILL, signal.SIGTERM, signal.SIGINT)


class Program:
    """The program on one repository, with a folder for temporary files of its own."""

    def __init__(self, program, repository, scratch):
        self.program, self.repository, self.scratch = program, repository, scratch
        self.temporary = scratch / "temporary"
        self.temporary.mkdir()
        self.environment = {**os.environ, "TMPDIR": str(self.temporary), "HOME": str(scratch),
                            "GIT_CONFIG_NOSYSTEM": "1"}

    def git(self, *arguments, given=None):
        return subprocess.run(
            ["git", "-c", "user.name=a", "-c", "user.email=a@example.org", "-C", self.repository,
             *arguments], check=True, capture_output=True, text=True, input=given,
            env=self.environment).stdout.strip()

    def move_to(self, commit):
        """Only what is checked out counts: files need not be written."""
        self.git("update-ref", "--no-deref", "HEAD", commit)

    def command(self, *arguments):
        return [self.program, "-q", "-C", str(self.repository), *arguments]

    def graph(self, index):
        ended = subprocess.run(self.command("graph", "--index", str(index)), env=self.environment,
                               capture_output=True, check=False)
        if ended.returncode != 0:
            fail(f"the run after exits with {ended.returncode}: {ended.stderr.decode()}")
        return ended.stdout

    def end_early(self, index, seconds, number):
        """Starts an update and sends it a signal; its exit code, negative when a signal ended it."""
        child = subprocess.Popen(self.command("index", "--index", str(index)),
                                 env=self.environment, stdout=subprocess.DEVNULL,
                                 stderr=subprocess.DEVNULL, start_new_session=True)
        time.sleep(seconds)
        child.send_signal(number)
        code = child.wait()
        wait_for_group(child.pid)
        return code


def fail(what):
    sys.exit(f"kill_index: {what}")


def wait_for_group(group):
    """The git processes of a killed run notice that nobody reads them."""
    end = time.monotonic() + 10
    while time.monotonic() < end:
        try:
            os.killpg(group, 0)
        except ProcessLookupError:
            return
        time.sleep(0.005)
    fail("processes of a run outlive it")


def make_history(program, commits, files):
    """A branch of commits whose files define and call each other's names."""
    chance = random.Random(7)
    program.git("init", "-q", "-b", "main")

    def text(number):
        lines = [f"from part{chance.randrange(files)} import *", f"class C{number}:"]
        for i in range(30):
            lines += [f"    def m{i}(self, a):",
                      f"        return f{chance.randrange(files)}(self.m{chance.randrange(30)}(a))"]
        lines += [f"def f{number}(x):", f"    return C{chance.randrange(files)}().m1(x)"]
        return "\n".join(lines) + "\n"

    stream = []
    for commit in range(commits):
        chosen = range(files) if commit == 0 else chance.sample(range(files), files // 3)
        stream.append(f"commit refs/heads/main\ncommitter a <a@example.org> {commit} +0000\n"
                      f"data 1\n.\n")
        for number in chosen:
            content = text(number)
            stream.append(f"M 100644 inline part{number}.py\ndata {len(content)}\n{content}\n")
        if commit > 0:
            stream.append(f"D part{commit}.py\n")
    program.git("fast-import", "--quiet", given="".join(stream))


def check(program, index, commit, graphs):
    """The next run mends everything."""
    if program.graph(index) != graphs[commit]:
        fail(f"the graph of {commit} is not that of a cold build")
    left = [path.name for path in index.parent.iterdir() if path != index]
    if left:
        fail(f"left behind beside the index: {' '.join(left)}")
    database = sqlite3.connect(f"file:{index}?immutable=1", uri=True)  # leaves no files
    answer = database.execute("PRAGMA integrity_check").fetchone()[0]
    database.close()
    if answer != "ok":
        fail(f"the index is damaged: {answer}")


def check_temporary_folders(program, commit):
    """A run that needs a temporary folder removes those of runs that were killed a while ago."""
    for path in program.temporary.iterdir():
        os.utime(path, (0, 0))
    count = len(list(program.temporary.iterdir()))
    seconds_of(program, program.scratch / "last" / "index.sqlite", commit)
    left = [path.name for path in program.temporary.iterdir()]
    if left:
        fail(f"left behind among temporary files: {' '.join(left)}")
    return count


def seconds_of(program, index, commit):
    """How long an update takes that nobody ends."""
    program.move_to(commit)
    start = time.monotonic()
    subprocess.run(program.command("index", "--index", str(index)), env=program.environment,
                   check=True, stdout=subprocess.DEVNULL)
    return time.monotonic() - start


def cold_builds(program, commits):
    """The graph of each commit, and how long a cold build takes as a rule."""
    graphs, seconds = {}, []
    for commit in commits:
        index = program.scratch / "cold" / f"{commit}.sqlite"
        seconds.append(seconds_of(program, index, commit))
        graphs[commit] = program.graph(index)
        shutil.rmtree(index.parent)
    return graphs, statistics.median(seconds)


def updates(program, commits):
    """The size of an index that went to all commits, and how long such a step takes as a rule."""
    index = program.scratch / "calm" / "index.sqlite"
    seconds = [seconds_of(program, index, commit) for commit in commits * 2]
    return index.stat().st_size, statistics.median(seconds)


def kill_often(program, commits, kills, chance):
    graphs, cold = cold_builds(program, commits)
    calm, warm = updates(program, commits)
    index = program.scratch / "index" / "index.sqlite"
    counts = {"too late": 0, "in a transaction": 0, "checks": 0}
    commit = commits[0]
    for kill in range(kills):
        commit = chance.choice([each for each in commits if each != commit])
        program.move_to(commit)
        if chance.random() < 0.4:
            shutil.rmtree(index.parent, ignore_errors=True)
        seconds = warm if index.exists() else cold
        number = chance.choice(SIGNALS)
        code = program.end_early(index, chance.random() * seconds, number)
        if code not in (0, -number, 128 + number):
            fail(f"exit code {code} after {number.name}")
        counts["too late"] += code == 0
        log = index.with_name(index.name + "-wal")
        counts["in a transaction"] += log.exists() and log.stat().st_size > 0
        if chance.random() < 0.3 and kill + 1 < kills:
            continue  # the next one dies on top of it
        check(program, index, commit, graphs)
        counts["checks"] += 1
    folders = check_temporary_folders(program, commit)
    size = index.stat().st_size
    if size > 2 * calm:
        fail(f"the index has grown to {size} bytes, {calm} without kills")
    print(f"{kills} runs of {cold:.2f} s (cold) and {warm:.2f} s ended early ({counts['too late']} "
          f"too late, {counts['in a transaction']} left a log, {folders} a temporary folder), "
          f"{counts['checks']} checks; the index has {size} bytes, {calm} without kills")


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("program")
    parser.add_argument("--repository", type=pathlib.Path)
    parser.add_argument("--kills", type=int, default=12)
    parser.add_argument("--commits", type=int, default=3)
    parser.add_argument("--seed", type=int, default=1)
    options = parser.parse_args()
    with tempfile.TemporaryDirectory() as folder:
        scratch = pathlib.Path(folder)
        repository = scratch / "repository"
        repository.mkdir()
        program = Program(os.path.abspath(options.program), repository, scratch)
        if options.repository is None:
            make_history(program, options.commits, 40)
        else:
            program.git("clone", "-q", "--no-checkout", os.path.abspath(options.repository), ".")
        commits = program.git("rev-list", "--first-parent", "HEAD").split()
        step = max(1, len(commits) // options.commits)
        program.git("checkout", "-q", "--detach")
        kill_often(program, commits[::step][:options.commits], options.kills,
                   random.Random(options.seed))


main()

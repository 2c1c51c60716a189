"""The program on a real pseudo-terminal."""

import fcntl
import os
import pty
import select
import struct
import subprocess
import termios
import time

import pytest

PROGRAM = os.environ["CONTEXT_DELTA"]
ROWS = 20


@pytest.fixture(scope="module")
def project(tmp_path_factory):
    folder = tmp_path_factory.mktemp("project")

    def git(*arguments):
        identity = ["-c", "user.name=a", "-c", "user.email=a@example.org"]
        subprocess.run(["git", "-C", folder, *identity, *arguments], check=True)

    git("init", "-q", "-b", "main")
    git("config", "core.pager", "touch configured")
    (folder / ".context-delta.toml").write_text('pager = "touch configured"\n')
    (folder / "a.py").write_text("A = 1\n")
    git("add", ".")
    git("commit", "-qm", "one")
    git("checkout", "-qb", "work")
    (folder / "a.py").write_text("".join(f"def f{i}():\n    pass\n" for i in range(40)))
    git("commit", "-qam", "two")
    return folder


class Terminal:
    """A child whose terminal we hold."""

    def __init__(self, project, arguments, variables):
        environment = {"PATH": os.environ["PATH"], "HOME": str(project), "TERM": "xterm",
                       "LC_ALL": "C.UTF-8", **variables}
        self.child, self.screen = pty.fork()
        if self.child == 0:
            fcntl.ioctl(1, termios.TIOCSWINSZ, struct.pack("HHHH", ROWS, 80, 0, 0))
            os.chdir(project)
            os.execve(PROGRAM, [PROGRAM, "-q", *arguments], environment)
        self.shown = ""
        self.status = None

    def wait(self, until, seconds):
        """Whether the text shows up, or the child ends, before long."""
        deadline = time.monotonic() + seconds
        while until is None or until not in self.shown:
            ready, _, _ = select.select([self.screen], [], [], max(0, deadline - time.monotonic()))
            if not ready:
                return False
            try:
                part = os.read(self.screen, 65536)
            except OSError:
                part = b""
            if not part:
                break
            self.shown += part.decode()
        return True

    def read(self, until=None):
        """Until the text shows up; without one, until the child ends."""
        assert self.wait(until, 30), self.shown
        return self.shown

    def type(self, keys):
        os.write(self.screen, keys.encode())

    def type_until(self, keys, until):
        """Types again and again: less drops what it gets while it handles a signal."""
        for _ in range(30):
            self.type(keys)
            if self.wait(until, 1):
                return
        raise AssertionError(self.shown)

    def finish(self):
        self.read()
        _, status = os.waitpid(self.child, 0)
        os.close(self.screen)
        return os.waitstatus_to_exitcode(status), self.shown


@pytest.fixture
def on_terminal(project):
    def start(*arguments, **variables):
        return Terminal(project, arguments, variables)

    return start


def test_pages_a_long_text_with_less(on_terminal):
    terminal = on_terminal()
    first = terminal.read(until="a.py")
    assert "f39" not in first
    terminal.type("G")
    terminal.read(until="f39")
    terminal.type("q")
    assert terminal.finish()[0] == 0


def test_an_interrupt_stays_with_the_pager(on_terminal):
    terminal = on_terminal()
    terminal.read(until="a.py")
    terminal.type("\x03")
    terminal.type_until("G", "f39")
    terminal.type("q")
    assert terminal.finish()[0] == 0


def test_an_interrupt_that_ends_the_pager_ends_all(on_terminal):
    terminal = on_terminal(PAGER="echo started; exec sleep 1000")
    terminal.read(until="started")
    terminal.type("\x03")
    assert terminal.finish()[0] == 0


@pytest.mark.parametrize(
    "arguments, variables, mark",
    [
        ([], {"PAGER": "sed 's/^/paged: /'"}, "paged: "),
        ([], {"PAGER": "false", "CONTEXT_DELTA_PAGER": "sed 's/^/paged: /'"}, "paged: "),
        (["--pager", "sed 's/^/paged: /'"], {"CONTEXT_DELTA_PAGER": "false"}, "paged: "),
        ([], {"PAGER": "echo $LESS; cat"}, "FRX\r\n"),
        ([], {"PAGER": "echo $LESS; cat", "LESS": "-S"}, "-S\r\n"),
    ],
)
def test_takes_the_pager_that_the_user_names(on_terminal, arguments, variables, mark):
    code, shown = on_terminal(*arguments, **variables).finish()
    assert code == 0
    assert shown.startswith(mark)
    assert shown.count("def f39()") == 1


@pytest.mark.parametrize(
    "arguments, variables",
    [
        (["--no-pager"], {"PAGER": "echo paged"}),
        ([], {"PAGER": "cat"}),
        ([], {"PAGER": ""}),
        (["--pager", "cat"], {"PAGER": "echo paged"}),
        ([], {"PAGER": "echo paged", "TERM": "dumb"}),
        (["--format", "json"], {"PAGER": "echo paged"}),
        (["--budget", "1"], {"PAGER": "echo paged"}),
    ],
)
def test_prints_without_a_pager(on_terminal, arguments, variables):
    code, shown = on_terminal(*arguments, **variables).finish()
    assert code == 0
    assert "work" in shown and "paged" not in shown


def test_prints_when_the_pager_is_missing(on_terminal):
    code, shown = on_terminal(PAGER="no-such-pager").finish()
    assert code == 0
    assert shown.count("def f39()") == 1


def test_a_pager_that_ends_early_is_no_error(on_terminal):
    assert on_terminal("--budget", "100000", PAGER="exit 3").finish() == (0, "")


def test_the_exit_code_is_that_of_the_answer(on_terminal):
    code, shown = on_terminal("--base", "nowhere", PAGER="true").finish()
    assert code == 3
    assert shown.count("nowhere") == 1 and shown.startswith("context-delta: ")


def test_a_repository_names_no_pager(project, on_terminal):
    on_terminal(PAGER="true").finish()
    assert not (project / "configured").exists()


def test_colours_follow_the_terminal(on_terminal):
    assert "\x1b[1m" in on_terminal("--no-pager").finish()[1]
    assert "\x1b[1m" not in on_terminal("--no-pager", NO_COLOR="1").finish()[1]

"""A server in a few lines: the modules that the extension calls, answering from a World.

Each call is written down with its arguments, so that who called what, how and in which order can
be compared.
"""
import sys
import types
from dataclasses import dataclass, field
from typing import Any

MODULES = ("workers", "workers.git_history", "workers.context_builder", "utils",
           "utils.git_utils", "storage", "storage.repository_changes", "tool_handlers",
           "tool_handlers.context_docs", "tool_handlers.quality_impact")


@dataclass
class Record:
    """Any object with the attributes of the contract is a record."""

    def __init__(self, **attributes):
        self.__dict__.update(attributes)

    def __repr__(self):
        return f"Record({self.__dict__!r})"


class GitHistoryError(Exception):
    pass


class ShallowHistoryError(GitHistoryError):
    def __str__(self):
        return "the history is cut off"


@dataclass
class World:
    changes: Record
    head: Any = "head"
    impact: Any = field(default_factory=dict)
    not_source: set = field(default_factory=set)
    spans: Any = field(default_factory=dict)
    symbols: list = field(default_factory=list)
    total_symbols: Any = 0
    proven: list = field(default_factory=list)
    guessed: list = field(default_factory=list)
    texts: dict = field(default_factory=dict)
    pages: Any = field(default_factory=list)
    failing: str = ""  # the operation that raises `failure`, at its call number `failing_call`
    failing_call: int = 1
    failure: BaseException | None = None


def changes_of(files, **attributes):
    values = dict(base_branch="main", head_branch="topic", commit_count=1, base_commit="base",
                  head_commit="head", note=None)
    return Record(files=files, **(values | attributes))


def change_of(path, additions=1, deletions=0, status="modified"):
    return Record(path=path, status=status, additions=additions, deletions=deletions)


class Repository:
    """The index handle."""

    def __init__(self, server):
        self._server = server

    @property
    def db(self):
        self._server.calls.append(("db",))
        return "the database"

    def callers_of(self, *arguments, **named):
        self._server.note("callers_of", arguments, named)
        world = self._server.world
        found = world.guessed if named["guessed"] else world.proven
        return [caller for caller in found if caller.of in arguments[0]]


class Lens:
    def __init__(self, server):
        self._server = server

    def pages_citing(self, paths):
        assert iter(paths) is paths
        self._server.note("pages_citing", (list(paths),), {})
        assert list(paths) == []
        return self._server.world.pages


class ToyServer:
    """Installs its modules in sys.modules; uninstall() puts back what was there."""

    def __init__(self, world):
        self.world = world
        self.calls = []
        self.repository = Repository(self)
        self.lens = Lens(self)
        self.before = {name: sys.modules.get(name) for name in MODULES}
        for name in MODULES:
            sys.modules[name] = types.ModuleType(name)
        git_history = sys.modules["workers.git_history"]
        git_history.GitHistoryError = GitHistoryError
        git_history.CHANGE_KINDS = ("function", "class")
        git_history.SYMBOLS_PER_ROW = 7
        self.serve("workers.git_history", branch_changes=lambda *_, **__: self.world.changes)
        self.serve("workers.git_history", changed_line_spans=lambda *_, **__: self.world.spans)
        self.serve("workers.git_history",
                   is_source_path=lambda path, _: path not in self.world.not_source)
        self.serve("workers.git_history", line_ranges=lambda spans, paths: ("ranges", paths))
        self.serve("workers.git_history", change_row=self.change_row)
        self.serve("utils.git_utils", resolve_commit=lambda *_: self.world.head)
        self.serve("storage.repository_changes", file_impact=lambda *_: self.world.impact)
        self.serve("storage.repository_changes", symbols_on_lines=self.symbols_on_lines)
        self.serve("storage.repository_changes",
                   count_symbols_on_lines=lambda *_: self.world.total_symbols)
        self.serve("workers.context_builder", estimate_tokens=len)
        self.serve("tool_handlers.context_docs",
                   read_repo_text=lambda _, path, __: self.world.texts.get(path))
        self.serve("tool_handlers.quality_impact", guessed_caller_row=self.guessed_caller_row)

    def uninstall(self):
        for name, module in self.before.items():
            if module is None:
                sys.modules.pop(name, None)
            else:
                sys.modules[name] = module

    def serve(self, module, **functions):
        for name, answer in functions.items():
            def operation(*arguments, _name=name, _answer=answer, **named):
                self.note(_name, arguments, named)
                return _answer(*arguments, **named)
            setattr(sys.modules[module], name, operation)

    def note(self, name, arguments, named):
        self.calls.append((name, repr(arguments), repr(named)))
        if name == self.world.failing:
            self.world.failing_call -= 1
            if self.world.failing_call == 0:
                raise self.world.failure

    def change_row(self, change):
        return {"path": change.path, "status": change.status, "additions": change.additions,
                "deletions": change.deletions}

    def symbols_on_lines(self, _, ranges, kinds, per_file):
        return [symbol for symbol in self.world.symbols if symbol.path in ranges[1]]

    def guessed_caller_row(self, caller):
        return {"fqn": caller.fqn, "relation": "namesake", "calls": None, "reason": "one of 2"}

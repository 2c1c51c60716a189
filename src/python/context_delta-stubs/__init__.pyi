"""What did this branch change, for review?"""

from collections.abc import Callable, Iterable, Mapping, Sequence
from os import PathLike
from pathlib import Path
from types import TracebackType
from typing import Any, Protocol, TypeAlias, final

_Path: TypeAlias = str | bytes | PathLike[str] | PathLike[bytes]

class _ServerRepository(Protocol):
    """The index handle of a server: what its own index queries take."""

    @property
    def db(self) -> Any: ...
    def callers_of(self, ids: list[Any], /, *, guessed: bool, limit: int) -> Sequence[Any]: ...

class _WikiLens(Protocol):
    def pages_citing(self, paths: Any, /) -> list[Any]: ...

__version__: str

CALLER_LOOKUPS: int
CALLERS_PER_SYMBOL: int
SNIPPET_FILES: int
SNIPPET_LINES: int
SYMBOLS_PER_FILE: int

class GitHistoryError(RuntimeError):
    """A repository or revisions that git cannot work with."""

class RepositoryIndexError(RuntimeError):
    """The index cannot be opened, read or written."""

class WikiError(RuntimeError):
    """The wiki's folder cannot be read."""

def handle_build_delta_context_pack(
    repository: Repository | _ServerRepository,
    repo_root: Any,
    base_branch: str | None = None,
    target_branch: str | None = None,
    token_budget: int = 4000,
    include_call_graph: bool = True,
    include_snippets: bool = False,
    source_only: bool = True,
    wiki_lens: _WikiLens | None = None,
) -> dict[str, Any]:
    """The changes of a branch since it left its base, within a token budget."""

@final
class Database:
    """The index file that a Repository reads."""

    @property
    def path(self) -> Path: ...

@final
class FileImpact:
    """How much of the index depends on a file."""

    @property
    def references(self) -> int: ...
    @property
    def symbols(self) -> int: ...
    @property
    def language(self) -> str | None: ...

@final
class SymbolOnLines:
    """A symbol that lies on lines asked for; lines count from 1."""

    @property
    def id(self) -> int: ...
    @property
    def path(self) -> str: ...
    @property
    def start_line(self) -> int: ...
    @property
    def end_line(self) -> int: ...
    @property
    def fqn(self) -> str: ...
    @property
    def name(self) -> str: ...
    @property
    def kind(self) -> str: ...
    @property
    def signature(self) -> str | None: ...

@final
class Caller:
    """A caller of a symbol; lines count from 1."""

    @property
    def of(self) -> int: ...
    @property
    def total(self) -> int: ...
    @property
    def fqn(self) -> str: ...
    @property
    def name(self) -> str: ...
    @property
    def kind(self) -> str: ...
    @property
    def path(self) -> str: ...
    @property
    def line(self) -> int: ...
    @property
    def call_line(self) -> int: ...
    @property
    def relation(self) -> str: ...
    @property
    def why(self) -> str: ...
    @property
    def candidates(self) -> int: ...

@final
class UpdateReport:
    """What an update of the index did."""

    @property
    def up_to_date(self) -> bool: ...
    @property
    def files(self) -> int: ...
    @property
    def parsed(self) -> int: ...
    @property
    def reused(self) -> int: ...
    @property
    def resolved(self) -> int: ...
    @property
    def skipped(self) -> list[tuple[str, str]]: ...

class Repository:
    """A git repository with an index of its own."""

    def __init__(self, path: _Path, index: _Path | None = None) -> None: ...
    @property
    def root(self) -> Path: ...
    @property
    def db(self) -> Database: ...
    def update(
        self, progress: Callable[[str, int, int], object] | None = None
    ) -> UpdateReport: ...
    def callers_of(
        self, ids: Sequence[int], guessed: bool = False, limit: int = 10
    ) -> list[Caller]: ...
    def file_impact(self, paths: Sequence[str]) -> dict[str, FileImpact]: ...
    def symbols_on_lines(
        self, ranges: Mapping[str, Sequence[tuple[int, int]]], per_file: int = 50
    ) -> list[SymbolOnLines]: ...
    def close(self) -> None: ...
    def __enter__(self) -> Repository: ...
    def __exit__(
        self,
        type: type[BaseException] | None,
        value: BaseException | None,
        traceback: TracebackType | None,
        /,
    ) -> None: ...

class WikiLens:
    """The Markdown pages in a folder that name their source files."""

    def __init__(self, path: _Path) -> None: ...
    @property
    def path(self) -> Path: ...
    def pages_citing(self, paths: Iterable[str]) -> list[dict[str, Any]]: ...

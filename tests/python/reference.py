"""The rules of the delta context pack in plain Python, over the modules of a server.

What the extension module must do, said a second time: tests compare both, pack and calls.
"""
import importlib
import json

SHARES = {"files": 0.4, "symbols": 0.35, "callers": 0.25}
SHARES_WITH_SNIPPETS = {"files": 0.3, "symbols": 0.25, "callers": 0.15, "snippets": 0.3}
TARGET_WARNING = (
    "Symbols, lines and callers come from the index of the checked-out branch, not of "
    "target_branch: they may be off where the two differ.")


class Module:
    """A module of the server as it is when it is asked."""

    def __init__(self, name):
        self.name = name

    def __getattr__(self, attribute):
        return getattr(importlib.import_module(self.name), attribute)


git_history = Module("workers.git_history")
git_utils = Module("utils.git_utils")
repository_changes = Module("storage.repository_changes")
context_builder = Module("workers.context_builder")
context_docs = Module("tool_handlers.context_docs")
quality_impact = Module("tool_handlers.quality_impact")


def handle_build_delta_context_pack(
        repository, repo_root, base_branch=None, target_branch=None, token_budget=4000,
        include_call_graph=True, include_snippets=False, source_only=True, wiki_lens=None):
    try:
        changes = git_history.branch_changes(
            repo_root, base_branch, target_branch, head_parameter="target_branch")
        elsewhere = (target_branch is not None
                     and git_utils.resolve_commit(repo_root, "HEAD") != changes.head_commit)
        return pack(repository, repo_root, changes, token_budget=token_budget,
                    include_call_graph=include_call_graph, include_snippets=include_snippets,
                    source_only=source_only, warn=elsewhere, wiki_lens=wiki_lens)
    except git_history.GitHistoryError as error:
        return {**empty_parts(), "error": str(error)}


def empty_parts():
    return {"affected_files": [], "symbols": [], "callers": [], "neighbours": [], "snippets": [],
            "tokens_used": 0, "truncated": False}


def nothing_changed(changes, excluded):
    if excluded:
        return (f"No source file changed between branches; {excluded} other files did "
                "(source_only=false lists them)")
    note = f" ({changes.note})" if changes.note else ""
    return f"No changes detected between branches{note}"


def language(impact, change):
    found = impact.get(change.path)
    return found.language if found is not None else None


def impact_order(change, impact):
    references, symbols = (impact.references, impact.symbols) if impact is not None else (0, 0)
    return (-references, -symbols, -(change.additions + change.deletions), change.path)


def pack(repository, repo_root, changes, *, token_budget, include_call_graph, include_snippets,
         source_only, warn, wiki_lens):
    impact = repository_changes.file_impact(repository.db, [c.path for c in changes.files])
    files = [c for c in changes.files
             if not source_only or git_history.is_source_path(c.path, language(impact, c))]
    files.sort(key=lambda change: impact_order(change, impact.get(change.path)))
    result = {"base_branch": changes.base_branch, "target_branch": changes.head_branch,
              "commit_count": changes.commit_count, "total_changed_files": len(files),
              "excluded_files": len(changes.files) - len(files)}
    if not files:
        result.update(empty_parts())
        result["message"] = nothing_changed(changes, result["excluded_files"])
        return result

    spans = git_history.changed_line_spans(
        repo_root, changes.base_commit, changes.head_commit, files, merge_base=True)
    pages = []
    if wiki_lens is not None:
        pages = wiki_lens.pages_citing(change.path for change in files)
    pages_cost = context_builder.estimate_tokens(json_text(pages)) if pages else 0
    budget = Budget(token_budget - pages_cost,
                    SHARES_WITH_SNIPPETS if include_snippets else SHARES)
    rows = file_rows(files, impact, budget.part("files"))
    status = {change.path: change.status for change in files}
    symbols, symbol_rows = changed_symbols(repository, files, spans, status, budget.part("symbols"))
    ranges = git_history.line_ranges(spans, [change.path for change in files])
    total_symbols = repository_changes.count_symbols_on_lines(
        repository.db, ranges, git_history.CHANGE_KINDS)
    callers_part = budget.part("callers")
    proven, guessed = ([], 0), ([], 0)
    if include_call_graph:
        proven, guessed = callers(repository, symbols, callers_part)
    shown = []
    if include_snippets:
        shown = snippets(repo_root, rows, spans, budget.part("snippets"))
    omitted = {"files_omitted": len(files) - len(rows),
               "symbols_omitted": total_symbols - len(symbols),
               "callers_omitted": proven[1] - len(proven[0]),
               "neighbours_omitted": guessed[1] - len(guessed[0])}
    result.update({"affected_files": rows, "symbols": symbol_rows, "callers": proven[0],
                   "neighbours": guessed[0], "snippets": shown,
                   "tokens_used": budget.used + pages_cost,
                   "truncated": any(omitted.values()), "total_changed_symbols": total_symbols})
    result.update(omitted)
    if pages:
        result["wiki_pages"] = pages
    if warn:
        result["warning"] = TARGET_WARNING
    return result


def json_text(value):
    return json.dumps(value, ensure_ascii=False)


class Budget:
    def __init__(self, total, shares):
        self.total = max(total, 0)
        self.shares = shares
        self.granted = 0.0
        self.used = 0

    def part(self, name):
        self.granted += self.shares[name]
        return Part(self, int(self.total * self.granted) - self.used)


class Part:
    def __init__(self, budget, allowance):
        self.budget = budget
        self.left = allowance
        self.full = False

    def take(self, row):
        cost = context_builder.estimate_tokens(json_text(row))
        if self.full or cost > self.left:
            self.full = True
            return False
        self.left -= cost
        self.budget.used += cost
        return True


def file_rows(files, impact, part):
    rows = []
    for change in files:
        row = git_history.change_row(change)
        found = impact.get(change.path)
        row["symbols"] = found.symbols if found is not None else 0
        row["references"] = found.references if found is not None else 0
        if not part.take(row):
            break
        rows.append(row)
    return rows


def changed_symbols(repository, files, spans, status, part):
    limit = importlib.import_module("workers.git_history").SYMBOLS_PER_ROW
    shown, rows = [], []
    paths = [change.path for change in files if spans.get(change.path)]
    for start in range(0, len(paths), 10):
        chunk = paths[start:start + 10]
        rank = {path: position for position, path in enumerate(chunk)}
        ranges = git_history.line_ranges(spans, chunk)
        found = repository_changes.symbols_on_lines(
            repository.db, ranges, git_history.CHANGE_KINDS, per_file=limit)
        found.sort(key=lambda symbol: (rank[symbol.path], symbol.start_line, symbol.id))
        for symbol in found:
            row = {"fqn": symbol.fqn, "name": symbol.name, "kind": symbol.kind,
                   "file": symbol.path, "line": symbol.start_line, "end_line": symbol.end_line,
                   "status": status[symbol.path]}
            if symbol.signature:
                row["signature"] = symbol.signature
            if not part.take(row):
                return shown, rows
            shown.append(symbol)
            rows.append(row)
    return shown, rows


def callers(repository, symbols, part):
    fqn_of = {symbol.id: symbol.fqn for symbol in symbols[:20]}
    rank = {key: position for position, key in enumerate(fqn_of)}
    listed = []
    for guessed in (False, True):
        found = repository.callers_of(list(fqn_of), guessed=guessed, limit=10)
        rows = []
        for caller in sorted(found, key=lambda record: rank[record.of]):
            if guessed:
                row = quality_impact.guessed_caller_row(caller)
            else:
                row = {"fqn": caller.fqn, "name": caller.name, "kind": caller.kind,
                       "file": caller.path, "line": caller.line, "call_line": caller.call_line}
            row["calls"] = fqn_of[caller.of]
            if not part.take(row):
                break
            rows.append(row)
        totals = {caller.of: caller.total for caller in found}
        listed.append((rows, sum(totals.values())))
    return listed


def snippets(repo_root, rows, spans, part):
    shown = []
    for row in rows[:10]:
        file_spans = spans.get(row["path"])
        if not file_spans:
            continue
        snippet = snippet_of(repo_root, row["path"], file_spans[0])
        if snippet is None:
            continue
        if not part.take(snippet):
            break
        shown.append(snippet)
    return shown


def snippet_of(repo_root, path, span):
    lines = (context_docs.read_repo_text(repo_root, path, 2000000) or "").splitlines()
    end = min(span.end, span.start + 39, len(lines))
    if span.start > end or span.start < 1:
        return None
    return {"file": path, "line": span.start, "end_line": end,
            "content": "\n".join(lines[span.start - 1:end])}

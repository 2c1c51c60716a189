#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tool_handlers/context_delta/budget.h"
#include "tool_handlers/context_delta/context_delta.h"
#include "tool_handlers/context_delta/fields.h"
#include "utils/text_lines.h"

namespace context_delta {

inline constexpr std::int64_t MAX_SOURCE_CHARS = 2000000;  ///< of a file that snippets show

/// Lines joined by one line feed between two.
std::string join_lines(std::span<const std::string_view> lines);

/// One file's snippet: the lines of `span` that the text has, SNIPPET_LINES at most. Null when it
/// has none of them.
template <class Services, class LineSpan>
std::optional<typename Services::Row> _snippet(Services& services,
                                               const typename Services::RepoRoot& repo_root,
                                               const typename Services::Path& path,
                                               const LineSpan& span) {
  using Integer = typename Services::Integer;
  using Value = typename Services::Value;
  const std::optional<std::string> text =
      services.read_repo_text(repo_root, path, MAX_SOURCE_CHARS);
  std::vector<std::string_view> lines;
  if (text) lines = text_lines::split_lines(*text);

  const Integer start = field::start(span);
  const Integer end =
      std::min({Integer(field::end(span)), start + Integer(SNIPPET_LINES) - Integer(1),
                Integer(static_cast<std::int64_t>(lines.size()))});
  if (end < start || start < Integer(1)) return std::nullopt;

  const auto first = static_cast<std::size_t>(start) - 1;
  const auto count = static_cast<std::size_t>(end) - first;
  typename Services::Row row;
  row.set("file", Value(path));
  row.set("line", Value(start));
  row.set("end_line", Value(end));
  row.set("content", Value(join_lines(std::span(lines).subspan(first, count))));
  return row;
}

/// The first changed lines of the first files shown, as the working tree has them.
template <class Services>
std::vector<typename Services::Row> _snippets(Services& services,
                                              const typename Services::RepoRoot& repo_root,
                                              const std::vector<typename Services::Row>& file_rows,
                                              const typename Services::Spans& spans,
                                              Part<Services>& part) {
  std::vector<typename Services::Row> snippets;
  const auto count = std::min(file_rows.size(), static_cast<std::size_t>(SNIPPET_FILES));
  for (std::size_t i = 0; i < count; ++i) {
    const auto path = static_cast<typename Services::Path>(file_rows[i].at("path"));
    const auto file_spans = lookup(spans, path);
    if (!file_spans || !truth(*file_spans)) continue;
    auto snippet = _snippet(services, repo_root, path, (*file_spans)[0]);
    if (!snippet) continue;
    if (!part.take(*snippet)) break;
    snippets.push_back(std::move(*snippet));
  }
  return snippets;
}

}  // namespace context_delta

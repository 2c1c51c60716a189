#include "render/pack_view.h"

#include <algorithm>

namespace context_delta::render {
namespace {

/// Reads the entries of one mapping.
class Row {
 public:
  Row(const json::Mapping& mapping, const TextFilter& filter)
      : mapping_(mapping), filter_(filter) {}

  std::optional<std::string> optional_text(std::string_view key) const {
    const json::Value* value = mapping_.find(key);
    const std::string* text = value == nullptr ? nullptr : value->as<std::string>();
    return text == nullptr ? std::nullopt : std::optional(filter_(*text));
  }
  std::string text(std::string_view key) const { return optional_text(key).value_or(""); }

  std::string raw_text(std::string_view key) const {
    const json::Value* value = mapping_.find(key);
    const std::string* text = value == nullptr ? nullptr : value->as<std::string>();
    return text == nullptr ? "" : *text;
  }

  std::int64_t integer(std::string_view key) const {
    const json::Value* value = mapping_.find(key);
    const std::int64_t* number = value == nullptr ? nullptr : value->as<std::int64_t>();
    return number == nullptr ? 0 : *number;
  }

  bool truth(std::string_view key) const {
    const json::Value* value = mapping_.find(key);
    const bool* truth = value == nullptr ? nullptr : value->as<bool>();
    return truth != nullptr && *truth;
  }

  std::vector<std::string> texts(std::string_view key) const {
    std::vector<std::string> result;
    for (const json::Value& value : list(key)) {
      if (const std::string* text = value.as<std::string>()) result.push_back(filter_(*text));
    }
    return result;
  }

  template <class Record>
  std::vector<Record> rows(std::string_view key, Record (*read)(const Row&)) const {
    std::vector<Record> result;
    for (const json::Value& value : list(key)) {
      if (const auto* mapping = value.as<json::Mapping>()) {
        result.push_back(read(Row(*mapping, filter_)));
      }
    }
    return result;
  }

  const json::List& list(std::string_view key) const {
    static const json::List EMPTY;
    const json::Value* value = mapping_.find(key);
    const json::List* list = value == nullptr ? nullptr : value->as<json::List>();
    return list == nullptr ? EMPTY : *list;
  }

 private:
  const json::Mapping& mapping_;
  const TextFilter& filter_;
};

FileRow file_row(const Row& row) {
  return {.path = row.text("path"),
          .status = row.text("status"),
          .old_path = row.optional_text("old_path"),
          .additions = row.integer("additions"),
          .deletions = row.integer("deletions"),
          .symbols = row.integer("symbols"),
          .references = row.integer("references")};
}

SymbolRow symbol_row(const Row& row) {
  return {.fqn = row.text("fqn"),
          .kind = row.text("kind"),
          .file = row.text("file"),
          .line = row.integer("line"),
          .end_line = row.integer("end_line"),
          .status = row.text("status"),
          .signature = row.text("signature")};
}

CallerRow caller_row(const Row& row) {
  return {.fqn = row.text("fqn"),
          .kind = row.text("kind"),
          .file = row.text("file"),
          .line = row.integer("line"),
          .call_line = row.integer("call_line"),
          .calls = row.text("calls"),
          .relation = row.text("relation"),
          .reason = row.text("reason")};
}

SnippetRow snippet_row(const Row& row) {
  return {.file = row.text("file"),
          .line = row.integer("line"),
          .end_line = row.integer("end_line"),
          .content = row.raw_text("content")};
}

WikiRow wiki_row(const Row& row) {
  return {.page = row.text("page"),
          .title = row.text("title"),
          .sources = row.texts("sources"),
          .stale = row.truth("stale"),
          .reason = row.text("reason"),
          .stale_source = row.text("stale_source"),
          .changed_in = row.text("changed_in")};
}

std::int64_t text_length(const json::List& rows) {
  std::int64_t length = 0;
  for (const json::Value& row : rows) length += static_cast<std::int64_t>(json_text(row).size());
  return length;
}

constexpr double MOST_TOKENS = 1e9;  // that a suggestion names

/// Length of a section's JSON text were all its rows shown.
double whole_length(const json::List& rows, std::int64_t omitted, double usual_row) {
  const auto shown = static_cast<double>(rows.size());
  const auto length = static_cast<double>(text_length(rows));
  return length + static_cast<double>(omitted) * (rows.empty() ? usual_row : length / shown);
}

std::int64_t rounded_up(double tokens) {
  tokens = std::clamp(tokens, 0.0, MOST_TOKENS);
  const std::int64_t step = tokens < 10'000 ? 500 : 5'000;
  return (static_cast<std::int64_t>(tokens) / step + 1) * step;
}

}  // namespace

PackView read_pack(const json::Mapping& pack, const TextFilter& filter) {
  const Row row(pack, filter);
  return {.base_branch = row.optional_text("base_branch"),
          .target_branch = row.optional_text("target_branch"),
          .commit_count = row.integer("commit_count"),
          .total_changed_files = row.integer("total_changed_files"),
          .excluded_files = row.integer("excluded_files"),
          .files = row.rows("affected_files", file_row),
          .symbols = row.rows("symbols", symbol_row),
          .callers = row.rows("callers", caller_row),
          .neighbours = row.rows("neighbours", caller_row),
          .snippets = row.rows("snippets", snippet_row),
          .tokens_used = row.integer("tokens_used"),
          .total_changed_symbols = row.integer("total_changed_symbols"),
          .files_omitted = row.integer("files_omitted"),
          .symbols_omitted = row.integer("symbols_omitted"),
          .callers_omitted = row.integer("callers_omitted"),
          .neighbours_omitted = row.integer("neighbours_omitted"),
          .wiki_pages = row.rows("wiki_pages", wiki_row),
          .message = row.optional_text("message"),
          .warning = row.optional_text("warning"),
          .error = row.optional_text("error")};
}

std::optional<std::int64_t> sufficient_budget(const json::Mapping& pack) {
  const TextFilter as_is = [](std::string_view text) { return std::string(text); };
  const Row row(pack, as_is);
  const std::int64_t omitted_files = row.integer("files_omitted");
  const std::int64_t omitted_symbols = row.integer("symbols_omitted");
  const std::int64_t omitted_callers = row.integer("callers_omitted");
  const std::int64_t omitted_neighbours = row.integer("neighbours_omitted");
  if (std::max({omitted_files, omitted_symbols, omitted_callers, omitted_neighbours}) <= 0)
    return {};

  const std::int64_t pages = text_length(row.list("wiki_pages"));
  const std::int64_t snippets = text_length(row.list("snippets"));
  const std::int64_t shown = text_length(row.list("affected_files")) +
                             text_length(row.list("symbols")) + text_length(row.list("callers")) +
                             text_length(row.list("neighbours")) + snippets + pages;
  const double tokens_per_byte =
      shown == 0 ? 0.3
                 : static_cast<double>(row.integer("tokens_used")) / static_cast<double>(shown);
  const double files = whole_length(row.list("affected_files"), omitted_files, 130);
  const double symbols = whole_length(row.list("symbols"), omitted_symbols, 200);
  const double callers = whole_length(row.list("callers"), omitted_callers, 180) +
                         whole_length(row.list("neighbours"), omitted_neighbours, 300);
  // What a section leaves passes to the next, so a share binds all sections up to it together.
  const bool with_snippets = snippets > 0;
  const double needed = std::max({files / (with_snippets ? 0.3 : 0.4),
                                  (files + symbols) / (with_snippets ? 0.55 : 0.75),
                                  (files + symbols + callers) / (with_snippets ? 0.7 : 1.0)});
  return rounded_up((needed + static_cast<double>(pages)) * tokens_per_byte);
}

}  // namespace context_delta::render

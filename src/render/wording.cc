#include "render/wording.h"

#include <algorithm>
#include <limits>

namespace context_delta::render {
namespace {

std::string renaming(const std::string& old, const std::string& path, std::string_view arrow) {
  std::size_t front = 0;
  for (std::size_t i = 0; i < std::min(old.size(), path.size()) && old[i] == path[i]; ++i) {
    if (old[i] == '/') front = i + 1;
  }
  std::size_t back = 0;
  const std::size_t most = std::min(old.size(), path.size()) - front;
  for (std::size_t i = 1; i <= most && old[old.size() - i] == path[path.size() - i]; ++i) {
    if (old[old.size() - i] == '/') back = i;
  }
  const std::string change = old.substr(front, old.size() - front - back) + std::string(arrow) +
                             path.substr(front, path.size() - front - back);
  if (front == 0 && back == 0) return change;
  return path.substr(0, front) + "{" + change + "}" + path.substr(path.size() - back);
}

}  // namespace

std::int64_t bounded_sum(std::int64_t a, std::int64_t b) {
  std::int64_t sum = 0;
  return __builtin_add_overflow(a, b, &sum) ? std::numeric_limits<std::int64_t>::max() : sum;
}

std::string counted(std::int64_t number, std::string_view one, std::string_view many) {
  return std::to_string(number) + " " + std::string(number == 1 ? one : many);
}

std::string joined(std::vector<std::string> texts) {
  texts.erase(std::remove(texts.begin(), texts.end(), ""), texts.end());
  std::string result;
  for (std::size_t i = 0; i < texts.size(); ++i) {
    if (i > 0) result += i + 1 == texts.size() ? " and " : ", ";
    result += texts[i];
  }
  return result;
}

std::string line_range(std::int64_t first, std::int64_t last, std::string_view dash) {
  if (last <= first) return std::to_string(first);
  return std::to_string(first).append(dash).append(std::to_string(last));
}

std::string file_name(const FileRow& file, std::string_view arrow) {
  if (!file.old_path || *file.old_path == file.path) return file.path;
  return renaming(*file.old_path, file.path, arrow);
}

std::string doubt(const CallerRow& caller) {
  if (caller.relation.empty() || caller.reason.empty()) return caller.relation + caller.reason;
  return caller.relation + ": " + caller.reason;
}

FileTotals file_totals(const PackView& pack) {
  FileTotals totals;
  for (const FileRow& file : pack.files) {
    totals.additions = bounded_sum(totals.additions, file.additions);
    totals.deletions = bounded_sum(totals.deletions, file.deletions);
    totals.references = bounded_sum(totals.references, file.references);
  }
  return totals;
}

std::string verdict(const WikiRow& page) {
  if (page.changed_in.empty()) return page.reason;
  return page.reason + (page.reason.empty() ? "in " : ", in ") + page.changed_in;
}

std::int64_t stale_pages(const PackView& pack) {
  return std::count_if(pack.wiki_pages.begin(), pack.wiki_pages.end(),
                       [](const WikiRow& row) { return row.stale; });
}

std::string omitted_rows(const PackView& pack) {
  const auto part = [](std::int64_t number, std::string_view one, std::string_view many) {
    return number > 0 ? counted(number, one, many) : std::string();
  };
  return joined({part(pack.files_omitted, "file", "files"),
                 part(pack.symbols_omitted, "symbol", "symbols"),
                 part(pack.callers_omitted, "caller", "callers"),
                 part(pack.neighbours_omitted, "possible caller", "possible callers")});
}

std::string with_option_names(std::string message) {
  constexpr std::string_view PARAMETER = "source_only=false";
  const std::size_t found = message.find(PARAMETER);
  if (found != message.npos) message.replace(found, PARAMETER.size(), "--all-files");
  return message;
}

}  // namespace context_delta::render

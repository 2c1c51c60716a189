#include "render/sample_packs.h"

#include <string>

namespace context_delta::test {
namespace {

/// The value with every text and number in it replaced.
json::Value replaced(const json::Value& value, const std::vector<std::string>& texts,
                     const std::vector<std::int64_t>& numbers, std::size_t& next) {
  if (value.as<std::string>() != nullptr) return texts[next++ % texts.size()];
  if (value.as<std::int64_t>() != nullptr) return numbers[next++ % numbers.size()];
  if (const auto* list = value.as<json::List>()) {
    json::List result;
    for (const json::Value& each : *list) result.push_back(replaced(each, texts, numbers, next));
    return result;
  }
  const auto* mapping = value.as<json::Mapping>();
  if (mapping == nullptr) return value;
  json::Mapping result;
  for (const auto& [key, each] : *mapping) result.set(key, replaced(each, texts, numbers, next));
  return result;
}

using json::List;
using json::Mapping;
using json::Value;

Mapping file(const char* path, const char* status, int additions, int deletions, int symbols,
             int references) {
  return {{"path", path},           {"status", status},   {"additions", additions},
          {"deletions", deletions}, {"symbols", symbols}, {"references", references}};
}

Mapping renamed(const char* old_path, const char* path) {
  return {{"path", path},   {"status", "renamed"}, {"old_path", old_path}, {"additions", 1},
          {"deletions", 1}, {"symbols", 2},        {"references", 0}};
}

Mapping symbol(const char* fqn, const char* kind, const char* path, int line, int end_line,
               const char* status, const char* signature) {
  Mapping row{{"fqn", fqn},   {"name", fqn},          {"kind", kind},    {"file", path},
              {"line", line}, {"end_line", end_line}, {"status", status}};
  if (*signature != '\0') row.set("signature", signature);
  return row;
}

Mapping caller(const char* fqn, const char* path, int call_line, const char* calls) {
  return {{"fqn", fqn},    {"name", fqn},           {"kind", "method"},
          {"file", path},  {"line", call_line - 2}, {"call_line", call_line},
          {"calls", calls}};
}

Mapping guess(const char* fqn, const char* path, int call_line, const char* calls,
              const char* reason) {
  Mapping row = caller(fqn, path, call_line, "");
  row.set("relation", "namesake");
  row.set("reason", reason);
  row.set("calls", calls);
  return row;
}

Mapping pack(List files, List symbols, List callers, List neighbours, List snippets) {
  const auto changed_files = files.size();
  const auto changed_symbols = symbols.size();
  return {{"base_branch", "main"},
          {"target_branch", "feature/retry"},
          {"commit_count", 3},
          {"total_changed_files", changed_files},
          {"excluded_files", 0},
          {"affected_files", std::move(files)},
          {"symbols", std::move(symbols)},
          {"callers", std::move(callers)},
          {"neighbours", std::move(neighbours)},
          {"snippets", std::move(snippets)},
          {"tokens_used", 1800},
          {"truncated", false},
          {"total_changed_symbols", changed_symbols},
          {"files_omitted", 0},
          {"symbols_omitted", 0},
          {"callers_omitted", 0},
          {"neighbours_omitted", 0}};
}

Mapping empty_parts() {
  return {{"affected_files", List()}, {"symbols", List()},  {"callers", List()},
          {"neighbours", List()},     {"snippets", List()}, {"tokens_used", 0},
          {"truncated", false}};
}

}  // namespace

Mapping full_pack() {
  const char* session = "src/client/session.py";
  const char* request = "client.session.Session.request";
  const char* reason = "one of 3 definitions named so; the receiver's type is not known";
  Mapping result =
      pack({file(session, "modified", 112, 20, 14, 37),
            renamed("src/client/old_name.py", "src/client/new_name.py"),
            file("src/gone.py", "deleted", 0, 80, 0, 0), file("src/new.py", "added", 7, 0, 1, 0)},
           {symbol(request, "method", session, 120, 168, "modified",
                   "def request(self, method: str, url: str, *, retries: int = 3) -> Response"),
            symbol("client.session.Session", "class", session, 12, 240, "modified", ""),
            symbol("new.main", "function", "src/new.py", 3, 3, "added", "def main()")},
           {caller("client.api.get", "src/client/api.py", 44, request),
            caller("client.pool.Pool.drain", "src/client/pool.py", 401, request),
            caller("client.api.open", "src/client/api.py", 9, "client.session.Session")},
           {guess("other.Pool.drain", "src/other/pool.py", 30, request, reason),
            guess("other.Pool.fill", "src/other/pool.py", 33, request, reason),
            guess("other.run", "src/other/run.py", 5, request, "the only definition named so")},
           {Mapping{{"file", session},
                    {"line", 98},
                    {"end_line", 101},
                    {"content", "\tdef close(self):\n\t\tself.pool = None\n\nend"}}});
  result.set("excluded_files", 2);
  result.set("wiki_pages",
             List{Mapping{{"page", "client/sessions.md"},
                          {"title", "Sessions and retries"},
                          {"sources", List{"src/client"}},
                          {"stale", true},
                          {"reason", "written at 1a2b3c4, src/client/session.py changed since"},
                          {"stale_source", "src/client/session.py"},
                          {"changed_in", "9f8e7d6c5b4a"}},
                  Mapping{{"page", "start.md"},
                          {"title", "Getting started"},
                          {"sources", List{"src/new.py"}},
                          {"stale", false},
                          {"reason", "written at 5d6e7f8, no source changed since"}}});
  result.set("warning",
             "Symbols, lines and callers come from the index of the checked-out branch, not of "
             "target_branch: they may be off where the two differ.");
  return result;
}

Mapping truncated_pack() {
  Mapping result =
      pack({file("src/a.cc", "modified", 10, 2, 9, 4)},
           {symbol("a::run", "function", "src/a.cc", 4, 20, "modified", "")}, {}, {}, {});
  result.set("tokens_used", 90);
  result.set("truncated", true);
  result.set("total_changed_files", 13);
  result.set("total_changed_symbols", 41);
  result.set("files_omitted", 12);
  result.set("symbols_omitted", 40);
  result.set("callers_omitted", 1);
  return result;
}

Mapping nothing_changed_pack() {
  Mapping result{{"base_branch", "main"},
                 {"target_branch", "docs"},
                 {"commit_count", 1},
                 {"total_changed_files", 0},
                 {"excluded_files", 3}};
  for (const auto& [key, value] : empty_parts()) result.set(key, value);
  result.set("message",
             "No source file changed between branches; 3 other files did (source_only=false lists "
             "them)");
  return result;
}

Mapping error_pack() {
  Mapping result = empty_parts();
  result.set("error",
             "--base: no branch, tag or commit 'mian' in /srv/project; did you mean 'main'");
  return result;
}

Mapping hostile_pack() {
  const char* path = "src/\x1b[2J\x1b]0;owned\a\n+++ b/\xF4\x8F\xBF\xBF\xE2\x80\xAE.py";
  Mapping result =
      pack({file(path, "modified\x1b[31m", 1, 1, 1, 1),
            file("src/\xE6\x97\xA5\xE6\x9C\xAC\xE8\xAA\x9E/\xE5\x90\x8D\xE5\x89\x8D.py", "added", 5,
                 0, 1, 0),
            file("src/e\xCC\x81t\xC3\xA9.py", "added", 5, 0, 1, 0)},
           {symbol("a\x1b[0mb", "func\x9Btion", path, 3, 1, "added", "def f(x='\x1b[5m')"),
            symbol("same", "function", path, 4, 9, "added", "same")},
           {caller("ring\a\b\b", path, 4, "a\rb")},
           {guess("g", path, 4, "a", "because\n\nerror: forged")},
           {Mapping{{"file", path},
                    {"line", 9'999},
                    {"end_line", 10'000},
                    {"content", "if (x) {\x1b[8m /* hidden */\n\xE2\x80\xAE} // \xEF\xBB\xBF"}}});
  result.set("target_branch", "evil\x1b]8;;http://example.org\x1b\\");
  result.set("wiki_pages",
             List{Mapping{{"page", "a\x7F.md"}, {"title", "T\x1b[1m"}, {"stale", true}}, "no row"});
  result.set("commit_count", "many");
  result.set("warning", "w\x1b[7m");
  return result;
}

json::Mapping refilled(const json::Mapping& pack, const std::vector<std::string>& texts,
                       const std::vector<std::int64_t>& numbers) {
  std::size_t next = 0;
  return *replaced(pack, texts, numbers, next).as<json::Mapping>();
}

}  // namespace context_delta::test

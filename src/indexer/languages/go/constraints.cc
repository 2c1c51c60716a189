#include "indexer/languages/go/constraints.h"

#include <algorithm>
#include <array>
#include <vector>

#include "indexer/languages/go/go.h"
#include "indexer/languages/kit/text.h"

namespace context_delta::indexer::go {
namespace {

constexpr auto SYSTEMS = std::to_array<std::string_view>(
    {"aix", "android", "darwin", "dragonfly", "freebsd", "hurd", "illumos", "ios", "js", "linux",
     "nacl", "netbsd", "openbsd", "plan9", "solaris", "wasip1", "windows", "zos"});
constexpr auto PROCESSORS = std::to_array<std::string_view>(
    {"386", "amd64", "arm", "arm64", "loong64", "mips", "mips64", "mips64le", "mipsle", "ppc64",
     "ppc64le", "riscv64", "s390x", "sparc64", "wasm"});
constexpr auto DEFAULT_TAGS =
    std::to_array<std::string_view>({"amd64", "cgo", "gc", "linux", "unix"});

template <class Names>
bool contains(const Names& names, std::string_view name) {
  return std::find(names.begin(), names.end(), name) != names.end();
}

void add(std::string& all, const std::string& condition) {
  if (!all.empty()) all += " && ";
  all += "(" + condition + ")";
}

bool is_tag_byte(char byte) { return kit::is_identifier_byte(byte) || byte == '.'; }

/// Reads a condition with a stack for what is open: '(' '!' '&' '|'.
class Condition {
 public:
  bool holds(std::string_view text);

 private:
  void apply_until(std::string_view stops);
  void push(bool value);

  std::vector<char> open_;
  std::vector<bool> values_;
};

void Condition::push(bool value) {
  while (!open_.empty() && open_.back() == '!') {
    value = !value;
    open_.pop_back();
  }
  values_.push_back(value);
}

/// Combines values until one of `stops` is on top.
void Condition::apply_until(std::string_view stops) {
  while (!open_.empty() && stops.find(open_.back()) == std::string_view::npos) {
    const char operation = open_.back();
    open_.pop_back();
    if (values_.size() < 2 || operation == '(') continue;
    const bool right = values_.back();
    values_.pop_back();
    values_.back() = operation == '&' ? values_.back() && right : values_.back() || right;
  }
}

bool Condition::holds(std::string_view text) {
  for (std::size_t at = 0; at < text.size(); ++at) {
    const char byte = text[at];
    if (is_tag_byte(byte)) {
      std::size_t end = at;
      while (end < text.size() && is_tag_byte(text[end])) ++end;
      const std::string_view tag = text.substr(at, end - at);
      push(contains(DEFAULT_TAGS, tag) || tag.starts_with("go1."));
      at = end - 1;
    } else if (byte == '(' || byte == '!') {
      open_.push_back(byte);
    } else if (byte == ')') {
      apply_until("(");
      if (!open_.empty()) open_.pop_back();
      if (values_.empty()) continue;
      const bool value = values_.back();
      values_.pop_back();
      push(value);
    } else if ((byte == '&' || byte == '|') && at + 1 < text.size() && text[at + 1] == byte) {
      apply_until(byte == '&' ? "(|" : "(");
      open_.push_back(byte);
      ++at;
    }
  }
  apply_until("");
  return values_.empty() || values_.back();
}

/// The condition that a file's name makes: `linux && amd64` of `a_linux_amd64_test.go`.
std::string constraint_of_name(std::string_view path) {
  std::string_view stem = kit::base_name(path);
  stem = stem.substr(0, stem.find('.'));
  if (stem.ends_with("_test")) stem.remove_suffix(5);
  const std::size_t first = stem.find('_');
  if (first == std::string_view::npos) return {};
  const std::vector<std::string_view> words = kit::split(stem.substr(first + 1), '_');
  const std::string last(words.back());
  if (contains(SYSTEMS, last)) return last;
  if (!contains(PROCESSORS, last)) return {};
  const bool both = words.size() > 1 && contains(SYSTEMS, words[words.size() - 2]);
  return both ? std::string(words[words.size() - 2]) + " && " + last : last;
}

}  // namespace

std::string constraint_of(std::string_view path, const Interface& facts) {
  std::string all;
  for (const Binding& binding : facts.bindings) {
    if (binding.kind != Binding::Kind::GLOBAL) continue;
    if (binding.name == PACKAGE_NAME) break;  // constraints stand above it
    if (binding.name == BUILD_CONSTRAINT) add(all, binding.value);
  }
  const std::string of_name = constraint_of_name(path);
  if (!of_name.empty()) add(all, of_name);
  return all;
}

std::string modern_constraint(std::string_view line) {
  std::string made;
  for (const std::string_view choice : kit::split(line, ' ')) {
    if (choice.empty()) continue;
    if (!made.empty()) made += " || ";
    made += '(';
    for (const char byte : choice) made += byte == ',' ? std::string(" && ") : std::string(1, byte);
    made += ')';
  }
  return made;
}

bool is_built_by_default(std::string_view constraint) { return Condition().holds(constraint); }

bool is_test_file(std::string_view path) { return path.ends_with("_test.go"); }

}  // namespace context_delta::indexer::go

#include "indexer/languages/cpp/cpp.h"

#include <array>

#include "indexer/languages/c_family/extract.h"
#include "indexer/languages/c_family/prepare.h"
#include "indexer/languages/kit/text.h"

namespace context_delta::indexer::cpp {
namespace {

constexpr std::array<std::string_view, 12> SUFFIXES = {
    ".cc", ".cpp", ".cxx", ".c++", ".hh", ".hpp", ".hxx", ".h++", ".ipp", ".inl", ".tcc", ".h"};

const c_family::Syntax& syntax() {
  static const c_family::Syntax made = c_family::make_syntax(tree_sitter_cpp(), true);
  return made;
}

/// Words that no C header has, at the start of a line or behind a colon.
bool is_cpp_line(std::string_view line) {
  line = kit::trimmed(line);
  for (const std::string_view word : {"class ", "namespace ", "template <", "template<", "using ",
                                      "public:", "private:", "protected:", "friend ", "constexpr ",
                                      "explicit ", "virtual ", "inline constexpr"}) {
    if (line.starts_with(word)) return true;
  }
  return line.starts_with("#include <") && line.ends_with('>') &&
         line.find('.') == std::string_view::npos;
}

/// Whether a header is C++: a line says so outside of what only C++ compilers see anyway.
bool is_cpp_text(std::string_view text) {
  bool in_comment = false;
  int cpp_only = 0;  // depth inside #ifdef __cplusplus
  int depth = 0;
  for (const std::string_view line : kit::split(text, '\n')) {
    const std::string_view written = kit::trimmed(line);
    if (in_comment || written.starts_with("/*")) {
      in_comment = written.find("*/") == std::string_view::npos;
      continue;
    }
    if (written.starts_with("#if")) {
      ++depth;
      if (cpp_only == 0 && written.find("__cplusplus") != std::string_view::npos) cpp_only = depth;
    } else if (written.starts_with("#else") || written.starts_with("#elif")) {
      if (cpp_only == depth) cpp_only = 0;
    } else if (written.starts_with("#endif")) {
      if (cpp_only == depth) cpp_only = 0;
      --depth;
    } else if (cpp_only == 0 && is_cpp_line(written)) {
      return true;
    }
  }
  return false;
}

}  // namespace

Facts extract(TSNode root, std::string_view text) {
  return c_family::extract(syntax(), root, text);
}

const Language LANGUAGE = {.name = "cpp",
                           .family = "c",
                           .version = 1,
                           .suffixes = SUFFIXES,
                           .accepts = is_cpp_text,
                           .grammar = tree_sitter_cpp,
                           .prepare = c_family::prepare,
                           .extract = extract,
                           .resolve = resolve};

}  // namespace context_delta::indexer::cpp

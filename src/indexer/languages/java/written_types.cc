#include <cctype>

#include "indexer/languages/java/type_names.h"
#include "indexer/languages/kit/text.h"

namespace context_delta::indexer::java {
namespace {

/// Without annotations, modifiers and wildcards in front: `Foo` of `@A ? extends Foo`.
std::string_view without_prefixes(std::string_view written) {
  written = kit::trimmed(written);
  while (true) {
    if (written.starts_with('@')) {
      const std::size_t space = written.find(' ');
      if (space == std::string_view::npos) return {};
      written = kit::trimmed(written.substr(space));
    } else if (written.starts_with("final ")) {
      written = kit::trimmed(written.substr(6));
    } else if (written.starts_with("? extends ")) {
      written = kit::trimmed(written.substr(10));
    } else if (written.starts_with("? super ")) {
      // What a function of such a type is given is a T.
      written = kit::trimmed(written.substr(8));
    } else {
      return written;
    }
  }
}

/// Takes `[]` and `...` off the end and returns how many there were.
std::uint8_t take_dimensions(std::string_view& written) {
  std::uint8_t count = 0;
  while (true) {
    written = kit::trimmed(written);
    if (written.ends_with("...")) {
      written.remove_suffix(3);
    } else if (written.ends_with(']') && written.rfind('[') != std::string_view::npos) {
      written = written.substr(0, written.rfind('['));
    } else {
      return count;
    }
    if (count < 200) ++count;
  }
}

}  // namespace

Type TypeNames::read(const File& file, DefinitionIndex scope, std::string_view written, int depth) {
  if (depth > 5) return {};
  written = without_prefixes(written);
  const std::vector<std::string_view> intersection = split_outside(written, '&');
  if (intersection.size() > 1) written = intersection.front();
  const std::uint8_t dimensions = take_dimensions(written);
  written = kit::trimmed(written);
  const std::size_t angle = written.find('<');
  const std::string name(kit::trimmed(written.substr(0, angle)));
  Type made;
  if (name.empty() || name == "var") return made;
  // Of `?` nothing is known but that it is an object.
  if (name.starts_with('?')) return depth > 0 ? external("java.lang.Object") : made;
  if (name == "void") {
    made.kind = Type::Kind::VOID;
    return made;
  }
  made = is_primitive_name(name) ? primitive(name) : named(file, scope, name);
  if (made.kind == Type::Kind::PACKAGE) made = {};
  made.dimensions = dimensions;
  if (angle == std::string_view::npos || depth > 2) return made;
  const std::size_t close = written.rfind('>');
  if (close == std::string_view::npos || close < angle) return made;
  const std::string_view inner = written.substr(angle + 1, close - angle - 1);
  // `Outer<A>.Inner<B>`: what the inner class is called comes last.
  if (inner.find(">.") != std::string_view::npos) return Type{};
  for (const std::string_view each : split_outside(inner, ',')) {
    made.arguments.push_back(read(file, scope, each, depth + 1));
  }
  return made;
}

}  // namespace context_delta::indexer::java

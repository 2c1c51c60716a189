#include <algorithm>
#include <array>

#include "indexer/languages/java/library.h"
#include "indexer/languages/java/values.h"

namespace context_delta::indexer::java {
namespace {

/// Whether a value that goes in may come out of something that the repository does not define.
bool may_pass_through(const Type& type) {
  if (type.kind == Type::Kind::UNKNOWN) return !type.outside;
  if (type.kind == Type::Kind::EXTERNAL) {
    return std::any_of(type.arguments.begin(), type.arguments.end(), may_pass_through);
  }
  return type.kind != Type::Kind::PRIMITIVE && type.kind != Type::Kind::NONE;
}

/// Static methods that give a container of what they are given.
struct Factory {
  std::string_view type, method, result;
};

constexpr auto FACTORIES = std::to_array<Factory>({
    {"Arrays", "asList", "java.util.List"},
    {"Arrays", "stream", "java.util.stream.Stream"},
    {"Collections", "singleton", "java.util.Set"},
    {"Collections", "singletonList", "java.util.List"},
    {"List", "of", "java.util.List"},
    {"Optional", "of", "java.util.Optional"},
    {"Optional", "ofNullable", "java.util.Optional"},
    {"Set", "of", "java.util.Set"},
    {"Stream", "of", "java.util.stream.Stream"},
});

/// Methods of containers that hand each of their elements to a function.
constexpr auto ELEMENT_METHODS =
    std::to_array<std::string_view>({"allMatch", "anyMatch",    "dropWhile", "filter",
                                     "flatMap",  "forEach",     "ifPresent", "ifPresentOrElse",
                                     "map",      "mapToDouble", "mapToInt",  "mapToLong",
                                     "max",      "min",         "noneMatch", "peek",
                                     "removeIf", "replaceAll",  "sort",      "sorted",
                                     "takeWhile"});

}  // namespace

Type Values::library_factory(const Type& receiver, std::string_view name,
                             const Arguments& arguments) {
  if (arguments.types.empty()) return {};
  Type value = arguments.types.front();
  if (name == "toArray") return value.dimensions > 0 ? value : Type{};
  if (!receiver.names_type) return {};
  for (const Factory& each : FACTORIES) {
    if (each.type != simple_name(receiver.name) || each.method != name) continue;
    const bool spread = value.dimensions > 0 && arguments.types.size() == 1;
    if (spread) --value.dimensions;
    if (value.is_primitive()) value = external("java.lang." + std::string(boxed(value.name)));
    value.exact = false;
    Type made = external(each.result);
    made.arguments.push_back(value);
    return made;
  }
  return {};
}

Type Values::library_result(const Type& receiver, std::string_view name,
                            const Arguments& arguments) {
  if (receiver.dimensions > 0) return name == "clone" ? receiver : Type{};
  Type made;
  const bool passes = may_pass_through(receiver) ||
                      std::any_of(arguments.types.begin(), arguments.types.end(), may_pass_through);
  made.outside = !passes || receiver.kind == Type::Kind::CLASS;
  const Type* library = &receiver;
  if (receiver.kind == Type::Kind::CLASS) {
    const std::vector<Type>& externals = names_.ancestry(receiver).externals;
    for (const Type& each : externals) {
      const Type found = library_result(each, name, arguments);
      if (found.kind != Type::Kind::UNKNOWN) return found;
    }
    library = nullptr;
  }
  const bool is_external = library != nullptr && library->kind == Type::Kind::EXTERNAL;
  const LibraryType* listed = is_external ? library_type_of(library->name) : library_type("Object");
  if (listed == nullptr) return made;
  const Type factory = library_factory(receiver, name, arguments);
  if (factory.kind != Type::Kind::UNKNOWN) return factory;
  // Their results have the type of their arguments.
  if (listed->name == "Math" && (name == "abs" || name == "max" || name == "min") &&
      !arguments.types.empty()) {
    return promoted(arguments.types.front(), arguments.types.back());
  }
  if (listed->name == "Objects" && name.starts_with("requireNonNull") && !arguments.types.empty()) {
    return arguments.types.front();
  }
  const std::string_view type = library_member(*listed, name);
  return type.empty() ? made : library_value(type, receiver);
}

Type Values::library_value(std::string_view written, const Type& receiver) {
  std::uint8_t dimensions = 0;
  for (; written.ends_with("[]"); written.remove_suffix(2)) ++dimensions;
  const std::size_t angle = written.find('<');
  const std::string_view name = written.substr(0, angle);
  Type made;
  if (name == "0" || name == "1") {
    const auto position = static_cast<std::size_t>(name.front() - '0');
    if (position < receiver.arguments.size()) made = receiver.arguments[position];
  } else if (is_primitive_name(name)) {
    made = primitive(name);
  } else if (const LibraryType* listed = library_type(name)) {
    made = external(std::string(listed->package) + "." + std::string(name));
  }
  made.dimensions = static_cast<std::uint8_t>(made.dimensions + dimensions);
  if (angle == std::string_view::npos || !written.ends_with('>')) return made;
  const std::string_view inner = written.substr(angle + 1, written.size() - angle - 2);
  for (const std::string_view each : split_outside(inner, ',')) {
    made.arguments.push_back(library_value(each, receiver));
  }
  return made;
}

/// What a container hands to the function that one of its methods takes.
Type Values::library_function_parameter(const Callee& callee, std::string_view method,
                                        std::size_t position) {
  const std::vector<Type>& arguments = callee.receiver.arguments;
  if (callee.receiver.dimensions > 0 || callee.receiver.names_type) return {};
  if (arguments.size() == 1) {
    const bool of_element =
        std::find(ELEMENT_METHODS.begin(), ELEMENT_METHODS.end(), method) != ELEMENT_METHODS.end();
    return of_element ? arguments.front() : Type{};
  }
  if (arguments.size() != 2 || position > 1) return {};
  if (method == "computeIfAbsent") return arguments.front();
  if (method == "merge") return arguments.back();
  const bool of_entry = method == "forEach" || method == "replaceAll" || method == "compute" ||
                        method == "computeIfPresent";
  return of_entry ? arguments[position] : Type{};
}

}  // namespace context_delta::indexer::java

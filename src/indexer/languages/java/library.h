#pragma once

#include <span>
#include <string_view>

/// Types that every Java program has without defining them, as far as choosing among overloads
/// and following chains of calls needs them.
namespace context_delta::indexer::java {

struct LibraryType {
  std::string_view name;  ///< simple, of a nested type with the outer name
  std::string_view package;
  std::string_view supertypes;  ///< direct ones but Object, simple names separated by spaces
  /// Of a functional interface: how many parameters its method has, then "v" when it gives
  /// nothing, "r" when it gives a value.
  std::string_view function;
  /// `method:type` separated by spaces; 0 and 1 stand for type arguments; `FIELD.:type` is a
  /// constant, `*.:type` any constant.
  std::string_view members;
};

/// All of them, by name in byte order.
std::span<const LibraryType> library_types();

/// The type of a simple name; null when it is not listed.
const LibraryType* library_type(std::string_view name);

/// The type of a qualified name; null when it is not listed.
const LibraryType* library_type_of(std::string_view qualified_name);

/// Whether `type` is `supertype` or below it, both listed.
bool is_library_subtype(const LibraryType& type, const LibraryType& supertype);

/// The type of a method's value or of a constant (`NAME.`); empty when it is not listed.
std::string_view library_member(const LibraryType& type, std::string_view member);

/// Whether a method of this name on a receiver of unknown type is likelier one of the library.
bool is_common_method(std::string_view name);

}  // namespace context_delta::indexer::java

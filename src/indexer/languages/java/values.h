#pragma once

#include <map>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>

#include "indexer/languages/java/overloads.h"
#include "indexer/languages/java/type_names.h"

/// What expressions of the file being resolved mean, as far as the text says.
namespace context_delta::indexer::java {

/// What a call may mean.
struct Callee {
  Choice choice;
  Type receiver;          ///< the type whose methods were looked through; UNKNOWN for a bare guess
  bool outside = false;   ///< something that the repository does not define
  bool imported = false;  ///< by a static import
  std::string_view doubt = {};  ///< why not sure, beside the choice
};

class Values {
 public:
  /// `facts`: of the file that `names` is for.
  Values(const Facts& facts, TypeNames& names);

  /// The type of an expression, written as in expressions.h.
  Type of(DefinitionIndex scope, std::string_view expression, int depth = 0);
  /// The types of a call's arguments.
  Arguments arguments(DefinitionIndex scope, std::string_view values, std::int16_t count,
                      int depth = 0);
  /// A call with a receiver of a type.
  Callee on(const Type& receiver, std::string_view name, const Arguments& arguments);
  /// A call without a receiver: a method of a class around the scope, or a static import.
  Callee bare(DefinitionIndex scope, std::string_view name, const Arguments& arguments);
  /// `super` in a scope: the superclass.
  Type superclass(DefinitionIndex scope);

 private:
  Type head(DefinitionIndex scope, std::string_view& text, int depth);
  Type operation(DefinitionIndex scope, char sign, std::string_view operands, int depth);
  Type name_value(DefinitionIndex scope, std::string_view name);
  Type local_value(std::string_view index, int depth);
  Type static_field(std::string_view name);
  Type member(DefinitionIndex scope, const Type& owner, std::string_view name);
  Type element(const Type& type);
  Type result(const Callee& callee, std::string_view name, const Arguments& arguments);
  Type method_result(const Method& method, const Type& receiver, const Arguments& arguments);
  Type inferred(const Type& result, const Method& method, const Arguments& arguments);
  Type lambda_parameter(DefinitionIndex scope, std::string_view text, int depth);
  Type function_parameter(const Type& function, std::size_t position);
  Type library_function_parameter(const Callee& callee, std::string_view method,
                                  std::size_t position);
  Type library_factory(const Type& receiver, std::string_view name, const Arguments& arguments);
  Type library_result(const Type& receiver, std::string_view name, const Arguments& arguments);
  Type library_value(std::string_view written, const Type& receiver);
  const Methods& methods(const Type& receiver, std::string_view name);
  Callee statically_imported(std::string_view name, const Arguments& arguments);

  TypeNames& names_;
  const File& file_;
  const Facts& facts_;
  std::unordered_map<std::int32_t, Type> locals_;
  std::unordered_map<std::string, Type> known_;
  std::unordered_map<std::string, Methods> methods_;
  Methods last_methods_;  // of a receiver with type arguments
};

/// The text up to the bracket that closes the one it starts with, both left out; the text moves
/// behind it.
std::string_view take_brackets(std::string_view& text);
/// The identifier at the start of a text, which moves behind it.
std::string_view take_name(std::string_view& text);
/// How many arguments a list has, as Expressions::arguments wrote it.
std::int16_t count_of(std::string_view values);

}  // namespace context_delta::indexer::java

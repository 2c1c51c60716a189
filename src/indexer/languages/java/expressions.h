#pragma once

#include <string>
#include <string_view>
#include <unordered_map>

#include "indexer/languages/java/locals.h"
#include "indexer/languages/java/syntax.h"

/// Expressions of Java as the facts keep them: what rules need to tell their types.
///
///     name         a field, a type or a package        name@7    the local variable of binding 7
///     e.name       a field, or a part of a name        e[]       an element of an array
///     e.m(a,b)     a call                              m(a)      a call without receiver
///     {T}          a value of type T                   {new T}   of exactly this class
///     +(a,b)       an operator that adds or concatenates, ~(a) one that only widens
///     ?(a,b)       one of two values                   ->2v      a lambda, see lambda_text
///     ::           a method reference                  ?         anything else
///     ^i.j:m(a)e   parameter j of the lambda that is argument i of the call e.m(a)
namespace context_delta::indexer::java {

/// Reads expressions at the place where the walk stands.
class Expressions {
 public:
  Expressions(std::string_view text, const Locals& locals) : text_(text), locals_(locals) {}

  std::string of(TSNode node) const { return written(node, 0); }
  /// The arguments, joined by ','.
  std::string arguments(TSNode list) const { return arguments_text(list, 0); }

 private:
  std::string written(TSNode node, int depth) const;
  std::string arguments_text(TSNode list, int depth) const;
  std::string value_text(TSNode node, int depth) const;
  std::string binary_text(TSNode node, int depth) const;
  std::string conditional_text(TSNode node, int depth) const;
  std::string name_text(TSNode node) const;
  const std::string& lambda_of(TSNode node) const;

  std::string_view text_;
  const Locals& locals_;
  // A lambda is written again for each call behind it in a chain.
  mutable std::unordered_map<const void*, std::string> lambdas_;
};

/// How many arguments a list has.
std::int16_t argument_count(TSNode list);

/// A type as written, on one line, array dimensions behind it; "?" when it is too long to keep.
std::string type_text(TSNode type, TSNode dimensions, std::string_view text);

/// `->`, the number of parameters, and whether the body gives nothing ("v"), a value ("r") or, as
/// a call does, either ("b").
std::string lambda_text(TSNode lambda);

}  // namespace context_delta::indexer::java

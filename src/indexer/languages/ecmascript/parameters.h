#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "indexer/languages/ecmascript/syntax.h"
#include "indexer/model/facts.h"

/// Parameters and arguments.
namespace context_delta::indexer::ecmascript {

/// A parameter in any of the family's grammars.
struct Parameter {
  TSNode pattern = {};  ///< the name, or what takes the value apart
  TSNode type = {};     ///< null when none is written
  TSNode value = {};    ///< the default; null when there is none
  bool rest = false;
  bool optional = false;
  bool member = false;  ///< declares a field of the class: `constructor(private a: A)`
};

Parameter parameter_of(const Syntax& syntax, TSNode node);

/// Whether the node stands for a parameter and is no comment, decorator or `this`.
bool is_parameter(const Syntax& syntax, TSNode node, std::string_view text);

/// Sets how many arguments the function takes.
void count_parameters(const Syntax& syntax, TSNode function, std::string_view text,
                      Definition& definition);

/// How many arguments a call passes; ANY_NUMBER when some are spread.
std::int16_t count_arguments(const Syntax& syntax, TSNode arguments, std::string_view text);

/// The type in an annotation, without its colon; that of `x is T` is boolean.
std::string annotated_type(TSNode annotation, std::string_view text);

/// Whether a method of this name hands the elements of an array to its callback.
bool is_element_method(std::string_view name);

}  // namespace context_delta::indexer::ecmascript

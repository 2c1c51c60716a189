#pragma once

#include <string>
#include <vector>

#include "indexer/languages/java/type_names.h"
#include "indexer/model/facts.h"

/// Reads type parameters and supertypes out of signatures.
namespace context_delta::indexer::java {

/// The type parameters of a generic class, interface, method or constructor.
std::vector<TypeParameter> type_parameters(const Definition& definition);

/// The supertypes of a class with their type arguments, as written; without, where the signature
/// does not hold them.
std::vector<std::string> written_supertypes(const Definition& definition);

bool is_record(const Definition& definition);
/// A class without a name, or the body of an enum constant.
bool is_anonymous(const kit::Outline& outline, DefinitionIndex index);

}  // namespace context_delta::indexer::java

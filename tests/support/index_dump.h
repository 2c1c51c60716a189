#pragma once

#include <string>
#include <vector>

#include "storage/database.h"

namespace context_delta::test {

/// Everything that an index says of its commit, one row a line, with paths and texts in place of
/// ids and in an order that does not depend on them: equal for equal indexes.
std::vector<std::string> index_dump(const storage::Database& database);

/// The lines that only one of two dumps has, marked '-' (first) and '+' (second).
std::string difference(const std::vector<std::string>& first,
                       const std::vector<std::string>& second);

}  // namespace context_delta::test

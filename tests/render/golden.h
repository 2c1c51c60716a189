#pragma once

#include <string>

namespace context_delta::test {

/// Compares with golden/FILE, or writes it when CONTEXT_DELTA_UPDATE_GOLDEN is set.
void expect_golden(const std::string& file, const std::string& text);

}  // namespace context_delta::test

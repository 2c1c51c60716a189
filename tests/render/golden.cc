#include "render/golden.h"

#include <cstdlib>
#include <fstream>
#include <iterator>

#include <gtest/gtest.h>

namespace context_delta::test {

void expect_golden(const std::string& file, const std::string& text) {
  const std::string path = std::string(GOLDEN_FOLDER) + "/" + file;
  if (std::getenv("CONTEXT_DELTA_UPDATE_GOLDEN") != nullptr) {
    std::ofstream(path, std::ios::binary) << text;
  }
  std::ifstream stream(path, std::ios::binary);
  EXPECT_EQ(text, std::string(std::istreambuf_iterator<char>(stream), {})) << path;
}

}  // namespace context_delta::test

#pragma once

#include <cstdint>
#include <string>

#include "indexer/model/facts.h"

/// Where a definition stands.
namespace context_delta::indexer {

/// A file of the commit that the index covers.
struct File {
  std::int64_t id = 0;
  std::string path;
  std::string language;  ///< name of its Language
  std::string family;    ///< of its Language: names of other families mean nothing to it
};

/// A definition of a file.
struct Place {
  const File* file = nullptr;
  DefinitionIndex definition = NOWHERE;
  friend bool operator==(const Place& a, const Place& b) {
    return a.file == b.file && a.definition == b.definition;
  }
};

}  // namespace context_delta::indexer

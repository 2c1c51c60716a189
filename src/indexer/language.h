#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include <tree_sitter/api.h>

#include "indexer/model/facts.h"
#include "indexer/model/resolution.h"
#include "indexer/world/world.h"

/// What the indexer must know of a language. Each is a folder under languages/ with one value of
/// this type, listed in languages/languages.cc and nowhere else.
namespace context_delta::indexer {

struct Language {
  std::string_view name;  ///< as the index records it: "python"
  /// What languages have in common whose files may name each other's definitions: "ecmascript".
  std::string_view family;
  /// Raised whenever extract() or resolve() change what they return: what was stored with another
  /// version is made anew.
  std::uint32_t version;
  std::span<const std::string_view> suffixes;  ///< of file names, with the dot
  /// For a suffix that several languages claim (".h"): whether this text is in this language.
  /// Null: always. The first language of the table that accepts gets the file.
  bool (*accepts)(std::string_view text);
  /// Null: texts are not parsed; extract() gets a null node and reads the text itself.
  const TSLanguage* (*grammar)();
  /// The text to parse in place of `text`: as long, with its lines, and spaces where the grammar
  /// would stumble; empty when the text itself will do. Null: always itself.
  std::string (*prepare)(std::string_view text) = nullptr;
  /// The facts of one parsed text, in any order (put_interface_first follows). Never fails: what
  /// did not parse is left out or marked BROKEN.
  Facts (*extract)(TSNode root, std::string_view text);
  /// Ties the references of a file to definitions and names its definitions.
  Resolution (*resolve)(const File& file, const Facts& facts, World& world);
};

/// All languages, in the order in which they are asked.
std::span<const Language* const> languages();

/// The language of a file by its name and, where names do not tell, its text; null when none.
const Language* language_of(std::string_view path, std::string_view text);

/// Whether any language claims files of this name: only those blobs are read.
bool may_have_language(std::string_view path);

}  // namespace context_delta::indexer

#include <algorithm>
#include <array>

#include "indexer/language.h"
#include "indexer/languages/c/c.h"
#include "indexer/languages/cpp/cpp.h"
#include "indexer/languages/ecmascript/javascript.h"
#include "indexer/languages/ecmascript/typescript.h"
#include "indexer/languages/go/go.h"
#include "indexer/languages/java/java.h"
#include "indexer/languages/manifest/manifest.h"
#include "indexer/languages/python/python.h"
#include "indexer/languages/rust/rust.h"

namespace context_delta::indexer {
namespace {

/// In the order in which they are asked: C++ before C, which takes the headers that C++ does not.
constexpr std::array LANGUAGES = {
    &python::LANGUAGE,
    &cpp::LANGUAGE,
    &c::LANGUAGE,
    &go::LANGUAGE,
    &go::MODULE_LANGUAGE,
    &rust::LANGUAGE,
    &rust::MANIFEST_LANGUAGE,
    &java::LANGUAGE,
    &javascript::LANGUAGE,
    &typescript::LANGUAGE,
    &typescript::LANGUAGE_WITH_JSX,
    &manifest::LANGUAGE,
};

bool claims(const Language& language, std::string_view path) {
  return std::any_of(language.suffixes.begin(), language.suffixes.end(),
                     [&](std::string_view suffix) { return path.ends_with(suffix); });
}

}  // namespace

std::span<const Language* const> languages() { return LANGUAGES; }

const Language* language_of(std::string_view path, std::string_view text) {
  const auto claimants = std::count_if(LANGUAGES.begin(), LANGUAGES.end(),
                                       [&](const Language* each) { return claims(*each, path); });
  for (const Language* language : LANGUAGES) {
    if (!claims(*language, path)) continue;
    if (claimants == 1 || language->accepts == nullptr || language->accepts(text)) return language;
  }
  return nullptr;
}

bool may_have_language(std::string_view path) {
  return std::any_of(LANGUAGES.begin(), LANGUAGES.end(),
                     [&](const Language* language) { return claims(*language, path); });
}

}  // namespace context_delta::indexer

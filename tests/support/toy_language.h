#pragma once

#include "indexer/language.h"

namespace context_delta::test {

/// A language of lines, for tests of the index alone. Lines in the order of the text:
///   class NAME / def NAME [COUNT]   a definition; ends before the next line that is indented
///                                   as little or less; COUNT arguments
///   call NAME [COUNT], type NAME    a reference
///   include PATH                    definitions of that file are proven targets
///   beside NAME / anywhere NAME     calls NAME proven in a file of the same folder / in files
///                                   whose last path component is "common.toy"
/// Calls are proven in their own file and through includes (and the includes of these), guessed
/// among all definitions that take their number of arguments otherwise; dispatched when these are
/// several, all in classes.
const indexer::Language& toy_language();

/// The same with a higher version.
const indexer::Language& newer_toy_language();

/// A second language that claims the suffix of the first, for texts that start with "other".
const indexer::Language& other_toy_language();

/// How often a text was parsed in any toy language.
int toy_parses();

}  // namespace context_delta::test

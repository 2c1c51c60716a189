#pragma once

#include <string>
#include <string_view>

/// Source text as the grammars can parse it.
namespace context_delta::indexer::c_family {

/// The text with spaces in place of what no parser can make sense of before macros are expanded:
/// macros between `class` and its name, macros in front of and behind declarations, and, where the
/// branches of an #if do not balance their brackets, the directives and all branches but one.
/// Every other byte stays where it is. Empty when nothing had to be blanked out.
std::string prepare(std::string_view text);

}  // namespace context_delta::indexer::c_family

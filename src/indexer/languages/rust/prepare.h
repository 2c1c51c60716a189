#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

/// Items inside macros that only say under which conditions they are compiled.
///
/// `cfg_if! { if #[cfg(a)] { ... } else { ... } }`, macros named `cfg_...!` by the same convention,
/// and `pin_project!` hold items that stay as they are. The grammar sees tokens in them.
namespace context_delta::indexer::rust {

/// What such a macro holds, from the bracket that opens it to the one that closes it.
struct WrappedItems {
  std::size_t start = 0;
  std::size_t end = 0;
};

/// In the order of the text; those inside others are left out.
std::vector<WrappedItems> wrapped_items(std::string_view text);

/// The text with the macros around items blanked out; empty when there are none.
std::string prepare(std::string_view text);

}  // namespace context_delta::indexer::rust

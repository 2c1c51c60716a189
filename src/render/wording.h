#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "render/pack_view.h"

/// Words that the reports for people have in common.
namespace context_delta::render {

/// "1 file", "2 files".
std::string counted(std::int64_t number, std::string_view one, std::string_view many);

/// "a, b and c" of the texts that are not empty.
std::string joined(std::vector<std::string> texts);

/// "7" or "7-9"; `dash` stands between the two.
std::string line_range(std::int64_t first, std::int64_t last, std::string_view dash = "-");

/// The path of a file, and of a renamed one what it was, with what the two share written once:
/// `src/{a.py -> b.py}`.
std::string file_name(const FileRow& file, std::string_view arrow);

/// Why a caller is only guessed; empty when the pack does not say.
std::string doubt(const CallerRow& caller);

/// The sum, or the largest number where there is none: a pack may hold numbers of any size.
std::int64_t bounded_sum(std::int64_t a, std::int64_t b);

/// Sums over the files that a pack lists, as far as numbers go.
struct FileTotals {
  std::int64_t additions = 0;
  std::int64_t deletions = 0;
  std::int64_t references = 0;
};
FileTotals file_totals(const PackView& pack);

/// Why a wiki page is stale or not, with the commit of the newest change.
std::string verdict(const WikiRow& page);

/// How many of the wiki pages that a pack lists are stale.
std::int64_t stale_pages(const PackView& pack);

/// "3 files and 1 symbol": what the pack itself left out; empty when nothing.
std::string omitted_rows(const PackView& pack);

/// The message of a pack; what names a parameter of the operation names the option here.
std::string with_option_names(std::string message);

}  // namespace context_delta::render

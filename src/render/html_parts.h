#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "render/html_markup.h"
#include "render/linked_pack.h"

/// Small parts that the sections of the page have in common.
namespace context_delta::render {

/// A section and its heading, open as long as the object lives.
class Section {
 public:
  /// `remark` (may be empty) says what the rows claim.
  Section(Markup& page, std::string_view id, std::string_view title, std::string_view remark);

 private:
  Markup::Element element_;
};

/// A name of the repository, kept from reordering what is around it.
void write_name(Markup& page, std::string_view name);

/// A path, the file's own name standing out.
void write_path(Markup& page, std::string_view path);

/// A qualified name, its last part standing out.
void write_qualified_name(Markup& page, std::string_view fqn);

/// "line 7" or "lines 7–9".
std::string lines_spanned(const SymbolRow& symbol);

/// The style of a file's status; "other" for words that a pack should not have.
std::string status_class(std::string_view status);
void write_status(Markup& page, std::string_view status);

/// "+3" and "−1".
void write_line_counts(Markup& page, std::int64_t additions, std::int64_t deletions);

/// What tells proven from guessed, said once.
void write_legend(Markup& page);
void write_evidence(Markup& page, bool proven);

/// "… 12 more symbols", nothing when `omitted` is 0.
void write_omitted(Markup& page, std::int64_t omitted, std::string_view one, std::string_view many);

/// The id of what the page has on a file: its details, else its row.
std::string file_target(const LinkedPack& linked, std::size_t file);

}  // namespace context_delta::render

#include "cli/explain_files.h"

#include "render/display_text.h"
#include "utils/json.h"

namespace context_delta::cli {
namespace {

constexpr std::size_t CLASS_COLUMNS = 11;

std::string text_line(const services::ExplainedFile& file) {
  const auto& exclusion = file.exclusion;
  std::string line(exclusion ? exclusion->file_class : "kept");
  line.resize(CLASS_COLUMNS, ' ');
  line += render::plain_text(file.path);
  if (!exclusion) return line;
  line += "  (";
  line.append(exclusion->rule).append(": ").append(exclusion->pattern);
  return line += ")";
}

std::string json_line(const services::ExplainedFile& file) {
  json::Mapping row = {{"path", file.path}, {"kept", !file.exclusion}};
  if (file.exclusion) {
    row.set("class", file.exclusion->file_class);
    row.set("rule", file.exclusion->rule);
    row.set("pattern", file.exclusion->pattern);
  }
  return json_text(row);
}

}  // namespace

std::string explanation(std::span<const services::ExplainedFile> files, bool as_json) {
  std::string text;
  for (const services::ExplainedFile& file : files) {
    text += (as_json ? json_line(file) : text_line(file)) + "\n";
  }
  return text;
}

}  // namespace context_delta::cli

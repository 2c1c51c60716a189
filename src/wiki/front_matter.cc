#include "wiki/front_matter.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <sstream>

#include <yaml-cpp/eventhandler.h>
#include <yaml-cpp/exceptions.h>
#include <yaml-cpp/parser.h>

#include "utils/utf8.h"

namespace context_delta::wiki {
namespace {

constexpr std::size_t MOST_BLOCK_BYTES = 64 * 1024;
constexpr std::size_t MOST_SOURCES = 1000;
constexpr int DEEPEST = 8;

struct Refused {};

/// Takes the events of the parser as they come: no tree is built, so an untrusted page costs no
/// more than its bytes.
class FrontMatterReader final : public YAML::EventHandler {
 public:
  const FrontMatter& result() const { return result_; }

  void OnDocumentStart(const YAML::Mark&) override {}
  void OnDocumentEnd() override {}
  void OnAlias(const YAML::Mark&, YAML::anchor_t) override { throw Refused(); }
  void OnNull(const YAML::Mark&, YAML::anchor_t anchor) override { scalar("", anchor); }
  void OnScalar(const YAML::Mark&, const std::string&, YAML::anchor_t anchor,
                const std::string& value) override {
    scalar(value, anchor);
  }
  void OnSequenceStart(const YAML::Mark&, const std::string&, YAML::anchor_t anchor,
                       YAML::EmitterStyle::value) override {
    if (depth_ == 0 || is_key()) throw Refused();
    open(anchor);
  }
  void OnSequenceEnd() override { close(); }
  void OnMapStart(const YAML::Mark&, const std::string&, YAML::anchor_t anchor,
                  YAML::EmitterStyle::value) override {
    if (is_key()) throw Refused();
    nested_mapping_ = depth_ > 0;
    open(anchor);
  }
  void OnMapEnd() override { close(); }

 private:
  /// Whether what comes next is a key of the outermost mapping.
  bool is_key() const { return depth_ == 1 && !key_; }

  void open(YAML::anchor_t anchor) {
    if (anchor != 0 || ++depth_ > DEEPEST) throw Refused();
  }

  void close() {
    if (--depth_ == 1) finish_value();
  }

  void finish_value() {
    key_.reset();
    nested_mapping_ = false;
  }

  void scalar(const std::string& value, YAML::anchor_t anchor) {
    if (anchor != 0 || depth_ == 0) throw Refused();
    if (is_key()) {
      key_ = value;
      return;
    }
    if (*key_ == "sources" && depth_ <= 2 && !nested_mapping_ && !value.empty()) {
      if (result_.sources.size() == MOST_SOURCES) throw Refused();
      result_.sources.push_back(value);
    }
    if (depth_ > 1) return;
    if (*key_ == "title") result_.title = value;
    if (*key_ == "commit") result_.commit = value;
    finish_value();
  }

  FrontMatter result_;
  std::optional<std::string> key_;  ///< of the outermost mapping, while its value is read
  int depth_ = 0;
  bool nested_mapping_ = false;
};

std::string_view without_line_end(std::string_view line) {
  while (!line.empty() && (line.back() == '\r' || line.back() == ' ' || line.back() == '\t')) {
    line.remove_suffix(1);
  }
  return line;
}

/// Cuts the first line off `text`.
std::string_view take_line(std::string_view& text) {
  const std::size_t end = std::min(text.find('\n'), text.size());
  const std::string_view line = text.substr(0, end);
  text.remove_prefix(std::min(end + 1, text.size()));
  return line;
}

void skip_byte_order_mark(std::string_view& page) {
  if (page.starts_with("\xEF\xBB\xBF")) page.remove_prefix(3);
}

/// The YAML text between the two lines of dashes; null when there is no such block.
std::optional<std::string_view> front_block(std::string_view page) {
  skip_byte_order_mark(page);
  if (without_line_end(take_line(page)) != "---") return std::nullopt;
  const std::string_view block = page;
  while (!page.empty()) {
    const std::size_t length = block.size() - page.size();
    if (length > MOST_BLOCK_BYTES) return std::nullopt;
    const std::string_view line = without_line_end(take_line(page));
    if (line == "---" || line == "...") return block.substr(0, length);
  }
  return std::nullopt;
}

std::string_view trimmed(std::string_view text) {
  const std::size_t start = std::min(text.find_first_not_of(" \t"), text.size());
  return without_line_end(text.substr(start));
}

}  // namespace

std::optional<FrontMatter> read_front_matter(std::string_view page) {
  const std::optional<std::string_view> block = front_block(page);
  if (!block) return std::nullopt;
  std::istringstream stream(utf8::replaced(*block));
  FrontMatterReader reader;
  try {
    YAML::Parser parser(stream);
    parser.HandleNextDocument(reader);
  } catch (const YAML::Exception&) {
    return std::nullopt;
  } catch (const Refused&) {
    return std::nullopt;
  }
  return reader.result();
}

std::string_view page_body(std::string_view page) {
  if (const std::optional<std::string_view> block = front_block(page)) {
    page.remove_prefix(static_cast<std::size_t>(block->data() - page.data()) + block->size());
    take_line(page);
  }
  return page;
}

std::string first_heading(std::string_view page) {
  page = page_body(page);
  bool fenced = false;
  while (!page.empty()) {
    const std::string_view line = trimmed(take_line(page));
    if (line.starts_with("```") || line.starts_with("~~~")) fenced = !fenced;
    const std::size_t level = std::min(line.find_first_not_of('#'), line.size());
    if (fenced || level < 1 || level > 6 || !line.substr(level).starts_with(' ')) continue;
    std::string_view heading = trimmed(line.substr(level));
    const std::size_t end = heading.find_last_not_of('#');
    if (end == heading.npos) continue;
    if (end + 1 < heading.size() && heading[end] == ' ') heading = trimmed(heading.substr(0, end));
    return utf8::replaced(heading);
  }
  return "";
}

}  // namespace context_delta::wiki

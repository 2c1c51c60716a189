#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

/// Elements and text of a page that browsers and strict XML parsers read alike.
namespace context_delta::render {

struct Attribute {
  std::string_view name;
  std::optional<std::string> value;  ///< left out when null

  Attribute(std::string_view key, std::string text) : name(key), value(std::move(text)) {}
  Attribute(std::string_view key, const char* text) : name(key), value(text) {}
  Attribute(std::string_view key, std::int64_t number) : name(key), value(std::to_string(number)) {}
  Attribute(std::string_view key, std::optional<std::string> text)
      : name(key), value(std::move(text)) {}
};

using Attributes = std::initializer_list<Attribute>;

/// A heading that can be linked to.
struct Heading {
  std::string id;
  std::string title;
};

/// A page being written. Names of elements and attributes are the program's own; texts and values
/// may be anyone's: what is markup in them is escaped, what could steer or hide is written out as
/// by plain_text().
class Markup {
 public:
  /// An element that is open: closed where the scope ends.
  class Element {
   public:
    Element(Markup& markup, std::string_view name) : markup_(markup), name_(name) {}
    ~Element() { markup_.close(name_); }
    Element(const Element&) = delete;
    Element& operator=(const Element&) = delete;

   private:
    Markup& markup_;
    std::string_view name_;
  };

  /// Begins an element; `name` outlives it.
  [[nodiscard]] Element open(std::string_view name, Attributes attributes = {});
  /// An element that holds one text.
  void leaf(std::string_view name, Attributes attributes, std::string_view text);
  /// An element that never holds anything: void ones of HTML, shapes of a picture.
  void empty(std::string_view name, Attributes attributes);
  /// Text; whatever plain_text() would write out becomes a marked span of its own.
  void text(std::string_view text);
  /// Markup or style of the program's own, as it is.
  void trusted(std::string_view markup) { page_ += markup; }

  /// Notes a section for the page's navigation.
  void add_heading(Heading heading) { headings_.push_back(std::move(heading)); }
  const std::vector<Heading>& headings() const { return headings_; }

  std::string finish() { return std::move(page_); }

 private:
  void begin(std::string_view name, Attributes attributes);
  void close(std::string_view name);

  std::string page_;
  std::vector<Heading> headings_;
};

/// "1,234,567".
std::string grouped(std::int64_t number);

/// `part` of `whole` in thousandths, rounded, from 0 to 1000; a part above 0 is at least 1.
std::int64_t thousandths(std::int64_t part, std::int64_t whole);

/// Thousandths as "12.3%".
std::string percent(std::int64_t thousandths);

}  // namespace context_delta::render

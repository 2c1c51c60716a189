#include "workers/context_builder.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace context_delta::context_builder {
namespace {

enum class Class : std::uint8_t { LOWER, UPPER, DIGIT, SPACE, HIGH, MARK };

constexpr std::array<Class, 256> CLASSES = [] {
  std::array<Class, 256> classes{};
  for (std::size_t byte = 0; byte < classes.size(); ++byte) {
    if (byte >= 'a' && byte <= 'z') {
      classes[byte] = Class::LOWER;
    } else if (byte >= 'A' && byte <= 'Z') {
      classes[byte] = Class::UPPER;
    } else if (byte >= '0' && byte <= '9') {
      classes[byte] = Class::DIGIT;
    } else if ((byte >= 9 && byte <= 13) || byte == ' ') {
      classes[byte] = Class::SPACE;
    } else {
      classes[byte] = byte >= 128 ? Class::HIGH : Class::MARK;
    }
  }
  return classes;
}();

/// What the next word has swallowed, and so what it costs, in 1/100 token.
struct Glue {
  std::int64_t base;   ///< price of a short word
  std::int64_t knee;   ///< bytes that the base covers
  std::int64_t slope;  ///< price of each byte beyond
};
constexpr Glue NONE{105, 7, 23};
constexpr Glue SPACE{101, 7, 8};
constexpr Glue JOIN{102, 5, 12};
constexpr Glue MARK{130, 5, 26};

constexpr std::int64_t TOKEN = 100;

/// Characters for which vocabularies have no token of their own: marks that combine with the
/// letter before them, rare ideographs, tags and private use, where file names keep their bytes.
struct Rare {
  std::uint32_t first;
  std::uint32_t last;
  std::int64_t price;
};
constexpr std::array<Rare, 19> RARE = {{{0x300, 0x303, 100},
                                        {0x304, 0x307, 175},
                                        {0x308, 0x30A, 100},
                                        {0x30B, 0x322, 200},
                                        {0x323, 0x323, 100},
                                        {0x324, 0x37F, 200},
                                        {0x483, 0x489, 200},
                                        {0x591, 0x5AF, 200},
                                        {0x5B0, 0x5BF, 115},
                                        {0x5C0, 0x5C7, 200},
                                        {0x64B, 0x654, 100},
                                        {0x655, 0x65F, 200},
                                        {0x1AB0, 0x1AFF, 295},
                                        {0x1DC0, 0x1DFF, 295},
                                        {0x20D0, 0x20FF, 195},
                                        {0xFE00, 0xFE0F, 187},
                                        {0xFE20, 0xFE2F, 200},
                                        {0x20000, 0x3FFFF, 395},
                                        {0xE0000, 0x10FFFF, 395}}};

class Scan {
 public:
  explicit Scan(std::string_view text) : text_(text) {}

  std::int64_t price() {
    while (at_ < text_.size()) {
      const Glue* glue = glue_;
      glue_ = &NONE;
      switch (class_at(at_)) {
        case Class::LOWER:
        case Class::UPPER:
          price_ += word(*glue);
          break;
        case Class::DIGIT:
          price_ += TOKEN * ((run(Class::DIGIT) + 2) / 3);
          break;
        case Class::SPACE:
          price_ += space();
          break;
        case Class::HIGH:
          price_ += high();
          break;
        case Class::MARK:
          price_ += marks(glue == &SPACE);
          break;
      }
    }
    return price_;
  }

 private:
  unsigned char byte_at(std::size_t index) const {
    return static_cast<unsigned char>(text_[index]);
  }
  Class class_at(std::size_t index) const { return CLASSES[byte_at(index)]; }
  bool ends(std::size_t index) const { return index >= text_.size(); }
  bool letter_at(std::size_t index) const {
    return !ends(index) && class_at(index) <= Class::UPPER;
  }

  /// Passes over a run of one class; its length.
  std::int64_t run(Class run_class) {
    const std::size_t start = at_;
    while (!ends(at_) && class_at(at_) == run_class) ++at_;
    return static_cast<std::int64_t>(at_ - start);
  }

  /// `[A-Z]*[a-z]*`, so camelCase is cut before a capital and HTTPServer is one piece.
  std::int64_t word(const Glue& glue) {
    const std::int64_t capitals = run(Class::UPPER);
    const std::int64_t length = capitals + run(Class::LOWER);
    if (length == 1) return TOKEN;
    return glue.base + glue.slope * std::max<std::int64_t>(0, length - glue.knee) +
           (capitals > 1 ? 8 * (capitals - 1) : 0);
  }

  std::int64_t space() {
    const std::size_t start = at_;
    run(Class::SPACE);
    const std::string_view spaces = text_.substr(start, at_ - start);
    std::int64_t price = 0;
    std::size_t rest = spaces.size();
    const std::size_t line_end = spaces.find_last_of("\n\r");
    if (line_end != std::string_view::npos) {
      price += TOKEN;
      rest -= line_end + 1;
    }
    if (rest == 0) return price;
    if (rest >= 2) price += TOKEN;
    const bool before_word = letter_at(at_) || (!ends(at_) && class_at(at_) == Class::HIGH);
    const bool before_mark = spaces.back() == ' ' && !ends(at_) && class_at(at_) == Class::MARK;
    if (!before_word && !before_mark) return price + TOKEN;
    glue_ = &SPACE;
    return price;
  }

  std::int64_t marks(bool after_space) {
    const std::size_t start = at_;
    const std::int64_t length = run(Class::MARK);
    std::int64_t changes = 0;
    for (std::size_t i = start + 1; i < at_; ++i) changes += text_[i] != text_[i - 1] ? 1 : 0;
    const std::int64_t extra = length < 3 ? 0 : 40 * std::min(length - 2, changes);
    const char last = text_[at_ - 1];
    const char next = ends(at_) ? '\0' : text_[at_];
    if (last == '\\' && (next == 'n' || next == 't' || next == 'r')) {  // a JSON escape
      ++at_;
      return 105 + (length > 1 ? TOKEN + extra : 0);
    }
    if (length == 1 && !after_space && letter_at(at_)) {
      glue_ = last == '.' || last == '_' ? &JOIN : &MARK;
      return 0;
    }
    while (!ends(at_) && (text_[at_] == '\n' || text_[at_] == '\r')) ++at_;
    return TOKEN + extra;
  }

  std::int64_t high() {
    const unsigned char lead = byte_at(at_++);
    std::size_t continuations = 0;
    std::int64_t price = 50;
    if (lead >= 0xC0 && lead <= 0xDF) {
      continuations = 1;
      price = lead <= 0xCD ? 90 : 50;
    } else if (lead >= 0xE0 && lead <= 0xEF) {
      continuations = 2;
      price = lead <= 0xE3 ? 75 : lead <= 0xED ? 88 : 130;
    } else if (lead >= 0xF0 && lead <= 0xF7) {
      continuations = 3;
      price = 280;
    }
    std::uint32_t character = lead & (0x3Fu >> continuations);
    while (continuations > 0 && !ends(at_) && (byte_at(at_) & 0xC0) == 0x80) {
      character = character << 6 | (byte_at(at_++) & 0x3Fu);
      --continuations;
    }
    if (continuations > 0) return price;
    const auto* rare = std::find_if(RARE.begin(), RARE.end(),
                                    [&](const Rare& each) { return character <= each.last; });
    return rare != RARE.end() && character >= rare->first ? rare->price : price;
  }

  std::string_view text_;
  std::size_t at_ = 0;
  std::int64_t price_ = 0;
  const Glue* glue_ = &NONE;
};

}  // namespace

std::int64_t estimate_tokens(std::string_view text) {
  if (text.empty()) return 0;
  return std::max<std::int64_t>(1, (Scan(text).price() + TOKEN / 2) / TOKEN);
}

}  // namespace context_delta::context_builder

#include "utils/utf8.h"

#include <cstdint>
#include <cstring>

namespace context_delta::utf8 {
namespace {

constexpr std::string_view REPLACEMENT = "\xEF\xBF\xBD";

unsigned char byte_at(std::string_view bytes, std::size_t index) {
  return static_cast<unsigned char>(bytes[index]);
}

/// How many bytes of an ill-formed sequence form one maximal part (at least 1).
std::size_t ill_formed_length(std::string_view bytes) {
  // A truncated sequence counts as one part: grow while some continuation could complete it.
  const unsigned char lead = byte_at(bytes, 0);
  const std::size_t wanted = lead >= 0xF0 && lead <= 0xF4 ? 4 : lead >= 0xE0 && lead < 0xF0 ? 3 : 1;
  std::size_t length = 1;
  while (length < wanted && length < bytes.size()) {
    std::string prefix(bytes.substr(0, length + 1));
    bool completable = false;
    for (const char filler : {'\x80', '\x90', '\xA0', '\xBF'}) {
      std::string whole = prefix;
      whole.resize(wanted, filler);
      completable = completable || sequence_length(whole) == wanted;
    }
    if (!completable) break;
    ++length;
  }
  return length;
}

/// U+10FF00 to U+10FFFF in UTF-8: F4 8F BC..BF 80..BF.
bool is_escape(std::string_view sequence) {
  return sequence.size() == 4 && sequence[0] == '\xF4' && sequence[1] == '\x8F' &&
         byte_at(sequence, 2) >= 0xBC;
}

void append_escape(std::string& text, unsigned char byte) {
  text += "\xF4\x8F";
  text += static_cast<char>(0xBC + (byte >> 6));
  text += static_cast<char>(0x80 + (byte & 0x3F));
}

/// How many bytes of ASCII come first, rounded down to whole words.
std::size_t ascii_length(std::string_view bytes) {
  constexpr std::uint64_t HIGH_BITS = 0x8080808080808080u;
  std::size_t length = 0;
  for (std::uint64_t word = 0; length + sizeof word <= bytes.size(); length += sizeof word) {
    std::memcpy(&word, bytes.data() + length, sizeof word);
    if ((word & HIGH_BITS) != 0) break;
  }
  return length;
}

}  // namespace

std::size_t sequence_length(std::string_view bytes) {
  if (bytes.empty()) return 0;
  const unsigned char lead = byte_at(bytes, 0);
  if (lead < 0x80) return 1;
  std::size_t length = 0;
  unsigned char low = 0x80;
  unsigned char high = 0xBF;
  if (lead >= 0xC2 && lead <= 0xDF) {
    length = 2;
  } else if (lead >= 0xE0 && lead <= 0xEF) {
    length = 3;
    if (lead == 0xE0) low = 0xA0;
    if (lead == 0xED) high = 0x9F;
  } else if (lead >= 0xF0 && lead <= 0xF4) {
    length = 4;
    if (lead == 0xF0) low = 0x90;
    if (lead == 0xF4) high = 0x8F;
  }
  if (length == 0 || bytes.size() < length) return 0;
  if (byte_at(bytes, 1) < low || byte_at(bytes, 1) > high) return 0;
  for (std::size_t i = 2; i < length; ++i) {
    if ((byte_at(bytes, i) & 0xC0) != 0x80) return 0;
  }
  return length;
}

bool is_valid(std::string_view bytes) {
  while (true) {
    bytes.remove_prefix(ascii_length(bytes));
    if (bytes.empty()) return true;
    const std::size_t length = sequence_length(bytes);
    if (length == 0) return false;
    bytes.remove_prefix(length);
  }
}

std::string replaced(std::string_view bytes) {
  std::string text;
  text.reserve(bytes.size());
  while (!bytes.empty()) {
    std::size_t length = sequence_length(bytes);
    if (length != 0) {
      text += bytes.substr(0, length);
    } else {
      length = ill_formed_length(bytes);
      text += REPLACEMENT;
    }
    bytes.remove_prefix(length);
  }
  return text;
}

std::string path_text(std::string_view bytes) {
  std::string text;
  text.reserve(bytes.size());
  while (!bytes.empty()) {
    const std::size_t length = sequence_length(bytes);
    const std::string_view sequence = bytes.substr(0, length);
    if (length == 0 || is_escape(sequence)) {
      append_escape(text, byte_at(bytes, 0));
      bytes.remove_prefix(1);
    } else {
      text += sequence;
      bytes.remove_prefix(length);
    }
  }
  return text;
}

std::string path_bytes(std::string_view text) {
  std::string bytes;
  bytes.reserve(text.size());
  while (!text.empty()) {
    const std::string_view sequence = text.substr(0, 4);
    if (is_escape(sequence)) {
      bytes +=
          static_cast<char>(((byte_at(sequence, 2) - 0xBC) << 6) | (byte_at(sequence, 3) & 0x3F));
      text.remove_prefix(4);
    } else {
      bytes += text.front();
      text.remove_prefix(1);
    }
  }
  return bytes;
}

}  // namespace context_delta::utf8

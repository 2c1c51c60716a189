#include <iterator>

#include "fuzz/require.h"
#include "render/display_text.h"
#include "render/formats.h"
#include "render/html_page.h"
#include "render/markdown_page.h"
#include "render/sample_packs.h"

// A pack with texts and numbers of the input's: a byte that says of which shape, one that says how
// many of the bytes that follow are numbers, the width, then texts divided by zero bytes.
using namespace context_delta;

namespace {

void check_text(const std::string& text) {
  for (const char byte : text) {
    fuzz::require(byte == '\n' || (static_cast<unsigned char>(byte) >= 0x20 && byte != 0x7F),
                  "no control character reaches a terminal");
  }
  fuzz::require(text.find("\xE2\x80\xAE") == text.npos, "no text turns the line around");
}

void check(const json::Mapping& pack, const render::ReportStyle& style) {
  check_text(render::find_format("text")->render(pack, style));
  const std::string harm = test::harm_in(render::find_format("markdown")->render(pack, style));
  fuzz::require(harm.empty(), harm);
  const std::string fault =
      test::fault_of(test::read_page(render::find_format("html")->render(pack, style)));
  fuzz::require(fault.empty(), fault);
  render::find_format("json")->render(pack, style);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::string_view input = fuzz::text_of(data, size);
  constexpr json::Mapping (*SHAPES[])() = {test::full_pack, test::truncated_pack,
                                           test::nothing_changed_pack, test::error_pack};
  const json::Mapping pack = SHAPES[fuzz::take_byte(input) % std::size(SHAPES)]();
  std::vector<std::int64_t> numbers{1};
  for (unsigned left = fuzz::take_byte(input) % 8; left > 0; --left) {
    const unsigned byte = fuzz::take_byte(input);
    const std::int64_t power = std::int64_t{1} << (byte % 63);
    numbers.push_back(byte < 128 ? static_cast<std::int64_t>(byte) - 4 : power);
  }
  const std::size_t width = fuzz::take_byte(input);
  std::vector<std::string> texts;
  do {
    texts.emplace_back(fuzz::take_part(input, '\0'));
  } while (!input.empty());
  check(test::refilled(pack, texts, numbers), {.width = width, .budget = numbers.back()});
  return 0;
}

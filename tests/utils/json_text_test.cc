#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "utils/json.h"

namespace context_delta::json {
namespace {

TEST(JsonText, IsFixedCharacterByCharacter) {
  const struct {
    Value value;
    std::string text;
  } cases[] = {
      {nullptr, "null"},
      {true, "true"},
      {false, "false"},
      {0, "0"},
      {-7, "-7"},
      {std::numeric_limits<std::int64_t>::min(), "-9223372036854775808"},
      {2.0, "2.0"},
      {-0.0, "-0.0"},
      {0.1, "0.1"},
      {123456.75, "123456.75"},
      {1e15, "1000000000000000.0"},
      {9007199254740993e0, "9007199254740992.0"},
      {1e16, "1e+16"},
      {1.5e300, "1.5e+300"},
      {0.0001, "0.0001"},
      {0.00001, "1e-05"},
      {0.000012, "1.2e-05"},
      {5e-324, "5e-324"},
      {std::nan(""), "NaN"},
      {HUGE_VAL, "Infinity"},
      {-HUGE_VAL, "-Infinity"},
      {"", "\"\""},
      {"a\"b\\c/", R"("a\"b\\c/")"},
      {"\b\f\n\r\t", R"("\b\f\n\r\t")"},
      {std::string("\0\x01\x1f", 3), "\"\\u0000\\u0001\\u001f\""},
      {"\x7f\xC3\xA9\xE2\x80\xA8\xF0\x9F\x98\x80", "\"\x7f\xC3\xA9\xE2\x80\xA8\xF0\x9F\x98\x80\""},
      {List{}, "[]"},
      {List{1, List{2}, "x"}, R"([1, [2], "x"])"},
      {Mapping{}, "{}"},
      {Mapping{{"z", 1}, {"a", Mapping{{"k", nullptr}}}}, R"({"z": 1, "a": {"k": null}})"},
  };
  for (const auto& [value, text] : cases) EXPECT_EQ(json_text(value), text);
}

TEST(Mapping, KeepsTheOrderOfInsertion) {
  Mapping mapping{{"b", 1}, {"a", 2}};
  mapping.set("b", 3);
  mapping.set("c", 4);
  EXPECT_EQ(json_text(mapping), R"({"b": 3, "a": 2, "c": 4})");
  EXPECT_EQ(mapping.find("d"), nullptr);
  EXPECT_THROW(mapping.at("d"), std::out_of_range);
}

/// Any double, any text, any nesting: checked line by line by the JSON module of Python, which
/// reads each line and writes it again.
class Generator {
 public:
  explicit Generator(unsigned seed) : random_(seed) {}

  Value value(int depth) {
    switch (random_() % (depth > 0 ? 8 : 6)) {
      case 0:
        return random_() % 2 == 0 ? Value(true) : Value(nullptr);
      case 1:
        return static_cast<std::int64_t>(random_() >> (random_() % 64));
      case 2:
        return std::bit_cast<double>(random_());
      case 3:  // around the borders of the exponent form
        return std::ldexp(static_cast<double>(random_() % 2000),
                          static_cast<int>(random_() % 120) - 60);
      case 4:
      case 5:
        return text();
      case 6: {
        List list;
        for (std::size_t n = random_() % 4; n > 0; --n) list.push_back(value(depth - 1));
        return list;
      }
      default: {
        Mapping mapping;
        for (std::size_t n = random_() % 4; n > 0; --n) mapping.set(text(), value(depth - 1));
        return mapping;
      }
    }
  }

 private:
  std::string text() {
    const std::string pieces[] = {"a",
                                  "\"",
                                  "\\",
                                  "/",
                                  "\n",
                                  "\x01",
                                  "\x1f",
                                  "\x7f",
                                  "\xC2\x85",
                                  "\xE2\x80\xA8",
                                  "\xEF\xBF\xBF",
                                  "\xF0\x9F\x98\x80",
                                  std::string(1, '\0')};
    std::string text;
    for (std::size_t n = random_() % 6; n > 0; --n) text += pieces[random_() % std::size(pieces)];
    return text;
  }

  std::mt19937_64 random_;
};

TEST(JsonText, IsWhatPythonWrites) {
  FILE* python = popen(
      "python3 -c \"\n"
      "import json, sys\n"
      "wrong = 0\n"
      "for line in sys.stdin.buffer:\n"
      "    line = line.decode('utf-8').rstrip('\\n')\n"
      "    again = json.dumps(json.loads(line), ensure_ascii=False)\n"
      "    if again != line:\n"
      "        print('ours  ', ascii(line)); print('python', ascii(again)); wrong += 1\n"
      "sys.exit(wrong != 0)\"",
      "w");
  ASSERT_NE(python, nullptr);
  Generator generator(5);
  for (int i = 0; i < 20000; ++i) {
    const std::string line = json_text(generator.value(3)) + "\n";
    ASSERT_EQ(fwrite(line.data(), 1, line.size(), python), line.size());
  }
  EXPECT_EQ(pclose(python), 0);
}

}  // namespace
}  // namespace context_delta::json

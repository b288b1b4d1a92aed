#include <array>

#include "TalvoConsentSDK/platform/Color.h"

#include "tests/support/Testing.h"

namespace TalvoConsentSDK {
namespace {

TEST(ColorTest, ReadsHexadecimalText) {
  const std::pair<std::array<int, 4>, Texts> readings[] = {
      // red, green, blue, alpha
      {{255, 255, 255, 255}, {"#FFF", "ffffff", "FFffFFff"}},
      {{17, 170, 255, 255}, {"1aF", "#11AAFF", "  (11aaff) "}},
      // In a byte order mark, no-break spaces, quotation marks, a symbol beyond the first plane, broken
      // bytes.
      {{17, 170, 255, 255},
       {"\uFEFF#1aF", "\u00A01aF\u202F", "«1aF»", "„#11AAFF“", "\U0001F3A81aF\U000E0001",
        "\xFF"
        "1aF\xC3"}},
      {{255, 127, 0, 128}, {"#80ff7F00"}},
      {{0, 0, 0, 0}, {"#00000000"}},
      {{0, 0, 18, 255}, {"12G456"}},  // the digits before the first character that is none
      {{0, 0, 17, 255}, {"1 2"}},     // what is not alphanumeric counts inside
      {{0, 0, 255, 255}, {"0xF"}},    // a prefix is skipped, but counts
      {{18, 52, 86, 0}, {"0X123456"}},
      {{0, 17, 34, 255}, {"12\xC3\xA4"}},  // a character, whatever its bytes
      {{1, 35, 69, 255}, {"12345\U0001D7D8"}},
      {{0, 18, 52, 255}, {"1234€6"}},
      {{0, 1, 35, 255}, {"00123\u0301", "00123\u4E00", "00123\u00BD", "00123\u2189", "00123\U0003134A"}},
      {{0, 0, 0, 255},
       {"", "#", "12", "1234", "12345", "1234567", "123456789", "#ZZZZZZ", "0x12", "0xZ", "\xC3\xA4"}},
  };
  for (const auto& [bytes, texts] : readings) {
    const Color expected{bytes[0] / 255.0, bytes[1] / 255.0, bytes[2] / 255.0, bytes[3] / 255.0};
    for (const auto& text : texts) EXPECT_EQ(colorFromText(text), expected) << text;
  }
}

}  // namespace
}  // namespace TalvoConsentSDK

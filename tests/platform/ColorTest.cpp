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
      {{255, 127, 0, 128}, {"#80ff7F00"}},
      {{0, 0, 0, 0}, {"#00000000"}},
      {{0, 0, 18, 255}, {"12G456"}},  // the digits before the first character that is none
      {{0, 0, 17, 255}, {"1 2"}},     // what is not alphanumeric counts inside
      {{0, 0, 255, 255}, {"0xF"}},    // a prefix is skipped, but counts
      {{18, 52, 86, 0}, {"0X123456"}},
      {{0, 17, 34, 255}, {"12\xC3\xA4"}},  // a character, whatever its bytes
      {{1, 35, 69, 255}, {"12345\xF0\x9F\x98\x80"}},
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

#include "TalvoConsentSDK/base/Color.h"

#include "tests/support/Testing.h"

namespace TalvoConsentSDK {

namespace {

TEST(ColorTest, ReadsHexadecimalText) {
  for (const auto& [text, bytes] : tableOf<2>("platform/colors.txt")) {
    double rgba[4];
    std::ranges::transform(words(bytes), rgba, [](const auto& each) { return std::stod(each) / 255.0; });
    EXPECT_EQ(colorFromText(unescaped(text)), (Color{rgba[0], rgba[1], rgba[2], rgba[3]})) << text;
  }
}

}  // namespace
}  // namespace TalvoConsentSDK

#include "TalvoConsentSDK/ui/view/TextDirection.h"

#include <cstddef>
#include <cstdint>

namespace TalvoConsentSDK {

namespace {

// The blocks of Hebrew, Arabic, Syriac, Thaana, NKo and their kin, their presentation forms, and the historic
// scripts of the supplementary plane (Unicode's Bidi_Class R and AL, by block).
constexpr bool isRightToLeft(std::uint32_t c) {
  return (c >= 0x0590 && c <= 0x08FF) || (c >= 0xFB1D && c <= 0xFDFF) || (c >= 0xFE70 && c <= 0xFEFF) ||
         (c >= 0x10800 && c <= 0x10FFF) || (c >= 0x1E800 && c <= 0x1EFFF);
}

constexpr bool isLeftToRight(std::uint32_t c) {
  return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') ||
         (c >= 0x00C0 && c < 0x2000 && !isRightToLeft(c)) || (c >= 0x2E80 && c < 0xFB00);
}

// The character at `position`, which is moved behind it. Broken bytes count one each, as no letter.
std::uint32_t nextCharacter(std::string_view text, std::size_t& position) {
  const auto byte = [&](std::size_t i) { return i < text.size() ? static_cast<unsigned char>(text[i]) : 0U; };
  const std::uint32_t lead = byte(position);
  const int following = lead < 0xC0 ? 0 : lead < 0xE0 ? 1 : lead < 0xF0 ? 2 : 3;
  std::uint32_t c = following == 0 ? lead : lead & (0x3FU >> following);
  ++position;
  for (int i = 0; i < following; ++i, ++position) {
    if ((byte(position) & 0xC0) != 0x80) return 0;
    c = c << 6 | (byte(position) & 0x3F);
  }
  return c;
}

}  // namespace

LayoutDirection dominantDirection(std::string_view text) {
  std::size_t rightToLeft = 0;
  std::size_t leftToRight = 0;
  for (std::size_t position = 0; position < text.size();) {
    const std::uint32_t c = nextCharacter(text, position);
    if (isRightToLeft(c)) ++rightToLeft;
    if (isLeftToRight(c)) ++leftToRight;
  }
  return rightToLeft > leftToRight ? LayoutDirection::rightToLeft : LayoutDirection::leftToRight;
}

}  // namespace TalvoConsentSDK

#include "TalvoConsentSDK/view/TextDirection.h"

#include <cstddef>

#include "TalvoConsentSDK/base/unicode/Characters.h"

namespace TalvoConsentSDK {
namespace view {

namespace {

// The Unicode blocks of Hebrew, Arabic, Syriac, Thaana, NKo and related scripts, their presentation forms,
// and the right-to-left scripts of the Supplementary Multilingual Plane (Bidi_Class R and AL, by block).
constexpr bool isRightToLeft(char32_t c) {
  return (c >= 0x0590 && c <= 0x08FF) || (c >= 0xFB1D && c <= 0xFDFF) || (c >= 0xFE70 && c <= 0xFEFF) ||
         (c >= 0x10800 && c <= 0x10FFF) || (c >= 0x1E800 && c <= 0x1EFFF);
}

constexpr bool isLeftToRight(char32_t c) {
  return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') ||
         (c >= 0x00C0 && c < 0x2000 && !isRightToLeft(c)) || (c >= 0x2E80 && c < 0xFB00);
}

}  // namespace

LayoutDirection dominantDirection(std::string_view text) {
  std::size_t rightToLeft = 0;
  std::size_t leftToRight = 0;
  for (std::size_t position = 0; position < text.size();) {
    const char32_t c = nextCharacter(text, position);
    if (isRightToLeft(c)) ++rightToLeft;
    if (isLeftToRight(c)) ++leftToRight;
  }
  return rightToLeft > leftToRight ? LayoutDirection::rightToLeft : LayoutDirection::leftToRight;
}

}  // namespace view
}  // namespace TalvoConsentSDK

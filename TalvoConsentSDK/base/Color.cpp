#include "TalvoConsentSDK/base/Color.h"

#include <algorithm>
#include <cstdint>

#include "TalvoConsentSDK/base/unicode/Characters.h"

namespace TalvoConsentSDK {
namespace platform {

namespace {

std::string_view trimmed(std::string_view text) {
  std::size_t begin = text.size(), end = 0;
  for (std::size_t position = 0; position < text.size();) {
    const std::size_t start = position;
    if (!isAlphanumeric(nextCharacter(text, position))) continue;
    begin = std::min(begin, start);
    end = position;
  }
  return begin < end ? text.substr(begin, end - begin) : std::string_view();
}

constexpr int hexDigit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

// Stops at the first character that is not a digit. The value may overflow, but the caller ignores
// the value of a text of more than eight characters.
std::uint64_t scanHex(std::string_view text) {
  if (text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X') && hexDigit(text[2]) >= 0) {
    text.remove_prefix(2);
  }
  std::uint64_t value = 0;
  for (const char c : text) {
    const int digit = hexDigit(c);
    if (digit < 0) break;
    value = value << 4 | static_cast<std::uint64_t>(digit);
  }
  return value;
}

constexpr Color fromBytes(std::uint64_t red, std::uint64_t green, std::uint64_t blue, std::uint64_t alpha) {
  const auto channel = [](std::uint64_t byte) { return static_cast<double>(byte & 255) / 255; };
  return {channel(red), channel(green), channel(blue), channel(alpha)};
}

}  // namespace

Color colorFromText(std::string_view text) {
  const std::string_view digits = trimmed(text);
  const std::uint64_t v = scanHex(digits);
  switch (characterCount(digits)) {
    case 3:
      return fromBytes((v >> 8) * 17, (v >> 4 & 15) * 17, (v & 15) * 17, 255);
    case 6:
      return fromBytes(v >> 16, v >> 8, v, 255);
    case 8:
      return fromBytes(v >> 16, v >> 8, v, v >> 24);
    default:
      return Color::black();
  }
}

bool isColorText(std::string_view text) {
  const std::string_view digits = trimmed(text);
  return (digits.size() == 3 || digits.size() == 6 || digits.size() == 8) &&
         std::ranges::all_of(digits, [](char c) { return hexDigit(c) >= 0; });
}

}  // namespace platform
}  // namespace TalvoConsentSDK

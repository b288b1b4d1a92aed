#include "TalvoConsentSDK/base/unicode/Characters.h"

#include <algorithm>
#include <array>

#include <simdjson.h>

namespace TalvoConsentSDK {

namespace {

// The lengths of consecutive ranges of characters, starting at U+0080. The ranges alternate: the first is not
// alphanumeric, the second is, and so on. Each length is written in groups of 7 bits, the lowest first.
constexpr unsigned char ranges[] = {
#include "TalvoConsentSDK/base/unicode/AlphanumericRanges.inc"
};

constexpr bool isASCIILetterOrDigit(char32_t c) {
  return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

}  // namespace

Character firstCharacter(std::string_view utf8) {
  const auto byte = [&](std::size_t at) { return static_cast<unsigned char>(utf8[at]); };
  constexpr std::array<char32_t, 5> minCode = {0, 0, 0x80, 0x800,
                                               0x10000};  // by length; a smaller code is overlong
  const unsigned first = byte(0);
  if (first < 0x80) return {first, 1};
  const std::size_t length = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
  if (first < 0xC0 || first >= 0xF8 || utf8.size() < length) return {};
  char32_t code = first & (0x7FU >> length);
  for (std::size_t at = 1; at < length; ++at) {
    if ((byte(at) & 0xC0U) != 0x80) return {};
    code = code << 6U | (byte(at) & 0x3FU);
  }
  const bool isSurrogate = code >= 0xD800 && code < 0xE000;
  if (code < minCode[length] || code > 0x10FFFF || isSurrogate) return {};
  return {code, length};
}

char32_t nextCharacter(std::string_view utf8, std::size_t& position) {
  const auto [code, length] = firstCharacter(utf8.substr(position));
  position += std::max<std::size_t>(length, 1);
  return code;
}

bool isUTF8(std::string_view text) {
  return simdjson::validate_utf8(text.data(), text.size());
}

bool isAlphanumeric(char32_t character) {
  if (character < 0x80) return isASCIILetterOrDigit(character);
  char32_t end = 0x80;
  bool isRun = false;
  for (auto next = std::begin(ranges); next != std::end(ranges); isRun = !isRun) {
    char32_t length = 0;
    for (int shift = 0;; shift += 7) {
      length |= (*next & 0x7FU) << shift;
      if ((*next++ & 0x80) == 0) break;
    }
    end += length;
    if (character < end) return isRun;
  }
  return false;
}

}  // namespace TalvoConsentSDK

#include "TalvoConsentSDK/platform/unicode/Characters.h"

namespace TalvoConsentSDK {

namespace {

// The lengths of the ranges of characters from U+0080 on, the first not alphanumeric, the next alphanumeric,
// and so on in turn. Each length is written in groups of 7 bits, the lowest first.
constexpr unsigned char ranges[] = {
#include "TalvoConsentSDK/platform/unicode/AlphanumericRanges.inc"
};

constexpr bool isASCIILetterOrDigit(char32_t c) {
  return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

}  // namespace

char32_t nextCharacter(std::string_view utf8, std::size_t& position) {
  const auto byte = [&](std::size_t i) -> char32_t {
    return i < utf8.size() ? static_cast<unsigned char>(utf8[i]) : 0U;
  };
  const char32_t lead = byte(position++);
  if (lead < 0x80) return lead;
  const int following = lead < 0xC0 ? 0 : lead < 0xE0 ? 1 : lead < 0xF0 ? 2 : 3;
  if (following == 0) return 0;
  char32_t character = lead & (0x3FU >> following);
  for (int i = 0; i < following; ++i) {
    const char32_t next = byte(position + static_cast<std::size_t>(i));
    if ((next & 0xC0) != 0x80) return 0;
    character = character << 6 | (next & 0x3F);
  }
  position += static_cast<std::size_t>(following);
  return character;
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

#pragma once

// Reads the characters of UTF-8 text (RFC 3629), and classes them as Unicode does.

#include <algorithm>
#include <cstddef>
#include <string_view>

namespace TalvoConsentSDK {

/// A code point and its length in bytes. Both are 0 if the bytes are not valid UTF-8, such as an overlong
/// form or a surrogate.
struct Character {
  char32_t code = 0;
  std::size_t length = 0;
};

/// Returns the first character of `utf8`, which must not be empty.
Character firstCharacter(std::string_view utf8);

/// Returns the character that begins at `position`, and moves `position` past it. An invalid byte counts as
/// one character, and is returned as 0.
char32_t nextCharacter(std::string_view utf8, std::size_t& position);

/// Returns the number of characters in valid UTF-8.
inline std::size_t characterCount(std::string_view utf8) {
  return static_cast<std::size_t>(
      std::ranges::count_if(utf8, [](char c) { return (static_cast<unsigned char>(c) & 0xC0U) != 0x80U; }));
}

bool isUTF8(std::string_view text);

/// Whether Unicode classes the character as a letter, a mark or a number (general category L, M or N).
bool isAlphanumeric(char32_t character);

}  // namespace TalvoConsentSDK

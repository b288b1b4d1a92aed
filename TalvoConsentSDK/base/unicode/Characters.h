#pragma once

// Characters in UTF-8 text (RFC 3629), and what Unicode says of them.

#include <algorithm>
#include <cstddef>
#include <string_view>

namespace TalvoConsentSDK {

/// A code point and the bytes it takes: none when the bytes are no UTF-8, such as an overlong form or a
/// surrogate.
struct Character {
  char32_t code = 0;
  std::size_t length = 0;
};

/// The character that `utf8` begins with; `utf8` must not be empty.
Character firstCharacter(std::string_view utf8);

/// The character that begins at `position`, which is moved behind it. A broken byte counts as one character,
/// 0.
char32_t nextCharacter(std::string_view utf8, std::size_t& position);

/// How many characters valid text has. A broken byte counts, unless it looks like one that continues a
/// character.
inline std::size_t characterCount(std::string_view utf8) {
  return static_cast<std::size_t>(
      std::ranges::count_if(utf8, [](char c) { return (static_cast<unsigned char>(c) & 0xC0U) != 0x80U; }));
}

bool isUTF8(std::string_view text);

/// Whether Unicode calls the character a letter, a mark that belongs to one, or a number.
bool isAlphanumeric(char32_t character);

}  // namespace TalvoConsentSDK

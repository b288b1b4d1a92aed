#pragma once

// Characters in UTF-8 text, and what Unicode says of them.

#include <cstddef>
#include <string_view>

namespace TalvoConsentSDK {

/// The character that begins at `position`, which is moved behind it. A broken byte counts as one character,
/// 0.
char32_t nextCharacter(std::string_view utf8, std::size_t& position);

/// Whether Unicode calls the character a letter, a mark that belongs to one, or a number.
bool isAlphanumeric(char32_t character);

}  // namespace TalvoConsentSDK

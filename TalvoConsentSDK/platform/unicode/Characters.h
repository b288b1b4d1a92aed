#pragma once

// Reads the characters of UTF-8 text, and classes them as Unicode does.

#include <cstddef>
#include <string_view>

namespace TalvoConsentSDK {

/// Returns the character that begins at `position`, and moves `position` past it. An invalid byte counts as
/// one character, and is returned as 0.
char32_t nextCharacter(std::string_view utf8, std::size_t& position);

/// Whether Unicode classes the character as a letter, a mark that belongs to a letter, or a number.
bool isAlphanumeric(char32_t character);

}  // namespace TalvoConsentSDK

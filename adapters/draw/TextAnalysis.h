#pragma once

// The Unicode algorithms that text layout needs. Each stands behind one function, so that the library that
// does it can be replaced. Positions are in characters (code points).

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "TalvoConsentSDK/platform/Application.h"

namespace TalvoConsentSDK {

/// The characters of a text, and where each begins in its UTF-8, in bytes. `offsets` has the text's end as an
/// additional entry. Bytes that are not UTF-8 become U+FFFD.
struct Characters {
  std::u32string codes;
  std::vector<std::uint32_t> offsets;
};

Characters charactersOf(std::string_view utf8);

/// The depth to which each character is embedded: even from left to right, odd from right to left.
std::vector<std::int8_t> bidiLevels(std::u32string_view text, platform::LayoutDirection base);

/// What may happen before a character. At the start of a text, nothing.
enum class LineBreak : std::uint8_t { none, allowed, mandatory };

/// Returns the positions in a text, in bytes, at which a line may begin.
using LineBreaker = std::function<std::vector<std::size_t>(std::string_view text, std::string_view language)>;

/// Returns what may happen before each character, with a further entry for the text's end: mandatory if the
/// text ends in a line break. Asks `breaker`, if it is not null, about texts that need a dictionary.
std::vector<LineBreak> lineBreaks(std::string_view utf8, const Characters& text, const std::string& language,
                                  const LineBreaker& breaker);

/// Whether the character is a blank or a line break, which takes no room at the end of a line.
bool isBlank(char32_t character);

}  // namespace TalvoConsentSDK

#pragma once

// Finds the place at which a text stops being JSON. The parser does not report it.

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace TalvoConsentSDK::json {

/// A place in a text. Both count from 1; a column is a character, not a byte.
struct TextPosition {
  std::size_t line = 1;
  std::size_t column = 1;
};

/// Returns the offset of the first byte at which `text` stops being strict JSON in UTF-8, or is nested deeper
/// than `maxDepth`; `text.size()` if the text ends too early. Returns nullopt for what only the parser
/// refuses: an empty text, numbers that do not fit, and half of a surrogate pair.
std::optional<std::size_t> syntaxErrorOffset(std::string_view text);

/// Returns the position of the byte at `offset`.
TextPosition textPosition(std::string_view text, std::size_t offset);

/// Returns the position of the syntax error as "line 12, column 5"; empty if there is no offset.
std::string placeOfSyntaxError(std::string_view text);

}  // namespace TalvoConsentSDK::json

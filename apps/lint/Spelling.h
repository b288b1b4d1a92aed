#pragma once

// Finds the name that a misspelt name was meant to be.

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace TalvoConsentSDK::linting {

/// Returns the number of letters that were added, left out, replaced or swapped with their neighbour.
std::size_t editDistance(std::string_view a, std::string_view b);

/// Returns the name that resembles `word` most: at most one letter in four is wrong, but one wrong letter is
/// always allowed. If there is none, returns the only name that begins or ends with `word`, if `word` has six
/// letters. Upper case, spaces, hyphens and underscores do not count.
std::optional<std::string> closest(std::string_view word, const std::vector<std::string>& names);

/// Returns `: did you mean "name"?`.
std::string didYouMean(std::string_view name);

/// Returns `"a", "b" or "c"`.
std::string anyOf(const std::vector<std::string>& names);

}  // namespace TalvoConsentSDK::linting

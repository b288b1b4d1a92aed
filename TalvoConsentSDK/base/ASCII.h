#pragma once

// ASCII letters and white space, independent of the locale.

#include <algorithm>
#include <string>
#include <string_view>

#include "TalvoConsentSDK/base/Export.h"

namespace TalvoConsentSDK TALVO_EXPORT {

/// Returns the character or text with the letters A to Z in lower case and everything else unchanged.
constexpr char lowercased(char c) noexcept {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}
inline std::string lowercased(std::string_view text) {
  std::string lower(text);
  std::ranges::transform(lower, lower.begin(), [](char c) { return lowercased(c); });
  return lower;
}

/// Whether a text contains nothing but white space.
constexpr bool isBlank(std::string_view text) noexcept {
  return text.find_first_not_of(" \t\r\n") == text.npos;
}

}  // namespace TalvoConsentSDK

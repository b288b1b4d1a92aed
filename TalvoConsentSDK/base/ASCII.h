#pragma once

// Lower case, independent of the locale.

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

}  // namespace TalvoConsentSDK

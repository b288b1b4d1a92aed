#pragma once

// Case that does not depend on a locale.

#include <algorithm>
#include <string>
#include <string_view>

#include "TalvoConsentSDK/base/Export.h"

namespace TalvoConsentSDK TALVO_EXPORT {

/// The character, or the text, with the letters A to Z in lower case and all else as it is.
constexpr char lowercased(char c) noexcept {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}
inline std::string lowercased(std::string_view text) {
  std::string lower(text);
  std::ranges::transform(lower, lower.begin(), [](char c) { return lowercased(c); });
  return lower;
}

}  // namespace TalvoConsentSDK

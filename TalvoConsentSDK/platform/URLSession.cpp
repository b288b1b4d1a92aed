#include "TalvoConsentSDK/platform/URLSession.h"

#include <algorithm>

namespace TalvoConsentSDK {

bool HeaderNameLess::operator()(std::string_view a, std::string_view b) const noexcept {
  const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; };
  return std::ranges::lexicographical_compare(a, b, {}, lower, lower);
}

}  // namespace TalvoConsentSDK

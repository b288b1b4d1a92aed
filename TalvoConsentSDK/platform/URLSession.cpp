#include "TalvoConsentSDK/platform/URLSession.h"

#include <algorithm>

#include "TalvoConsentSDK/platform/ASCII.h"

namespace TalvoConsentSDK {

bool HeaderNameLess::operator()(std::string_view a, std::string_view b) const noexcept {
  const auto lower = [](char c) { return lowercased(c); };
  return std::ranges::lexicographical_compare(a, b, {}, lower, lower);
}

}  // namespace TalvoConsentSDK

#include "Identifier.h"

#include <random>
#include <string_view>

namespace TalvoConsentSDK::service {

std::string newIdentifier() {
  constexpr std::string_view hex = "0123456789abcdef";
  std::random_device random;
  std::string text = "xxxxxxxx-xxxx-4xxx-vxxx-xxxxxxxxxxxx";
  for (char& c : text) {
    const unsigned digit = random() & 15;
    if (c == 'x') c = hex[digit];
    if (c == 'v') c = hex[8 | (digit & 3)];
  }
  return text;
}

}  // namespace TalvoConsentSDK::service

#include "TalvoConsentSDK/network/Endpoint.h"

namespace TalvoConsentSDK {

std::optional<URL> endpointURL(const std::string& baseUrl, const std::string& path) {
  std::string text = baseUrl;
  if (text.ends_with('/')) text.pop_back();
  auto url = URL::parse(text + "/public" + path);
  if (url && !url->isRequestable()) return std::nullopt;
  return url;
}

HTTPHeaders endpointHeaders() {
  return {{"X-Client-Name", "mobile-consent-sdk-ios"}};
}

}  // namespace TalvoConsentSDK

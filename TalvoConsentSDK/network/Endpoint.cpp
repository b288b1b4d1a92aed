#include "TalvoConsentSDK/network/Endpoint.h"

#include <charconv>

#include "TalvoConsentSDK/base/NeverDestroyed.h"

namespace TalvoConsentSDK {

using namespace platform;

namespace {

// Undoes percent-encoding once, as a server does.
std::string decoded(std::string_view text) {
  std::string plain;
  for (std::size_t at = 0; at < text.size(); ++at) {
    unsigned char byte = 0;
    const char* const digits = text.data() + at + 1;
    const bool isEncoded = text[at] == '%' && at + 2 < text.size() &&
                           std::from_chars(digits, digits + 2, byte, 16).ptr == digits + 2;
    plain += isEncoded ? static_cast<char>(byte) : text[at];
    if (isEncoded) at += 2;
  }
  return plain;
}

}  // namespace

std::optional<URL> endpointURL(const std::string& baseUrl, const std::string& path) {
  std::string text = baseUrl;
  if (text.ends_with('/')) text.pop_back();
  auto url = URL::parse(text + "/public" + path);
  if (url && !url->isRequestable()) return std::nullopt;
  return url;
}

bool isOneSegment(std::string_view text) {
  const std::string name = decoded(text);
  return !name.empty() && name != "." && name != ".." && name.find_first_of("/?#") == name.npos;
}

const HTTPHeaders& endpointHeaders() {
  static const HTTPHeaders& headers =
      neverDestroyed(HTTPHeaders{{"X-Client-Name", "mobile-consent-sdk-ios"}});
  return headers;
}

}  // namespace TalvoConsentSDK

#include "TalvoConsentSDK/ui/ExternalLink.h"

#include <string_view>

#include "TalvoConsentSDK/base/ASCII.h"
#include "TalvoConsentSDK/platform/Platform.h"
#include "TalvoConsentSDK/platform/Printer.h"

namespace TalvoConsentSDK {

using namespace platform;

namespace {

bool startsWith(std::string_view text, std::string_view lowerCasePrefix) {
  return lowercased(text.substr(0, lowerCasePrefix.size())) == lowerCasePrefix;
}

// Encodes the characters that no URL may contain.
std::string percentEncoded(std::string_view text) {
  constexpr std::string_view digits = "0123456789ABCDEF";
  constexpr std::string_view allowed = "!#$%&'()*+,-./:;=?@_~";
  std::string encoded;
  for (const char c : text) {
    const char lower = lowercased(c);
    if ((lower >= 'a' && lower <= 'z') || (c >= '0' && c <= '9') || allowed.find(c) != allowed.npos) {
      encoded += c;
      continue;
    }
    const auto byte = static_cast<unsigned char>(c);
    encoded += {'%', digits[byte >> 4], digits[byte & 15]};
  }
  return encoded;
}

}  // namespace

std::optional<URL> externalURL(const std::string& text) {
  const bool hasScheme = startsWith(text, "http://") || startsWith(text, "https://");
  const std::string full = hasScheme ? text : "https://" + text;
  if (auto url = URL::parse(full)) return url;
  auto url = URL::parse(percentEncoded(full));
  if (!url) return std::nullopt;
  // In a host, only characters beyond ASCII may be encoded.
  const std::string& host = url->host();
  for (auto i = host.find('%'); i != host.npos; i = host.find('%', i + 1)) {
    if (host[i + 1] < '8') return std::nullopt;
  }
  return url;
}

void openExternally(const std::string& link, const std::string& url) {
  const auto parsed = externalURL(url);
  if (!parsed) return print("⚠️ Invalid URL for link " + link + ": " + url);
  const Platform platform = Platform::current();
  platform::postOrRun(platform.mainActor,
                      [application = platform.application, parsed] { application->open(*parsed); });
}

}  // namespace TalvoConsentSDK

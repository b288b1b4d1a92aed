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

}  // namespace

std::optional<URL> externalURL(const std::string& text) {
  const bool hasScheme = startsWith(text, "http://") || startsWith(text, "https://");
  return URL::parse(hasScheme ? text : "https://" + text);
}

void openExternally(const std::string& link, const std::string& url) {
  const auto parsed = externalURL(url);
  if (!parsed) return print("⚠️ Invalid URL for link " + link + ": " + url);
  const Platform platform = Platform::current();
  platform::postOrRun(platform.mainActor,
                      [application = platform.application, parsed] { application->open(*parsed); });
}

}  // namespace TalvoConsentSDK

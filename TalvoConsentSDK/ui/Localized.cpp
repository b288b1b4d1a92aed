#include "TalvoConsentSDK/ui/Localized.h"

#include "TalvoConsentSDK/platform/Platform.h"
#include "TalvoConsentSDK/platform/Printer.h"

namespace TalvoConsentSDK {

std::string localized(std::string_view key) {
  return platform::askHost(std::string(key), [&] { return Platform::current().localization->text(key); });
}

std::string localizedLanguage() {
  return localized("en");
}

view::AnyView localizedText(std::string_view key, const view::TextOptions& options) {
  return text(localized(key), options).accessibility({.language = localizedLanguage()});
}

}  // namespace TalvoConsentSDK

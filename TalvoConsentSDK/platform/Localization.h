#pragma once

// The seam for the few texts that do not come from the service.

#include <string>
#include <string_view>

#include "TalvoConsentSDK/base/Export.h"

namespace TalvoConsentSDK {
namespace platform TALVO_EXPORT {

/// Looks texts up by key. This default knows no texts and returns the key itself. `TranslatedTexts` in
/// adapters/texts knows them in many languages.
class Localization {
 public:
  virtual ~Localization() = default;

  /// Returns the text for `key`, or the key. The key is the text in English. The key of a number of vendors
  /// begins with the number: `1 vendor`, `12 vendors`. The text for the key `en` is the code of the language
  /// that the texts are in, such as `de`; it is told to assistive technology.
  virtual std::string text(std::string_view key) { return std::string(key); }

  /// Called before a banner is shown, with the language in which its documents were fetched.
  virtual void setLanguage(const std::string&) {}
};

}  // namespace platform
}  // namespace TalvoConsentSDK

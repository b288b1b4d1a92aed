#pragma once

// The seam for the few texts that do not come from the service.

#include <string>
#include <string_view>

#include "TalvoConsentSDK/base/Export.h"

namespace TalvoConsentSDK {
namespace platform TALVO_EXPORT {

/// Looks texts up by key. This default knows no texts and returns the key itself.
class Localization {
 public:
  virtual ~Localization() = default;

  /// Returns the text for `key` in the user's language, or the key.
  virtual std::string text(std::string_view key) { return std::string(key); }
};

}  // namespace platform
}  // namespace TalvoConsentSDK

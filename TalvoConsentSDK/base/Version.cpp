#include "TalvoConsentSDK/base/Version.h"

namespace TalvoConsentSDK {

const char* version() noexcept {
  return TALVO_CONSENT_SDK_VERSION_TEXT;
}

}  // namespace TalvoConsentSDK

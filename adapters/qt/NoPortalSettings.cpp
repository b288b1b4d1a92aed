// For systems without a session bus.

#include "adapters/qt/PortalSettings.h"

namespace TalvoConsentSDK {

std::shared_ptr<SystemSettings> portalSettings() {
  return std::make_shared<SystemSettings>();
}

}  // namespace TalvoConsentSDK

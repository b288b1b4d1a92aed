#pragma once

// The system's settings on desktops that have a settings portal.

#include <memory>

#include "adapters/qt/SystemSettings.h"

namespace TalvoConsentSDK {

/// Asks the settings portal on the session bus (org.freedesktop.portal.Settings), without waiting for its
/// answer, and follows it. Until it answers, and if there is no bus or no portal, nothing is known.
std::shared_ptr<SystemSettings> portalSettings();

}  // namespace TalvoConsentSDK

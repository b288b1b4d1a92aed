#pragma once

// Waiting without stopping the event loop.

#include <functional>

namespace TalvoConsentHost {

/// Runs Qt's event loop until `condition` holds; false when it does not within a minute and a half,
/// which is more than a silent request takes to end. GUI thread.
bool waitUntil(const std::function<bool()>& condition);

}  // namespace TalvoConsentHost

#pragma once

// Waiting without stopping the event loop.

#include <functional>

namespace TalvoConsentHost {

/// Runs Qt's event loop until `condition` holds; false when it does not within half a minute. GUI thread.
bool waitUntil(const std::function<bool()>& condition);

}  // namespace TalvoConsentHost

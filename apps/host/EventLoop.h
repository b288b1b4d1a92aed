#pragma once

// Waits while the event loop keeps running.

#include <functional>

namespace TalvoConsentHost {

/// Runs Qt's event loop until `condition` holds. Returns false after 90 seconds, which is longer than an
/// unanswered request takes to time out. Call it on the GUI thread.
bool waitUntil(const std::function<bool()>& condition);

}  // namespace TalvoConsentHost

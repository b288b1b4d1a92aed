#pragma once

// Waits for the host to install its first platform.

#include <functional>

namespace TalvoConsentSDK::detail {

/// Calls `work` now if a platform is installed; otherwise the first `install` calls it, on its caller's
/// thread.
void onceInstalled(std::function<void()> work);

}  // namespace TalvoConsentSDK::detail

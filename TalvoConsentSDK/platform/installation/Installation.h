#pragma once

// The moment at which a host installs its first platform.

#include <functional>

namespace TalvoConsentSDK::detail {

/// Calls `work` once a platform is installed: now if there is one, else within the first `install`, on its
/// thread.
void onceInstalled(std::function<void()> work);

}  // namespace TalvoConsentSDK::detail

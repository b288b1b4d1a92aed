#pragma once

// What a host can choose about one banner.

#include <chrono>
#include <optional>

#include "TalvoConsentSDK/base/Export.h"

namespace TalvoConsentSDK TALVO_EXPORT {

struct BannerOptions {
  /// How long it may take until the banner is shown, from the call of `showBanner`; absent: as long as the
  /// requests may take. If a document arrives later, the banner is not shown, and `onError` receives a
  /// network error, an `HTTPClientError`. The platform's session watches the limit. If it ignores the limit,
  /// the error comes when the document does.
  std::optional<std::chrono::milliseconds> timeLimit{};
};

}  // namespace TalvoConsentSDK

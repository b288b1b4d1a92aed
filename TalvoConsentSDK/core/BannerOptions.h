#pragma once

// What a host can choose about one banner.

#include <chrono>
#include <optional>

#include "TalvoConsentSDK/base/Export.h"

namespace TalvoConsentSDK TALVO_EXPORT {

struct BannerOptions {
  /// How long it may take until the banner is shown, from the call of `showBanner`. Absent: as long as the
  /// banner's requests may take. If a document of the banner arrives later, the banner is not shown, and
  /// `onError` receives an `HTTPClientError`, a network error. The platform's session ends the requests at
  /// the limit. If the session ignores the limit, `onError` is called when the document arrives.
  std::optional<std::chrono::milliseconds> timeLimit{};
};

}  // namespace TalvoConsentSDK

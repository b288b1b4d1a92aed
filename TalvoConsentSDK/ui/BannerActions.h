#pragma once

// The identifiers of the actions that the banner's buttons and its close control report.

#include <algorithm>
#include <functional>
#include <string_view>

#include "TalvoConsentSDK/ui/ConsentBannerView.h"

namespace TalvoConsentSDK {

inline constexpr std::string_view closeAction = "closeButton";
inline constexpr std::string_view saveAction = "savePreferences";

/// An action and the callback it runs on every screen that does not handle the action itself.
struct CommonAction {
  std::string_view id;
  std::function<void()> BannerCallbacks::* callback;
};

/// One table for all screens. The main screen handles the last two itself: they open the preferences.
inline constexpr CommonAction commonActions[] = {
    {"acceptAll", &BannerCallbacks::onAcceptAll},
    {"rejectAll", &BannerCallbacks::onRejectAll},
    {"managePreferences", &BannerCallbacks::onManagePreferences},
    {"preferences", &BannerCallbacks::onManagePreferences},
};

/// Whether a screen responds to `action`.
inline bool isKnownAction(std::string_view action, bool isMainScreen) {
  return action == closeAction || (action == saveAction && !isMainScreen) ||
         std::ranges::find(commonActions, action, &CommonAction::id) != std::end(commonActions);
}

}  // namespace TalvoConsentSDK

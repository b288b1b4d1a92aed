#pragma once

// The actions that the banner's buttons and its close control report, by their identifiers.

#include <algorithm>
#include <functional>
#include <string_view>

#include "TalvoConsentSDK/ui/ConsentBannerView.h"

namespace TalvoConsentSDK {

inline constexpr std::string_view closeAction = "closeButton";
inline constexpr std::string_view saveAction = "savePreferences";

/// What an action calls on any screen that has no other use for it.
struct CommonAction {
  std::string_view id;
  std::function<void()> BannerCallbacks::* callback;
};

/// One table for all screens; the main screen navigates on the last two before it looks here.
inline constexpr CommonAction commonActions[] = {
    {"acceptAll", &BannerCallbacks::onAcceptAll},
    {"rejectAll", &BannerCallbacks::onRejectAll},
    {"managePreferences", &BannerCallbacks::onManagePreferences},
    {"preferences", &BannerCallbacks::onManagePreferences},
};

/// Whether a screen does anything on `action`.
inline bool isKnownAction(std::string_view action, bool isMainScreen) {
  return action == closeAction || (action == saveAction && !isMainScreen) ||
         std::ranges::find(commonActions, action, &CommonAction::id) != std::end(commonActions);
}

}  // namespace TalvoConsentSDK

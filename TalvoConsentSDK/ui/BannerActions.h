#pragma once

// The actions that the banner's buttons and its close control report, and what the banner itself reports.

#include <algorithm>
#include <functional>
#include <string_view>

#include "TalvoConsentSDK/models/BasicConsent.h"

namespace TalvoConsentSDK {

/// How the banner reports what the user decided. Called on the main thread.
struct BannerCallbacks {
  std::function<void()> onAcceptAll;
  std::function<void()> onRejectAll;
  std::function<void()> onManagePreferences;
  std::function<void(const BasicConsent&)> onSavePreferences;
  std::function<void()> onClose;
};

inline constexpr std::string_view acceptAction = "acceptAll";
inline constexpr std::string_view rejectAction = "rejectAll";
inline constexpr std::string_view manageAction = "managePreferences";
inline constexpr std::string_view preferencesAction = "preferences";
inline constexpr std::string_view saveAction = "savePreferences";
inline constexpr std::string_view closeAction = "closeButton";

/// An action and its callback. A screen that handles the action itself does not run the callback.
struct CommonAction {
  std::string_view id;
  std::function<void()> BannerCallbacks::* callback;
};

inline constexpr CommonAction commonActions[] = {
    {acceptAction, &BannerCallbacks::onAcceptAll},
    {rejectAction, &BannerCallbacks::onRejectAll},
    {manageAction, &BannerCallbacks::onManagePreferences},
    {preferencesAction, &BannerCallbacks::onManagePreferences},
};

/// Whether the main screen handles `action` itself, by opening the preferences.
inline bool opensPreferences(std::string_view action) {
  return action == manageAction || action == preferencesAction;
}

/// Whether a screen responds to `action`.
inline bool isKnownAction(std::string_view action, bool isMainScreen) {
  return action == closeAction || (action == saveAction && !isMainScreen) ||
         std::ranges::find(commonActions, action, &CommonAction::id) != std::end(commonActions);
}

}  // namespace TalvoConsentSDK

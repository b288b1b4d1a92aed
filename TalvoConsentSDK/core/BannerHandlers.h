#pragma once

// What a host can learn about a banner that it shows.

#include <functional>

#include "TalvoConsentSDK/base/Error.h"
#include "TalvoConsentSDK/base/Export.h"

namespace TalvoConsentSDK TALVO_EXPORT {

/// How a banner ended. "The decision was accepted" means that the service has accepted it. The device has
/// stored it too, unless its store failed, which prints a line, or the decision's user is no longer
/// identified, or everything was erased or a later decision was stored meanwhile.
enum class BannerOutcome {
  accepted,  // everything was accepted, and the decision was accepted
  rejected,  // everything was rejected, and the decision was accepted
  saved,     // the user's own choices were saved, and the decision was accepted
  closed,    // closed without a decision, also by a host that destroys what it lies on; nothing was stored
  replaced,  // another banner took its place before the user decided; nothing was stored
  notShown,  // the host has no window in the foreground
};

/// Closures for the ways in which a banner ends. Exactly one of them is called, once, on the main actor.
/// `onManagePreferences` and `onShown` are extra and may be called before. `onClosed` is also called if the
/// host destroys the window or the surface under the banner. Each may be empty.
struct BannerHandlers {
  std::function<void()> onAcceptAll{};
  std::function<void()> onRejectAll{};
  std::function<void()> onSaved{};
  std::function<void()> onClosed{};
  std::function<void()> onReplaced{};
  std::function<void()> onNotShown{};
  /// The banner could not be fetched, or not in time; or the decision could not be submitted.
  std::function<void(Error)> onError{};

  /// The user asked for preferences on a screen that does not lead to the banner's own: the host shows its
  /// own. The banner stays. May be called any number of times.
  std::function<void()> onManagePreferences{};

  /// The banner's window has opened, and the banner begins to fade in.
  std::function<void()> onShown{};
};

}  // namespace TalvoConsentSDK

#pragma once

// Looks at the windows on show and uses them as a person would.

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "TalvoConsentSDK/models/JSONValue.h"
#include "TalvoConsentSDK/view/Accessible.h"

namespace TalvoConsentSDK {
class ViewWindow;
}

namespace TalvoConsentHost {

/// Drives the newest banner. GUI thread.
class BannerDriver {
 public:
  /// `wait` runs the event loop until what it is given is true, or gives up.
  BannerDriver(TalvoConsentSDK::ViewWindow& host, std::function<bool(const std::function<bool()>&)> wait);

  /// The newest banner's window that is visible.
  TalvoConsentSDK::ViewWindow* banner() const;

  /// Whether anything is moving, fading or waiting to be drawn.
  bool isMoving() const;

  /// Everything of the banner to read and use, in reading order.
  TalvoConsentSDK::JSONArray view();

  /// Scrolls the first control called "[ROLE:]NAME" into view and taps its centre, without a banner one of
  /// the host's own; answers the name, or nothing when there is none.
  std::optional<std::string> tap(const std::string& target);

  /// Presses a key by name, for the banner if there is one; false when no key is called so.
  bool press(const std::string& key);

  /// The name of what the keys act on.
  std::optional<std::string> focus();

  /// Saves what is on screen as a PNG; false when it cannot be written.
  bool screenshot(const std::string& file);

 private:
  std::vector<TalvoConsentSDK::ViewWindow*> banners() const;
  void touch(TalvoConsentSDK::ViewWindow& window, TalvoConsentSDK::platform::Point point, bool isSwitch);
  void waitForFrames();

  TalvoConsentSDK::ViewWindow& host_;
  const std::function<bool(const std::function<bool()>&)> wait_;
};

}  // namespace TalvoConsentHost

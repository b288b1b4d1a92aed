#pragma once

// Reads the visible windows and uses them as a user would.

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

/// Drives the newest banner. Use it on the GUI thread.
class BannerDriver {
 public:
  /// `wait` runs the event loop until its condition holds, and returns false if it gives up.
  BannerDriver(TalvoConsentSDK::ViewWindow& host, std::function<bool(const std::function<bool()>&)> wait);

  /// The window of the newest visible banner, or null.
  TalvoConsentSDK::ViewWindow* banner() const;

  /// Whether anything is moving, fading or waiting to be drawn.
  bool isMoving() const;

  /// The banner's texts and controls, in reading order.
  TalvoConsentSDK::JSONArray view();

  /// Scrolls the first control named "[ROLE:]NAME" into view and taps its centre. Without a banner, it looks
  /// in the host's own window. Returns the control's name, or nothing if there is no such control.
  std::optional<std::string> tap(const std::string& target);

  /// The names of the host's own controls that show a busy indicator.
  TalvoConsentSDK::JSONArray busy();

  /// Presses the key with this name in the banner; without a banner, has no effect. Returns false if there is
  /// no such key.
  bool press(const std::string& key);

  /// The name of the control that has the keyboard focus.
  std::optional<std::string> focus();

  /// Saves the screen as a PNG. Returns false if the file cannot be written.
  bool screenshot(const std::string& file);

 private:
  std::vector<TalvoConsentSDK::ViewWindow*> banners() const;
  void touch(TalvoConsentSDK::ViewWindow& window, TalvoConsentSDK::platform::Point point, bool isSwitch);
  void waitForFrames();

  TalvoConsentSDK::ViewWindow& host_;
  const std::function<bool(const std::function<bool()>&)> wait_;
};

}  // namespace TalvoConsentHost

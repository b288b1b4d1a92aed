#pragma once

// What the host and its banner are shown on, and the main loop that belongs to it: a window of Qt's, or draw
// lists without a display.

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "TalvoConsentSDK/base/Geometry.h"
#include "TalvoConsentSDK/platform/Platform.h"
#include "TalvoConsentSDK/view/AnyView.h"
#include "TalvoConsentSDK/view/HostingController.h"
#include "TalvoConsentSDK/view/ViewTypes.h"

#include "apps/host/HostOptions.h"

namespace TalvoConsentHost {

/// A text or control. The frame is in points.
struct ShownElement {
  TalvoConsentSDK::view::Role role = TalvoConsentSDK::view::Role::none;
  std::string name;
  std::string value;
  std::string description;
  std::string language;
  bool isEnabled = true;
  TalvoConsentSDK::platform::Rect frame = {};
  bool isFocused = false;
  bool isModal = false;
  bool canBeActivated = false;
};

/// Main thread only. "The banner" is the newest one that is visible.
class HostDisplay {
 public:
  using Condition = std::function<bool()>;

  virtual ~HostDisplay() = default;

  /// Makes a platform without windows and without an HTTP cache, and adds the windows to it.
  virtual TalvoConsentSDK::Platform makePlatform(const HostOptions& options) = 0;
  virtual void addWindows(TalvoConsentSDK::Platform& platform) = 0;

  /// Shows the host's own screen.
  virtual void show(const TalvoConsentSDK::view::AnyView& screen) = 0;
  virtual void waitUntilShown() = 0;

  /// Runs the main loop until `condition` holds. Returns false after 90 seconds, which is longer than an
  /// unanswered request takes to time out.
  virtual bool waitUntil(const Condition& condition) = 0;

  /// Runs the main loop until `quit` is called. Returns the status given to it.
  virtual int run() = 0;
  virtual void quit(int status) = 0;

  /// Runs jobs on the main loop. May outlive the display; its jobs then do not run.
  virtual std::shared_ptr<TalvoConsentSDK::platform::Executor> turns() = 0;

  virtual bool isBannerShown() const = 0;

  /// Whether anything is moving, fading or waiting to be drawn.
  virtual bool isMoving() const = 0;

  /// The banner's texts and controls in reading order, including those that are scrolled out of sight.
  virtual std::vector<ShownElement> elements() = 0;

  /// The texts and controls of the host's own screen, without those that are scrolled out of sight.
  virtual std::vector<ShownElement> hostElements() = 0;
  /// What the display gives assistive technology about the banner, in its order.
  virtual std::vector<ShownElement> accessibleElements() = 0;

  /// Scrolls the first control with this name, and this role if one is given, into view and taps its centre.
  /// Without a banner, looks in the host's own screen. Returns false if there is no such control.
  virtual bool tap(const std::string& name, std::optional<TalvoConsentSDK::view::Role> role) = 0;

  /// Presses the key with this name in the banner; without a banner, has no effect. Returns false if there is
  /// no such key.
  virtual bool press(const std::string& key) = 0;

  /// The name of the control that has the keyboard focus.
  virtual std::optional<std::string> focus() = 0;

  /// Saves host and banner as a PNG. Returns false if the file cannot be written.
  virtual bool screenshot(const std::string& file) = 0;

 protected:
  void waitForFrames() {
    waitUntil([this] { return !isMoving(); });
  }
};

}  // namespace TalvoConsentHost

#pragma once

// Passes the user's input to the window it is meant for, and follows a touch or a key until it ends.

#include <chrono>
#include <compare>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <set>

#include "adapters/draw/SurfaceInput.h"
#include "adapters/draw/SurfaceStage.h"

namespace TalvoConsentSDK {

/// Each function returns whether the banner took the input. Places are in points. Main thread only.
class SurfaceGestures {
 public:
  explicit SurfaceGestures(std::shared_ptr<SurfaceStage> stage) : stage_(std::move(stage)) {}

  bool touchBegan(std::int64_t finger, platform::Point place);
  bool touchMoved(std::int64_t finger, platform::Point place);
  bool touchEnded(std::int64_t finger, platform::Point place, bool isCancelled);

  bool mouseMoved(platform::Point place);
  bool mousePressed(MouseButton button, platform::Point place);
  bool mouseReleased(MouseButton button, platform::Point place);
  bool scrolled(platform::Point place, double points);

  bool keyPressed(SurfaceKey key);
  bool keyReleased(SurfaceKey key);
  bool stickMoved(ControllerStick stick, double x, double y);

  /// Whether input everywhere on the surface goes to the banner.
  bool coversHost() const;

  /// Moves on while a stick is held. Call it before each frame.
  void step();
  bool isHeld() const { return heldKey_.has_value() || scrollSpeed_ != 0; }

 private:
  using Clock = SurfaceStage::Clock;
  using Controller = std::shared_ptr<view::HostingController>;

  // A finger, or the mouse while its left button is down.
  struct Pointer {
    bool isMouse = false;
    std::int64_t finger = 0;
    friend auto operator<=>(const Pointer&, const Pointer&) = default;
  };

  bool pointerBegan(Pointer pointer, platform::Point place);
  bool pointerMoved(Pointer pointer, platform::Point place);
  bool pointerEnded(Pointer pointer, platform::Point place, bool isCancelled);
  bool repeatsForHost(SurfaceKey key);

  Controller covering(platform::Point place) const;
  static bool press(view::HostingController& controller, SurfaceKey key);

  const std::shared_ptr<SurfaceStage> stage_;

  // What the banner follows, and the window below it.
  std::optional<Pointer> followed_;
  std::weak_ptr<view::HostingController> touched_;
  std::set<Pointer> pointers_;  // all that began on the banner
  std::set<MouseButton> hostButtons_;
  std::set<MouseButton> buttons_;
  std::set<SurfaceKey> keys_;
  std::map<SurfaceKey, Clock::time_point> hostKeys_;  // with the time of the last press
  std::set<ControllerStick> hostSticks_;

  std::optional<SurfaceKey> heldKey_;  // the direction of the left stick
  Clock::time_point nextRepeat_;
  double scrollSpeed_ = 0;  // in points per second
  Clock::time_point lastStep_;
};

}  // namespace TalvoConsentSDK

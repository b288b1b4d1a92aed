#pragma once

// Passes the user's input to the window it is meant for, and follows a touch or a key until it ends.

#include <chrono>
#include <cstdint>
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

  Controller covering(platform::Point place) const;
  static bool press(view::HostingController& controller, SurfaceKey key);

  const std::shared_ptr<SurfaceStage> stage_;

  // The finger or the mouse button that the banner follows, and the window below it.
  std::optional<std::int64_t> finger_;
  std::weak_ptr<view::HostingController> touched_;
  std::set<std::int64_t> fingers_;  // all that began on the banner
  std::set<MouseButton> hostButtons_;
  std::set<MouseButton> buttons_;
  std::set<SurfaceKey> keys_;

  std::optional<SurfaceKey> heldKey_;  // the direction of the left stick
  Clock::time_point nextRepeat_;
  double scrollSpeed_ = 0;  // in points per second
  Clock::time_point lastStep_;
};

}  // namespace TalvoConsentSDK

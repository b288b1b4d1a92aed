#include "adapters/draw/SurfaceGestures.h"

#include <algorithm>
#include <cmath>

namespace TalvoConsentSDK {

using namespace platform;
using namespace view;

namespace {

constexpr std::int64_t mouseFinger = -1;  // other than any finger that a host reports while a button is down
constexpr double stickThreshold = 0.6;
constexpr double stickRest = 0.4;  // below it, the stick counts as released
constexpr double scrollDeadZone = 0.2;
constexpr double maxScrollSpeed = 900;  // points per second
constexpr std::chrono::milliseconds firstRepeat(400);
constexpr std::chrono::milliseconds repeatInterval(150);

std::optional<Key> toKey(SurfaceKey key) {
  switch (key) {
    case SurfaceKey::tab:
      return Key::tab;
    case SurfaceKey::backtab:
      return Key::backtab;
    case SurfaceKey::space:
      return Key::space;
    case SurfaceKey::enter:
    case SurfaceKey::padAccept:
      return Key::enter;
    case SurfaceKey::escape:
    case SurfaceKey::padCancel:
      return Key::escape;
    case SurfaceKey::up:
    case SurfaceKey::padUp:
      return Key::up;
    case SurfaceKey::down:
    case SurfaceKey::padDown:
      return Key::down;
    case SurfaceKey::left:
    case SurfaceKey::padLeft:
      return Key::left;
    case SurfaceKey::right:
    case SurfaceKey::padRight:
      return Key::right;
    case SurfaceKey::pageUp:
      return Key::pageUp;
    case SurfaceKey::pageDown:
      return Key::pageDown;
    case SurfaceKey::home:
      return Key::home;
    case SurfaceKey::end:
      return Key::end;
    case SurfaceKey::other:
      break;
  }
  return std::nullopt;
}

}  // namespace

SurfaceGestures::Controller SurfaceGestures::covering(Point place) const {
  for (const Controller& controller : stage_->controllers()) {
    if (controller->covers(place)) return controller;
  }
  return nullptr;
}

bool SurfaceGestures::coversHost() const {
  const Size size = stage_->pointSize();
  return covering({1, 1}) && covering({size.width - 1, size.height - 1});
}

bool SurfaceGestures::touchBegan(std::int64_t finger, Point place) {
  const Controller controller = covering(place);
  if (!controller) return false;
  fingers_.insert(finger);
  if (finger_) return true;
  finger_ = finger;
  touched_ = controller;
  controller->touchBegan(place, stage_->now());
  return true;
}

bool SurfaceGestures::touchMoved(std::int64_t finger, Point place) {
  const Controller controller = touched_.lock();
  if (finger_ == finger && controller) controller->touchMoved(place, stage_->now());
  return fingers_.contains(finger);
}

bool SurfaceGestures::touchEnded(std::int64_t finger, Point place, bool isCancelled) {
  const Controller controller = touched_.lock();
  if (finger_ == finger) {
    finger_.reset();
    touched_.reset();
    if (controller && isCancelled) controller->touchCancelled();
    if (controller && !isCancelled) controller->touchEnded(place, stage_->now());
  }
  return fingers_.erase(finger) > 0;
}

bool SurfaceGestures::mouseMoved(Point place) {
  if (buttons_.contains(MouseButton::left)) touchMoved(mouseFinger, place);
  if (!buttons_.empty()) return true;
  return hostButtons_.empty() && covering(place) != nullptr;
}

bool SurfaceGestures::mousePressed(MouseButton button, Point place) {
  const bool isForBanner =
      buttons_.empty() && hostButtons_.empty() ? covering(place) != nullptr : !buttons_.empty();
  (isForBanner ? buttons_ : hostButtons_).insert(button);
  if (isForBanner && button == MouseButton::left) touchBegan(mouseFinger, place);
  return isForBanner;
}

bool SurfaceGestures::mouseReleased(MouseButton button, Point place) {
  if (button == MouseButton::left) touchEnded(mouseFinger, place, false);
  hostButtons_.erase(button);
  return buttons_.erase(button) > 0;
}

bool SurfaceGestures::scrolled(Point place, double points) {
  const Controller controller = covering(place);
  if (!controller) return false;
  controller->scroll(place, points);
  return true;
}

bool SurfaceGestures::keyPressed(SurfaceKey key) {
  const auto controllers = stage_->controllers();
  if (controllers.empty()) return false;
  const bool isForAll = coversHost();
  const bool isTaken = press(*controllers.front(), key) || isForAll;
  if (isTaken) keys_.insert(key);
  return isTaken;
}

bool SurfaceGestures::keyReleased(SurfaceKey key) {
  return keys_.erase(key) > 0;
}

bool SurfaceGestures::press(HostingController& controller, SurfaceKey key) {
  const auto known = toKey(key);
  return known && controller.press(*known);
}

bool SurfaceGestures::stickMoved(ControllerStick stick, double x, double y) {
  const bool isTaken = !stage_->controllers().empty();
  if (stick == ControllerStick::right) {
    const bool isScrolling = isTaken && std::abs(y) > scrollDeadZone;
    if (isScrolling && scrollSpeed_ == 0) lastStep_ = stage_->now();
    scrollSpeed_ = isScrolling ? y * maxScrollSpeed : 0;
    if (isScrolling) stage_->invalidate();
    return isTaken;
  }
  const double reach = std::max(std::abs(x), std::abs(y));
  if (reach < stickRest || !isTaken) heldKey_.reset();
  if (!isTaken || heldKey_ || reach < stickThreshold) return isTaken;
  if (std::abs(y) >= std::abs(x)) {
    heldKey_ = y > 0 ? SurfaceKey::padDown : SurfaceKey::padUp;
  } else {
    heldKey_ = x > 0 ? SurfaceKey::padRight : SurfaceKey::padLeft;
  }
  nextRepeat_ = stage_->now() + firstRepeat;
  press(*stage_->controllers().front(), *heldKey_);
  stage_->invalidate();
  return true;
}

void SurfaceGestures::step() {
  const auto controllers = stage_->controllers();
  if (!isHeld()) return;
  if (controllers.empty()) {
    heldKey_.reset();
    scrollSpeed_ = 0;
    return;
  }
  HostingController& controller = *controllers.front();
  const Clock::time_point now = stage_->now();
  if (heldKey_ && now >= nextRepeat_) {
    nextRepeat_ = now + repeatInterval;
    press(controller, *heldKey_);
  }
  if (scrollSpeed_ != 0) {
    const std::chrono::duration<double> passed = now - std::exchange(lastStep_, now);
    for (const AccessibleElement& each : controller.accessibleElements()) {
      if (!each.clip) continue;
      controller.scroll(each.clip->center(), scrollSpeed_ * std::min(passed.count(), 0.1));
      break;
    }
  }
}

}  // namespace TalvoConsentSDK

#include "adapters/draw/SurfaceGestures.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace TalvoConsentSDK {

using namespace platform;
using namespace view;

namespace {

constexpr double stickThreshold = 0.6;
constexpr double stickRest = 0.4;  // below it, the stick counts as released
constexpr double scrollDeadZone = 0.2;
constexpr double maxScrollSpeed = 900;  // points per second
constexpr std::chrono::milliseconds firstRepeat(400);
constexpr std::chrono::milliseconds repeatInterval(150);
constexpr std::chrono::seconds longestRepeat(1);  // between two presses that a system makes of one held key

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
  return pointerBegan({false, finger}, place);
}

bool SurfaceGestures::touchMoved(std::int64_t finger, Point place) {
  return pointerMoved({false, finger}, place);
}

bool SurfaceGestures::touchEnded(std::int64_t finger, Point place, bool isCancelled) {
  return pointerEnded({false, finger}, place, isCancelled);
}

bool SurfaceGestures::pointerBegan(Pointer pointer, Point place) {
  const Controller controller = covering(place);
  if (!controller) return false;
  pointers_.insert(pointer);
  if (followed_) return true;
  followed_ = pointer;
  touched_ = controller;
  controller->touchBegan(place, stage_->now());
  return true;
}

bool SurfaceGestures::pointerMoved(Pointer pointer, Point place) {
  const Controller controller = touched_.lock();
  if (followed_ == pointer && controller) controller->touchMoved(place, stage_->now());
  return pointers_.contains(pointer);
}

bool SurfaceGestures::pointerEnded(Pointer pointer, Point place, bool isCancelled) {
  const Controller controller = touched_.lock();
  if (followed_ == pointer) {
    followed_.reset();
    touched_.reset();
    if (controller && isCancelled) controller->touchCancelled();
    if (controller && !isCancelled) controller->touchEnded(place, stage_->now());
  }
  return pointers_.erase(pointer) > 0;
}

bool SurfaceGestures::mouseMoved(Point place) {
  if (buttons_.contains(MouseButton::left)) pointerMoved({.isMouse = true}, place);
  if (!buttons_.empty()) return true;
  return hostButtons_.empty() && covering(place) != nullptr;
}

bool SurfaceGestures::mousePressed(MouseButton button, Point place) {
  const bool isForBanner =
      buttons_.empty() && hostButtons_.empty() ? covering(place) != nullptr : !buttons_.empty();
  (isForBanner ? buttons_ : hostButtons_).insert(button);
  if (isForBanner && button == MouseButton::left) pointerBegan({.isMouse = true}, place);
  return isForBanner;
}

bool SurfaceGestures::mouseReleased(MouseButton button, Point place) {
  if (button == MouseButton::left) pointerEnded({.isMouse = true}, place, false);
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
  const bool isForAll = coversHost();
  if (repeatsForHost(key)) return isForAll;  // a key that the user still holds does not operate the banner
  const bool isTaken = !controllers.empty() && (press(*controllers.front(), key) || isForAll);
  // Keys without a name of their own cannot be told apart, so the host receives all their releases.
  if (key == SurfaceKey::other) return isTaken;
  if (isTaken) {
    keys_.insert(key);
  } else {
    hostKeys_[key] = stage_->now();
  }
  return isTaken;
}

// Whether the host received the first press of a key that is held.
bool SurfaceGestures::repeatsForHost(SurfaceKey key) {
  const auto held = hostKeys_.find(key);
  if (held == hostKeys_.end()) return false;
  const Clock::time_point last = std::exchange(held->second, stage_->now());
  if (held->second - last <= longestRepeat) return true;
  hostKeys_.erase(held);  // its release was not reported
  return false;
}

bool SurfaceGestures::keyReleased(SurfaceKey key) {
  const bool isForBanner = keys_.erase(key) > 0;
  return hostKeys_.erase(key) == 0 && isForBanner;
}

bool SurfaceGestures::press(HostingController& controller, SurfaceKey key) {
  const auto known = toKey(key);
  return known && controller.press(*known);
}

bool SurfaceGestures::stickMoved(ControllerStick stick, double x, double y) {
  const double reach = std::max(std::abs(x), std::abs(y));
  const bool isTaken = !stage_->controllers().empty() && !hostSticks_.contains(stick);
  if (reach < stickRest) {
    hostSticks_.erase(stick);
  } else if (!isTaken) {
    hostSticks_.insert(stick);
  }
  if (stick == ControllerStick::right) {
    const bool isScrolling = isTaken && std::abs(y) > scrollDeadZone;
    if (isScrolling && scrollSpeed_ == 0) lastStep_ = stage_->now();
    scrollSpeed_ = isScrolling ? y * maxScrollSpeed : 0;
    if (isScrolling) stage_->invalidate();
    return isTaken;
  }
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

// The C interface of surfaces: the user's input.

#include <cmath>

#include "bindings/c/surface/Surface.h"
#include "bindings/c/surface/talvo_surface_input.h"

using namespace TalvoConsentSDK;
using namespace TalvoConsentSDK::c;

static_assert(static_cast<int>(SurfaceKey::right) == TALVO_KEY_RIGHT);
static_assert(static_cast<int>(MouseButton::other) == TALVO_MOUSE_OTHER);
static_assert(static_cast<int>(ControllerStick::right) == TALVO_STICK_RIGHT);

namespace {

double finite(double number, const char* name) {
  if (!std::isfinite(number)) refuse(name, "is not finite");
  return number;
}

MouseButton buttonOf(talvo_mouse_button button) {
  const bool isKnown = button >= TALVO_MOUSE_LEFT && button < TALVO_MOUSE_OTHER;
  return isKnown ? static_cast<MouseButton>(button) : MouseButton::other;
}

SurfaceKey keyOf(talvo_key key) {
  const bool isKnown = key >= TALVO_KEY_TAB && key <= TALVO_KEY_RIGHT;
  return isKnown ? static_cast<SurfaceKey>(key) : SurfaceKey::other;
}

ControllerStick stickOf(talvo_stick stick) {
  if (stick == TALVO_STICK_LEFT) return ControllerStick::left;
  if (stick == TALVO_STICK_RIGHT) return ControllerStick::right;
  refuse("stick", "is unknown");
}

// Calls `body` with the surface, and returns its answer, if the position can be used.
template <class Body>
int answeredAt(talvo_surface* surface, double x, double y, const Body& body) {
  return answered(surface, [&](ConsentSurface& shown) {
    finite(x, "x");
    finite(y, "y");
    return body(shown);
  });
}

}  // namespace

int talvo_surface_touch_began(talvo_surface* surface, int64_t finger, double x, double y) {
  return answeredAt(surface, x, y, [&](ConsentSurface& shown) { return shown.touchBegan(finger, x, y); });
}

int talvo_surface_touch_moved(talvo_surface* surface, int64_t finger, double x, double y) {
  return answeredAt(surface, x, y, [&](ConsentSurface& shown) { return shown.touchMoved(finger, x, y); });
}

int talvo_surface_touch_ended(talvo_surface* surface, int64_t finger, double x, double y) {
  return answeredAt(surface, x, y, [&](ConsentSurface& shown) { return shown.touchEnded(finger, x, y); });
}

int talvo_surface_touch_cancelled(talvo_surface* surface, int64_t finger) {
  return answered(surface, [&](ConsentSurface& shown) { return shown.touchCancelled(finger); });
}

int talvo_surface_mouse_moved(talvo_surface* surface, double x, double y) {
  return answeredAt(surface, x, y, [&](ConsentSurface& shown) { return shown.mouseMoved(x, y); });
}

int talvo_surface_mouse_pressed(talvo_surface* surface, talvo_mouse_button button, double x, double y) {
  return answeredAt(surface, x, y,
                    [&](ConsentSurface& shown) { return shown.mousePressed(buttonOf(button), x, y); });
}

int talvo_surface_mouse_released(talvo_surface* surface, talvo_mouse_button button, double x, double y) {
  return answeredAt(surface, x, y,
                    [&](ConsentSurface& shown) { return shown.mouseReleased(buttonOf(button), x, y); });
}

int talvo_surface_scrolled(talvo_surface* surface, double x, double y, double pixels) {
  return answeredAt(surface, x, y,
                    [&](ConsentSurface& shown) { return shown.scrolled(x, y, finite(pixels, "pixels")); });
}

int talvo_surface_wheel_turned(talvo_surface* surface, double x, double y, double notches) {
  return answeredAt(surface, x, y, [&](ConsentSurface& shown) {
    return shown.wheelTurned(x, y, finite(notches, "notches"));
  });
}

int talvo_surface_key_pressed(talvo_surface* surface, talvo_key key) {
  return answered(surface, [&](ConsentSurface& shown) { return shown.keyPressed(keyOf(key)); });
}

int talvo_surface_key_released(talvo_surface* surface, talvo_key key) {
  return answered(surface, [&](ConsentSurface& shown) { return shown.keyReleased(keyOf(key)); });
}

int talvo_surface_stick_moved(talvo_surface* surface, talvo_stick stick, double x, double y) {
  return answeredAt(surface, x, y,
                    [&](ConsentSurface& shown) { return shown.stickMoved(stickOf(stick), x, y); });
}

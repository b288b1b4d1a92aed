#include "adapters/sdl/SDLInput.h"

#include <SDL.h>

#include "adapters/draw/ConsentSurface.h"

namespace TalvoConsentSDK {

namespace {

SurfaceKey toKey(const SDL_Keysym& key) {
  switch (key.sym) {
    case SDLK_TAB:
      return (key.mod & KMOD_SHIFT) != 0 ? SurfaceKey::backtab : SurfaceKey::tab;
    case SDLK_SPACE:
      return SurfaceKey::space;
    case SDLK_RETURN:
    case SDLK_KP_ENTER:
    case SDLK_SELECT:
      return SurfaceKey::enter;
    case SDLK_ESCAPE:
    case SDLK_AC_BACK:
      return SurfaceKey::escape;
    case SDLK_UP:
      return SurfaceKey::up;
    case SDLK_DOWN:
      return SurfaceKey::down;
    case SDLK_LEFT:
      return SurfaceKey::left;
    case SDLK_RIGHT:
      return SurfaceKey::right;
    case SDLK_PAGEUP:
      return SurfaceKey::pageUp;
    case SDLK_PAGEDOWN:
      return SurfaceKey::pageDown;
    case SDLK_HOME:
      return SurfaceKey::home;
    case SDLK_END:
      return SurfaceKey::end;
    default:
      return SurfaceKey::other;
  }
}

SurfaceKey toKey(Uint8 button) {
  switch (button) {
    case SDL_CONTROLLER_BUTTON_DPAD_UP:
      return SurfaceKey::padUp;
    case SDL_CONTROLLER_BUTTON_DPAD_DOWN:
      return SurfaceKey::padDown;
    case SDL_CONTROLLER_BUTTON_DPAD_LEFT:
      return SurfaceKey::padLeft;
    case SDL_CONTROLLER_BUTTON_DPAD_RIGHT:
      return SurfaceKey::padRight;
    case SDL_CONTROLLER_BUTTON_A:
      return SurfaceKey::padAccept;
    case SDL_CONTROLLER_BUTTON_B:
      return SurfaceKey::padCancel;
    default:
      return SurfaceKey::other;
  }
}

MouseButton toButton(Uint8 button) {
  switch (button) {
    case SDL_BUTTON_LEFT:
      return MouseButton::left;
    case SDL_BUTTON_RIGHT:
      return MouseButton::right;
    case SDL_BUTTON_MIDDLE:
      return MouseButton::middle;
    default:
      return MouseButton::other;
  }
}

// The window that an event belongs to. 0 if it belongs to none, such as a controller's, or if SDL does not
// know.
Uint32 windowOf(const SDL_Event& event) {
  switch (event.type) {
    case SDL_KEYDOWN:
    case SDL_KEYUP:
      return event.key.windowID;
    case SDL_TEXTINPUT:
      return event.text.windowID;
    case SDL_TEXTEDITING:
      return event.edit.windowID;
    case SDL_MOUSEMOTION:
      return event.motion.windowID;
    case SDL_MOUSEBUTTONDOWN:
    case SDL_MOUSEBUTTONUP:
      return event.button.windowID;
    case SDL_MOUSEWHEEL:
      return event.wheel.windowID;
    case SDL_FINGERDOWN:
    case SDL_FINGERUP:
    case SDL_FINGERMOTION:
      return event.tfinger.windowID;
    default:
      return 0;
  }
}

}  // namespace

// Converts a position of the mouse, which is in the window's units or, if the host has set a logical size, in
// the renderer's.
SDLInput::Place SDLInput::pixels(double x, double y) const {
  int logicalWidth = 0;
  int logicalHeight = 0;
  SDL_Renderer* const renderer = SDL_GetRenderer(window_);
  if (renderer) SDL_RenderGetLogicalSize(renderer, &logicalWidth, &logicalHeight);
  if (logicalWidth > 0) {
    int windowX = 0;
    int windowY = 0;
    SDL_RenderLogicalToWindow(renderer, static_cast<float>(x), static_cast<float>(y), &windowX, &windowY);
    x = windowX;
    y = windowY;
  }
  int width = 1;
  int height = 1;
  int pixelWidth = 1;
  int pixelHeight = 1;
  SDL_GetWindowSize(window_, &width, &height);
  SDL_GetWindowSizeInPixels(window_, &pixelWidth, &pixelHeight);
  return {x * pixelWidth / width, y * pixelHeight / height};
}

// Converts a position from 0 to 1 across the window or, if the host has set a logical size, across this size.
SDLInput::Place SDLInput::fingerPixels(double x, double y) const {
  int width = 0;
  int height = 0;
  if (SDL_Renderer* const renderer = SDL_GetRenderer(window_)) {
    SDL_RenderGetLogicalSize(renderer, &width, &height);
  }
  if (width <= 0) SDL_GetWindowSize(window_, &width, &height);
  return pixels(x * width, y * height);
}

bool SDLInput::handle(const SDL_Event& event) {
  const Uint32 window = windowOf(event);
  if (window != 0 && window != SDL_GetWindowID(window_)) return false;
  // SDL also reports the first finger as a mouse, and on phones the mouse as a finger. The surface follows
  // what comes first, and also takes what repeats it.
  switch (event.type) {
    case SDL_FINGERDOWN:
    case SDL_FINGERMOTION:
    case SDL_FINGERUP: {
      const Place place = fingerPixels(event.tfinger.x, event.tfinger.y);
      const SDL_FingerID finger = event.tfinger.fingerId;
      if (event.type == SDL_FINGERDOWN) return surface_.touchBegan(finger, place.x, place.y);
      if (event.type == SDL_FINGERMOTION) return surface_.touchMoved(finger, place.x, place.y);
      return surface_.touchEnded(finger, place.x, place.y);
    }
    case SDL_MOUSEMOTION:
      mouse_ = pixels(event.motion.x, event.motion.y);
      return surface_.mouseMoved(mouse_.x, mouse_.y);
    case SDL_MOUSEBUTTONDOWN:
    case SDL_MOUSEBUTTONUP: {
      mouse_ = pixels(event.button.x, event.button.y);
      const MouseButton button = toButton(event.button.button);
      if (event.type == SDL_MOUSEBUTTONDOWN) return surface_.mousePressed(button, mouse_.x, mouse_.y);
      return surface_.mouseReleased(button, mouse_.x, mouse_.y);
    }
    case SDL_MOUSEWHEEL:  // positive upwards
      return surface_.wheelTurned(mouse_.x, mouse_.y, -static_cast<double>(event.wheel.preciseY));
    case SDL_KEYDOWN:
    case SDL_KEYUP:
    case SDL_TEXTINPUT:
    case SDL_TEXTEDITING:
      return handleKey(event);
    default:
      return handleController(event);
  }
}

bool SDLInput::handleKey(const SDL_Event& event) {
  if (event.type == SDL_KEYDOWN) return surface_.keyPressed(toKey(event.key.keysym));
  if (event.type == SDL_KEYUP) return surface_.keyReleased(toKey(event.key.keysym));
  return surface_.isModal();  // the text of a key that the banner took
}

bool SDLInput::handleController(const SDL_Event& event) {
  switch (event.type) {
    case SDL_CONTROLLERBUTTONDOWN:
      return surface_.keyPressed(toKey(event.cbutton.button));
    case SDL_CONTROLLERBUTTONUP:
      return surface_.keyReleased(toKey(event.cbutton.button));
    case SDL_CONTROLLERAXISMOTION: {
      const auto axis = static_cast<SDL_GameControllerAxis>(event.caxis.axis);
      if (axis > SDL_CONTROLLER_AXIS_RIGHTY) return surface_.isModal();  // a trigger
      const bool isRight = axis >= SDL_CONTROLLER_AXIS_RIGHTX;
      Place& stick = sticks_[isRight ? 1 : 0];
      const bool isVertical = axis == SDL_CONTROLLER_AXIS_LEFTY || axis == SDL_CONTROLLER_AXIS_RIGHTY;
      (isVertical ? stick.y : stick.x) = event.caxis.value / 32768.0;
      return surface_.stickMoved(isRight ? ControllerStick::right : ControllerStick::left, stick.x, stick.y);
    }
    case SDL_JOYAXISMOTION:  // SDL reports the same input as a joystick's, too
    case SDL_JOYBALLMOTION:
    case SDL_JOYHATMOTION:
    case SDL_JOYBUTTONDOWN:
    case SDL_JOYBUTTONUP:
      return surface_.isModal();
    default:
      return false;
  }
}

}  // namespace TalvoConsentSDK

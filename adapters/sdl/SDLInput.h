#pragma once

// Passes SDL's events to a surface.

#include "TalvoConsentSDK/base/Export.h"

union SDL_Event;
struct SDL_Window;

namespace TalvoConsentSDK TALVO_EXPORT {

class ConsentSurface;

/// Feeds a surface that covers `window` with touches, the mouse, keys and game controllers. Main thread only.
/// For hosts that draw with SDL's renderer, `SDLBanner` does this.
class SDLInput {
 public:
  SDLInput(ConsentSurface& surface, SDL_Window* window) : surface_(surface), window_(window) {}

  /// Returns whether the banner took the event; if not, it is for the host. Pass every event, in order. A
  /// controller must have been opened by the host.
  bool handle(const SDL_Event& event);

 private:
  struct Place {
    double x = 0;
    double y = 0;
  };

  Place pixels(double x, double y) const;
  Place fingerPixels(double x, double y) const;
  bool handleKey(const SDL_Event& event);
  bool handleController(const SDL_Event& event);

  ConsentSurface& surface_;
  SDL_Window* const window_;
  Place mouse_;
  Place sticks_[2];
};

}  // namespace TalvoConsentSDK

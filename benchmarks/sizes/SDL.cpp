#include "adapters/sdl/SDLPlatform.h"

#include "App.h"

using namespace TalvoConsentSDK;

Platform chosenPlatform() {
  static SDLBanner banner(nullptr, nullptr);  // a host passes its window and its renderer
  banner.draw();
  return makeSDLPlatform(banner);
}

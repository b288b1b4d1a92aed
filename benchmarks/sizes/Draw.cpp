#include "adapters/draw/ConsentSurface.h"
#include "adapters/posix/PosixPlatform.h"

#include "App.h"

using namespace TalvoConsentSDK;

Platform chosenPlatform() {
  static ConsentSurface surface({.size = {780, 1688, 2}});
  Platform platform = makePosixPlatform(std::make_shared<MainQueue>());
  surface.addTo(platform);
  surface.frame();
  return platform;
}

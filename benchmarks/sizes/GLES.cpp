#include "adapters/draw/ConsentSurface.h"
#include "adapters/gles/GLESRenderer.h"
#include "adapters/posix/PosixPlatform.h"

#include "App.h"

using namespace TalvoConsentSDK;

Platform chosenPlatform() {
  static ConsentSurface surface({.size = {780, 1688, 2}});
  static GLESRenderer renderer;
  Platform platform = makePosixPlatform(std::make_shared<MainQueue>());
  surface.addTo(platform);
  renderer.draw(surface.frame(), 780, 1688);
  return platform;
}

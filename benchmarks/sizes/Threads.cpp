#include "adapters/threads/BackgroundThread.h"
#include "adapters/threads/MainQueue.h"

#include "App.h"

using namespace TalvoConsentSDK;

Platform chosenPlatform() {
  Platform platform;
  platform.mainActor = std::make_shared<MainQueue>();
  platform.background = std::make_shared<BackgroundThread>();
  return platform;
}

#include "adapters/posix/PosixPlatform.h"

#include "App.h"

using namespace TalvoConsentSDK;

Platform chosenPlatform() {
  return makePosixPlatform(std::make_shared<MainQueue>());
}

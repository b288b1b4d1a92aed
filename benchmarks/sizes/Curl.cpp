#include "adapters/curl/CurlURLSession.h"

#include "App.h"

using namespace TalvoConsentSDK;

Platform chosenPlatform() {
  Platform platform;
  platform.urlSession = std::make_shared<CurlURLSession>();
  return platform;
}

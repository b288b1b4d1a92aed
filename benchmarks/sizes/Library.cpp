#include "App.h"

TalvoConsentSDK::Platform chosenPlatform() {
  return {};
}

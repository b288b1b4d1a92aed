#include "adapters/qt/QtPlatform.h"

#include "App.h"

TalvoConsentSDK::Platform chosenPlatform() {
  return TalvoConsentSDK::makeQtPlatform("consent.sqlite");
}

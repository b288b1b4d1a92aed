#include "adapters/sqlite/SQLiteUserDefaults.h"

#include "App.h"

using namespace TalvoConsentSDK;

Platform chosenPlatform() {
  Platform platform;
  platform.userDefaults = std::make_shared<SQLiteUserDefaults>("consent.sqlite");
  return platform;
}

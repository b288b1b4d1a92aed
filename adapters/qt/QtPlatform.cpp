#include "adapters/qt/QtPlatform.h"

#include "adapters/curl/CurlURLSession.h"
#include "adapters/posix/CachedSession.h"
#include "adapters/qt/QtApplication.h"
#include "adapters/qt/QtImageLoader.h"
#include "adapters/qt/QtMainActor.h"
#include "adapters/sqlite/SQLiteUserDefaults.h"
#include "adapters/threads/BackgroundThread.h"

namespace TalvoConsentSDK {

Platform makeQtPlatform(const std::filesystem::path& store, const QtOptions& options) {
  Platform platform;
  platform.urlSession = cachedSession(std::make_shared<CurlURLSession>(), store, options.maxCacheBytes);
  platform.userDefaults = std::make_shared<SQLiteUserDefaults>(store);
  platform.mainActor = std::make_shared<QtMainActor>();
  platform.background = std::make_shared<BackgroundThread>();
  platform.callbacks = std::make_shared<BackgroundThread>();
  addQtWindows(platform, options);
  return platform;
}

void addQtWindows(Platform& platform, const QtOptions& options) {
  Platform filledIn = platform;
  filledIn.fillIn();
  platform.application = std::make_shared<QtApplication>(
      options, std::make_shared<QtImageLoader>(filledIn.urlSession, filledIn.mainActor, filledIn.background));
}

}  // namespace TalvoConsentSDK

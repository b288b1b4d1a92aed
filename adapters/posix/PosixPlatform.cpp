#include "adapters/posix/PosixPlatform.h"

#include <cstdlib>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>

#include <pwd.h>
#include <unistd.h>

#include "adapters/posix/CachedSession.h"
#include "adapters/sqlite/SQLiteUserDefaults.h"
#include "adapters/threads/BackgroundThread.h"

namespace TalvoConsentSDK {

namespace {

namespace fs = std::filesystem;

fs::path home() {
  if (const char* const folder = std::getenv("HOME"); folder && *folder) return folder;
  const passwd* const person = getpwuid(getuid());
  if (!person || !person->pw_dir || !*person->pw_dir) {
    throw PlatformError("TalvoConsentSDK", -3, "There is no home folder to keep consents in");
  }
  return person->pw_dir;
}

fs::path dataFolder() {
  const char* const folder = std::getenv("XDG_DATA_HOME");
  if (folder && fs::path(folder).is_absolute()) return folder;  // the XDG rules say to ignore relative paths
  return home() / ".local" / "share";
}

fs::path programName() {
#if defined(__linux__)
  std::error_code error;
  std::string program = fs::read_symlink("/proc/self/exe", error).filename().string();
  constexpr std::string_view replaced = " (deleted)";  // appended after an update replaced the program
  if (program.ends_with(replaced)) program.resize(program.size() - replaced.size());
  return program.empty() ? "TalvoConsentSDK" : program;
#else
  return getprogname();
#endif
}

}  // namespace

fs::path defaultStoreFile() {
  return dataFolder() / programName() / "consent.sqlite";
}

Platform makePosixPlatform(std::shared_ptr<MainQueue> mainQueue, const fs::path& store,
                           const CurlOptions& options, std::size_t maxCacheBytes) {
  Platform platform;
  platform.urlSession = cachedSession(std::make_shared<CurlURLSession>(options), store, maxCacheBytes);
  platform.userDefaults = std::make_shared<SQLiteUserDefaults>(store);
  platform.mainActor = std::move(mainQueue);
  platform.background = std::make_shared<BackgroundThread>();
  platform.callbacks = std::make_shared<BackgroundThread>();
  return platform;
}

}  // namespace TalvoConsentSDK

// A host with its own session, store and toolkit. It links neither libcurl nor SQLite nor Qt.
//
//   own-platform URL [STORE]

#include <TalvoConsentSDK/TalvoConsentSDK.h>
#include <adapters/threads/BackgroundThread.h>
#include <adapters/threads/MainQueue.h>

#include "ConsoleWindow.h"
#include "OwnSession.h"
#include "OwnStore.h"

using namespace TalvoConsentSDK;

int main(int count, char** arguments) {
  if (count < 2) return std::fprintf(stderr, "usage: own-platform URL [STORE]\n"), 2;

  const auto mainQueue = std::make_shared<MainQueue>();
  Platform platform;
  platform.urlSession = std::make_shared<own::OwnSession>();
  platform.userDefaults = std::make_shared<own::OwnStore>(count > 2 ? arguments[2] : "consent.store");
  platform.mainActor = mainQueue;
  platform.background = std::make_shared<BackgroundThread>();
  platform.application = std::make_shared<own::ConsoleApplication>();
  Platform::install(platform);

  const auto sdk = CookiesSDK::createInstance(arguments[1], "demo");
  std::optional<int> exitStatus;
  const auto finish = [&](const char* what, int status) {
    std::printf("%s\n", what);
    exitStatus = status;
  };
  sdk->showBanner([&] { finish("accepted", 0); }, [&] { finish("rejected", 0); },
                  [&] { finish("preferences saved", 0); },
                  [&](const Error& error) { finish(error.what(), 1); });
  while (!exitStatus) {
    mainQueue->wait(std::chrono::milliseconds(100));
    mainQueue->drain();
  }
  const auto now = sdk->getConsent();
  std::printf("stored: %s\n", now ? std::string(rawValue(now->status())).c_str() : "nothing");
  return *exitStatus;
}

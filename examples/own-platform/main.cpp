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
  const Subscription analytics = sdk->gate().on(
      ConsentCategory::statistics, [] { std::printf("analytics: started\n"); },
      [] { std::printf("analytics: stopped\n"); });

  std::optional<int> exitStatus;
  const auto finish = [&](const char* what, int status) {
    std::printf("%s\n", what);
    exitStatus = status;
  };
  sdk->showBanner(BannerHandlers{
      .onAcceptAll = [&] { finish("accepted", 0); },
      .onRejectAll = [&] { finish("rejected", 0); },
      .onSaved = [&] { finish("preferences saved", 0); },
      .onClosed = [&] { finish("closed without a decision", 0); },
      .onNotShown = [&] { finish("not shown", 1); },
      .onError = [&](const Error& error) { finish(error.what(), 1); },
  });
  while (!exitStatus) {
    mainQueue->wait(std::chrono::milliseconds(100));
    mainQueue->drain();
  }
  const auto now = sdk->getConsent();
  std::printf("stored: %s\n", now ? std::string(rawValue(now->status())).c_str() : "nothing");
  return *exitStatus;
}

#include "testing/fakes/MemoryPlatform.h"

namespace TalvoConsentSDK {

void MemoryPlatform::install() {
  Platform platform;
  platform.urlSession = session;
  platform.userDefaults = userDefaults;
  platform.mainActor = mainActor;
  platform.background = background;
  platform.callbacks = callbacks;
  platform.application = application;
  platform.printer = printer;
  Platform::install(std::move(platform));
}

void MemoryPlatform::settle() {
  while (mainActor->runAll() + background->runAll() + callbacks->runAll() + sessionThread->runAll() > 0) {
  }
}

}  // namespace TalvoConsentSDK

#pragma once

// A whole platform in memory, for tests of the library and of hosts.

#include <memory>

#include "TalvoConsentSDK/base/Export.h"
#include "TalvoConsentSDK/platform/Platform.h"

#include "testing/fakes/CapturingPrinter.h"
#include "testing/fakes/FailingSeams.h"
#include "testing/fakes/FakeApplication.h"
#include "testing/fakes/FakeURLSession.h"
#include "testing/fakes/InMemoryUserDefaults.h"
#include "testing/fakes/ManualExecutor.h"

namespace TalvoConsentSDK TALVO_EXPORT {

/// A fake for every interface of the platform except Localization, which returns the keys. Jobs and requests
/// wait until `settle` runs them; nothing waits for a clock.
class MemoryPlatform {
 public:
  MemoryPlatform() { application->scenes = {scene}; }

  /// Installs this platform. To replace a fake, assign the member before the call.
  void install();

  /// Runs the executors and the session until they are all idle.
  void settle();

  std::shared_ptr<ManualExecutor> mainActor = std::make_shared<ManualExecutor>();
  std::shared_ptr<ManualExecutor> background = std::make_shared<ManualExecutor>();
  std::shared_ptr<ManualExecutor> callbacks = background;  // as on a host with a single background thread
  std::shared_ptr<ManualExecutor> sessionThread = std::make_shared<ManualExecutor>();
  std::shared_ptr<FakeURLSession> session = std::make_shared<FakeURLSession>(sessionThread);
  std::shared_ptr<InMemoryUserDefaults> store = std::make_shared<InMemoryUserDefaults>();
  std::shared_ptr<FailingUserDefaults> userDefaults = std::make_shared<FailingUserDefaults>(store);
  std::shared_ptr<CapturingPrinter> printer = std::make_shared<CapturingPrinter>();
  std::shared_ptr<FakeScene> scene = std::make_shared<FakeScene>();
  std::shared_ptr<FakeApplication> application = std::make_shared<FakeApplication>();
};

}  // namespace TalvoConsentSDK

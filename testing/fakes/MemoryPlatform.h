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

/// Fakes of every seam. Nothing happens until `settle` runs what is due; nothing takes time.
class MemoryPlatform {
 public:
  MemoryPlatform() { application->scenes = {scene}; }

  /// Makes this the installed platform. Each fake can be replaced before.
  void install();

  /// Runs the executors and the session until all are idle.
  void settle();

  std::shared_ptr<ManualExecutor> mainActor = std::make_shared<ManualExecutor>();
  std::shared_ptr<ManualExecutor> background = std::make_shared<ManualExecutor>();
  std::shared_ptr<ManualExecutor> callbacks = background;  // as where a host has no more than one thread
  std::shared_ptr<ManualExecutor> sessionThread = std::make_shared<ManualExecutor>();
  std::shared_ptr<FakeURLSession> session = std::make_shared<FakeURLSession>(sessionThread);
  std::shared_ptr<InMemoryUserDefaults> store = std::make_shared<InMemoryUserDefaults>();
  std::shared_ptr<FailingUserDefaults> userDefaults = std::make_shared<FailingUserDefaults>(store);
  std::shared_ptr<CapturingPrinter> printer = std::make_shared<CapturingPrinter>();
  std::shared_ptr<FakeScene> scene = std::make_shared<FakeScene>();
  std::shared_ptr<FakeApplication> application = std::make_shared<FakeApplication>();
};

}  // namespace TalvoConsentSDK

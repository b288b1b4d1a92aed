#include "examples/own-platform/OwnStore.h"
#include "testing/DurabilityConformance.h"
#include "testing/UserDefaultsConformance.h"
#include "testing/fakes/FailingSeams.h"
#include "testing/fakes/InMemoryUserDefaults.h"

namespace TalvoConsentSDK {

using namespace platform;

namespace {

struct InMemory {
  std::shared_ptr<UserDefaults> shared = std::make_shared<InMemoryUserDefaults>();
  std::shared_ptr<UserDefaults> open() { return shared; }
};

struct FailingButHealthy : InMemory {
  std::shared_ptr<UserDefaults> open() { return std::make_shared<FailingUserDefaults>(shared); }
};

// The example's store, in a file that is removed after the test.
struct OwnFile {
  const std::string file = ::testing::TempDir() + "own-store-" + std::to_string(getpid());
  std::shared_ptr<UserDefaults> shared = std::make_shared<own::OwnStore>(file);
  std::shared_ptr<UserDefaults> open() { return shared; }
  ~OwnFile() {
    for (const char* end : {"", ".new"}) std::remove((file + end).c_str());
  }
};

struct ReopenedOwnFile : OwnFile {
  std::shared_ptr<UserDefaults> open() { return std::make_shared<own::OwnStore>(file); }
  static int kills() { return 50; }
};

using Stores = ::testing::Types<InMemory, FailingButHealthy, OwnFile>;
INSTANTIATE_TYPED_TEST_SUITE_P(Portable, UserDefaultsConformance, Stores);
INSTANTIATE_TYPED_TEST_SUITE_P(Portable, DurabilityConformance, ReopenedOwnFile);

}  // namespace
}  // namespace TalvoConsentSDK

#include "adapters/memory/FailingSeams.h"
#include "adapters/memory/InMemoryUserDefaults.h"

#include "testing/UserDefaultsConformance.h"

namespace TalvoConsentSDK {
namespace {

struct InMemory {
  std::shared_ptr<UserDefaults> shared = std::make_shared<InMemoryUserDefaults>();
  std::shared_ptr<UserDefaults> open() { return shared; }
};

struct FailingButHealthy : InMemory {
  std::shared_ptr<UserDefaults> open() { return std::make_shared<FailingUserDefaults>(shared); }
};

INSTANTIATE_TYPED_TEST_SUITE_P(InMemory, UserDefaultsConformance, InMemory);
INSTANTIATE_TYPED_TEST_SUITE_P(Failing, UserDefaultsConformance, FailingButHealthy);

}  // namespace
}  // namespace TalvoConsentSDK

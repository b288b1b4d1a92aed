// Measures how long a caller waits for createInstance, and for the part that it cannot avoid: opening the
// store and reading two keys. The client is a singleton, so a process measures once; run it many times and
// take the medians. Prints microseconds as one JSON object.

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <memory>
#include <string>

#include "TalvoConsentSDK/TalvoConsentSDK.h"
#include "TalvoConsentSDK/storage/ConsentStorage.h"

#include "adapters/posix/PosixPlatform.h"
#include "adapters/sqlite/SQLiteUserDefaults.h"

#include "benchmarks/BareStore.h"

using namespace TalvoConsentBenchmarks;
using namespace TalvoConsentSDK;
using namespace TalvoConsentSDK::platform;

namespace {

template <class Operation>
double microseconds(Operation operation) {
  const auto start = std::chrono::steady_clock::now();
  operation();
  return std::chrono::duration<double, std::micro>(std::chrono::steady_clock::now() - start).count();
}

const std::string consentKey = "com.talvo.consent.basicConsent.site";
const std::string userKey = "com.talvo.consent.userId.site";

void openAndRead(const std::string& file) {
  BareStore store(file);
  if (store.read(consentKey).empty() || store.read(userKey).empty()) std::abort();
}

}  // namespace

// The first argument sets the order, because the second measurement finds the disk already active.
int main(int argc, char* argv[]) {
  const bool oursFirst = argc > 1 && std::string(argv[1]) == "ours-first";
  const std::string ours = scratchFolder() + "/ours.sqlite";
  const std::string bare = scratchFolder() + "/bare.sqlite";
  {
    ConsentStorage storage("site", std::make_shared<SQLiteUserDefaults>(ours));
    storage.saveConsent(BasicConsent::acceptAll());
    storage.saveUserId("user");
    BareStore store(bare);
    store.save(consentKey, R"({"preferences":"all","statistics":"all","marketing":"all"})");
    store.save(userKey, "user");
  }
  Platform::install(makePosixPlatform(std::make_shared<MainQueue>(), ours));
  double creation = 0;
  double reading = 0;
  const auto create = [&] {
    creation = microseconds([] { CookiesSDK::createInstance("https://service.example", "site"); });
  };
  const auto read = [&] { reading = microseconds([&] { openAndRead(bare); }); };
  oursFirst ? create() : read();
  oursFirst ? read() : create();
  std::printf("{\"createInstance\": %.1f, \"openAndRead\": %.1f}\n", creation, reading);
}

// Measures storing a consent durably and reading it back.

#include <QSettings>
#include <memory>
#include <string>

#include <benchmark/benchmark.h>

#include "TalvoConsentSDK/TalvoConsentSDK.h"
#include "TalvoConsentSDK/models/JSONCoding.h"
#include "TalvoConsentSDK/storage/ConsentStorage.h"

#include "adapters/posix/PosixPlatform.h"
#include "adapters/sqlite/SQLiteUserDefaults.h"

#include "benchmarks/BareStore.h"

namespace TalvoConsentBenchmarks {
namespace {

using namespace TalvoConsentSDK;
using namespace TalvoConsentSDK::platform;
using benchmark::DoNotOptimize;
using benchmark::State;

// Alternates between two consents of the same size, so that every save changes the stored value. Saving an
// unchanged value costs next to nothing.
const BasicConsent& consent(int turn) {
  static const std::vector<std::string> vendors(20, "A vendor of usual length");
  static const BasicConsent consents[] = {
      {ConsentValue::all(), ConsentValue::none(), ConsentValue::partial(vendors), "record-1", true},
      {ConsentValue::all(), ConsentValue::none(), ConsentValue::partial(vendors), "record-2", true},
  };
  return consents[turn % 2];
}

const std::string& text(int turn) {
  static const std::string texts[] = {JSONEncoder().encode(consent(0)).value(),
                                      JSONEncoder().encode(consent(1)).value()};
  return texts[turn % 2];
}

void save(State& state) {
  ConsentStorage storage("site", std::make_shared<SQLiteUserDefaults>(scratchFolder() + "/ours.sqlite"));
  int turn = 0;
  for (auto _ : state) storage.saveConsent(consent(turn++));
  if (!storage.loadConsent()) state.SkipWithError("nothing was stored");
}

void saveBare(State& state) {
  BareStore store(scratchFolder() + "/bare.sqlite");
  int turn = 0;
  for (auto _ : state) store.save("com.talvo.consent.basicConsent.site", text(turn++));
}

void saveWithSettings(State& state) {
  QSettings settings(QString::fromStdString(scratchFolder() + "/settings.ini"), QSettings::IniFormat);
  int turn = 0;
  for (auto _ : state) {
    settings.setValue(QStringLiteral("consent"), QByteArray::fromStdString(text(turn++)));
    settings.sync();
  }
}

void getConsent(State& state) {
  const auto client = CookiesSDK::createInstance("https://service.example", "site");
  if (!client->getConsent()) state.SkipWithError("there is no consent");
  for (auto _ : state) DoNotOptimize(client->getConsent());
}

void readBare(State& state) {
  BareStore store(scratchFolder() + "/bare.sqlite");
  store.save("com.talvo.consent.basicConsent.site", text(0));
  for (auto _ : state) DoNotOptimize(store.read("com.talvo.consent.basicConsent.site"));
}

BENCHMARK(save)->Name("save/ours")->UseRealTime();
BENCHMARK(saveBare)->Name("save/bare-sqlite")->UseRealTime();
BENCHMARK(saveWithSettings)->Name("save/qsettings")->UseRealTime();
BENCHMARK(getConsent)->Name("getConsent/ours");
BENCHMARK(readBare)->Name("getConsent/bare-sqlite-read");

}  // namespace
}  // namespace TalvoConsentBenchmarks

int main(int argc, char* argv[]) {
  using namespace TalvoConsentBenchmarks;
  const std::string file = scratchFolder() + "/client.sqlite";
  ConsentStorage("site", std::make_shared<SQLiteUserDefaults>(file)).saveConsent(consent(0));
  Platform::install(makePosixPlatform(std::make_shared<MainQueue>(), file));
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}

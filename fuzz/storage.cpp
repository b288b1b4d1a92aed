// Stores any bytes under a site's keys, reads them and replaces them. Parts: the bytes of the consent, the
// original consent, the user identifier, and another consent.

#include "TalvoConsentSDK/storage/ConsentStorage.h"

#include "fuzz/Fuzzing.h"
#include "testing/fakes/MemoryPlatform.h"

using namespace TalvoConsentSDK;
using namespace TalvoConsentSDK::platform;
using namespace TalvoConsentSDK::fuzzing;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Input input(data, size);
  MemoryPlatform platform;
  platform.install();
  const Data stored(input.text());
  const Data aside(input.text());
  const std::string user = input.text();
  const auto other = input.record<BasicConsent>(BasicConsent::acceptAll());
  platform.store->set("com.talvo.consent.basicConsent.s", stored).value();
  platform.store->set("com.talvo.consent.originalConsent.s", aside).value();
  platform.store->set("com.talvo.consent.userId.s", user).value();
  const auto before = platform.store->values();

  ConsentStorage storage("s", platform.store);
  const auto consent = storage.loadConsent();
  const auto original = storage.loadOriginalConsent();
  require(storage.loadUserId() == user, "the user is the stored one");
  require(platform.store->values() == before, "reading changes nothing");
  require(platform.printer->take().size() == static_cast<std::size_t>(!consent + !original),
          "each unreadable value is reported once");
  require(storage.load().consent.data == stored, "the loaded bytes are the stored bytes");
  require(platform.store->values() == before, "loading changes nothing");

  storage.saveConsentIfStill(Data(stored.bytes + "x"), other);
  require(platform.store->values() == before, "a value that another process wrote stays");
  if (consent) {
    storage.saveConsent(*consent);
    require(recoded(*storage.loadConsent()) == recoded(*consent), "a loaded consent can be saved");
  }
  storage.saveConsentIfStill(storage.load().consent.data, other);
  storage.saveOriginalConsent(other);
  require(recoded(*storage.loadConsent()) == recoded(other), "a saved consent can be loaded");
  require(recoded(*storage.loadOriginalConsent()) == recoded(other), "a saved original can be loaded");

  BasicConsent unwritable = other;
  unwritable.id = "\xFF";
  storage.saveConsent(unwritable);
  require(recoded(*storage.loadConsent()) == recoded(other), "a failed save changes nothing");
  storage.saveUserId(stored.bytes);
  require(storage.loadUserId() == stored.bytes, "a user identifier may be any text");
  storage.removeUserId();
  storage.removeOriginalConsent();
  require(!storage.loadUserId() && !storage.loadOriginalConsent(), "removed values are gone");
  return 0;
}

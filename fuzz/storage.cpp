// Whatever stands under a site's keys. Parts: the consent's bytes, the original consent's, the user
// identifier's, another consent's.

#include "TalvoConsentSDK/storage/ConsentStorage.h"

#include "fuzz/Fuzzing.h"
#include "testing/fakes/MemoryPlatform.h"

using namespace TalvoConsentSDK;
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
  require(storage.loadUserId() == user, "the user is who was stored");
  require(platform.store->values() == before, "reading changes nothing");
  require(platform.printer->take().size() == static_cast<std::size_t>(!consent + !original),
          "what cannot be read is told once");
  require(storage.load().consent.data == stored, "the bytes are those stored");
  require(platform.store->values() == before, "and so they stay");

  storage.saveConsentIfStill(Data(stored.bytes + "x"), other);
  require(platform.store->values() == before, "a value that somebody else wrote stays");
  if (consent) {
    storage.saveConsent(*consent);
    require(recoded(*storage.loadConsent()) == recoded(*consent), "what was read can be stored");
  }
  storage.saveConsentIfStill(storage.load().consent.data, other);
  storage.saveOriginalConsent(other);
  require(recoded(*storage.loadConsent()) == recoded(other), "a stored consent reads back");
  require(recoded(*storage.loadOriginalConsent()) == recoded(other), "and so does one set aside");

  BasicConsent unwritable = other;
  unwritable.id = "\xFF";
  storage.saveConsent(unwritable);
  require(recoded(*storage.loadConsent()) == recoded(other), "what cannot be written changes nothing");
  storage.saveUserId(stored.bytes);
  require(storage.loadUserId() == stored.bytes, "a user identifier may be any text");
  storage.removeUserId();
  storage.removeOriginalConsent();
  require(!storage.loadUserId() && !storage.loadOriginalConsent(), "removed is removed");
  return 0;
}

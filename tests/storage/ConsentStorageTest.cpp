#include "TalvoConsentSDK/storage/ConsentStorage.h"

#include "tests/support/Testing.h"

namespace TalvoConsentSDK {
namespace {

constexpr const char* consentKey = "com.talvo.consent.basicConsent.site 1";
constexpr const char* originalKey = "com.talvo.consent.originalConsent.site 1";
constexpr const char* userKey = "com.talvo.consent.userId.site 1";

class ConsentStorageTest : public ::testing::Test {
 protected:
  ConsentStorageTest() { platform.install(); }

  MemoryPlatform platform;
  ConsentStorage storage{"site 1", platform.userDefaults};
  using Value = InMemoryUserDefaults::Value;
};

TEST_F(ConsentStorageTest, KeepsThreeValuesUnderTheirKeys) {
  EXPECT_FALSE(storage.loadConsent() || storage.loadOriginalConsent() || storage.loadUserId());
  const std::string json = R"({"preferences":true,"marketing":["a"],"id":"c","optedIn":true})";
  storage.saveConsent(parsed<BasicConsent>(json));
  storage.saveOriginalConsent(BasicConsent());
  storage.saveUserId(" \"u\" ");
  EXPECT_EQ(platform.store->synchronizations(), 3);
  EXPECT_THAT(platform.store->values(),
              ElementsAre(Pair(consentKey, Value(Data(json))), Pair(originalKey, Value(Data("{}"))),
                          Pair(userKey, Value(" \"u\" "s))));
  ConsentStorage again("site 1", platform.userDefaults);
  EXPECT_EQ(written(*again.loadConsent()) + written(*again.loadOriginalConsent()) + *again.loadUserId(),
            json + "{} \"u\" ");
  EXPECT_FALSE(ConsentStorage("site 2", platform.userDefaults).loadConsent());
  ConsentStorage("", platform.userDefaults).saveUserId("x");
  EXPECT_EQ(platform.store->string("com.talvo.consent.userId.").value(), "x");

  storage.removeOriginalConsent();
  storage.removeUserId();
  EXPECT_EQ(platform.store->synchronizations(), 6);
  EXPECT_FALSE(storage.loadOriginalConsent() || storage.loadUserId());
  EXPECT_TRUE(storage.loadConsent());
  EXPECT_THAT(platform.printer->take(), IsEmpty());
}

TEST_F(ConsentStorageTest, TellsOfDamagedValuesAndLeavesThem) {
  const std::pair<std::string, std::string> values[] = {
      {R"({"id":7})", "Type mismatch at id: expected a string, found an integer"},
      {R"({"marketing":1})", "Data corrupted at marketing: ConsentValue must be either Bool or [String]"},
      {"[]", "Type mismatch: expected an object, found an array"},
  };
  for (const auto& [value, reason] : values) {
    for (const char* key : {consentKey, originalKey}) platform.store->set(key, Data(value)).value();
    EXPECT_FALSE(storage.loadConsent() || storage.loadConsent() || storage.loadOriginalConsent());
    const std::string line = "⚠️ Failed to load consent from UserDefaults: " + reason;
    EXPECT_THAT(platform.printer->take(),
                ElementsAre(line, line, "⚠️ Failed to load original consent from UserDefaults: " + reason));
    EXPECT_EQ(platform.store->data(consentKey).value(), Data(value));
  }
  storage.saveConsent(BasicConsent::rejectAll());
  EXPECT_TRUE(storage.loadConsent());
  platform.store->set(consentKey, "{}"s).value();
  platform.store->set(userKey, Data("u")).value();
  EXPECT_FALSE(storage.loadConsent() || storage.loadUserId()) << "of another type is as missing";
  EXPECT_THAT(platform.printer->take(), IsEmpty());
}

TEST_F(ConsentStorageTest, TellsOfWhatCannotBeReadOrWritten) {
  storage.saveConsent(BasicConsent::rejectAll());
  storage.saveUserId("u");
  const auto before = platform.store->values();
  const int synchronizations = platform.store->synchronizations();
  BasicConsent unwritable;
  unwritable.id = "\xFF";
  storage.saveConsent(unwritable);
  storage.saveOriginalConsent(unwritable);
  const std::string reason = " UserDefaults: Invalid value: The text is not valid UTF-8";
  EXPECT_THAT(platform.printer->take(), ElementsAre("⚠️ Failed to save consent to" + reason,
                                                    "⚠️ Failed to save original consent to" + reason));

  platform.userDefaults->failsToRead = platform.userDefaults->failsToWrite = true;
  const std::pair<std::function<void()>, std::string> operations[] = {
      {[&] { EXPECT_FALSE(storage.loadConsent()); }, "load consent from"},
      {[&] { EXPECT_FALSE(storage.loadOriginalConsent()); }, "load original consent from"},
      {[&] { EXPECT_FALSE(storage.loadUserId()); }, "load user identifier from"},
      {[&] { storage.saveConsent(BasicConsent::acceptAll()); }, "save consent to"},
      {[&] { storage.saveOriginalConsent(BasicConsent::acceptAll()); }, "save original consent to"},
      {[&] { storage.saveConsentIfStill(std::nullopt, BasicConsent::acceptAll()); }, "save consent to"},
      {[&] { storage.saveUserId("v"); }, "save user identifier to"},
      {[&] { storage.removeUserId(); }, "remove user identifier from"},
      {[&] { storage.removeOriginalConsent(); }, "remove original consent from"},
  };
  for (const bool throws : {false, true}) {
    platform.userDefaults->throws = throws;
    for (const auto& [operation, what] : operations) {
      operation();
      EXPECT_THAT(platform.printer->take(),
                  ElementsAre("⚠️ Failed to " + what + " UserDefaults: The store is out of order"));
    }
    EXPECT_TRUE(storage.load().isUnknown());
    platform.printer->take();
  }
  EXPECT_EQ(platform.store->values(), before);
  EXPECT_EQ(platform.store->synchronizations(), synchronizations);
}

TEST_F(ConsentStorageTest, CommitsInAnOrderThatLosesNothingWhenInterrupted) {
  Texts order;
  platform.userDefaults->before = [&](std::string_view key) {
    order.emplace_back(key.substr(key.find_last_of('.', key.size() - 8) + 1));
  };
  const auto saved = [&](const KeptConsent& consent, const KeptConsent& original, Loaded<std::string> user) {
    const KeptValues before = storage.load();
    KeptValues after{consent, original, std::move(user)};
    order.clear();
    EXPECT_TRUE(storage.save(before, after));
    for (std::string& key : order) key.resize(key.find('.'));
    return joined(std::exchange(order, {}), " ");
  };
  const BasicConsent yes = BasicConsent::acceptAll(), no = BasicConsent::rejectAll();
  EXPECT_EQ(saved(yes, {}, {}), "basicConsent");
  EXPECT_EQ(saved(no, yes, "u"s), "originalConsent basicConsent userId");
  EXPECT_EQ(saved(no, yes, "u"s), "") << "nothing has changed";
  EXPECT_EQ(saved(yes, {}, {}), "basicConsent userId originalConsent");
  storage.saveOriginalConsent(yes);
  EXPECT_EQ(saved(no, {}, {}), "originalConsent basicConsent originalConsent")
      << "the older one could come back";
}

TEST_F(ConsentStorageTest, SavesOverWhatItStillExpectsOnly) {
  storage.saveConsentIfStill(std::nullopt, BasicConsent::rejectAll());
  const auto before = storage.load().consent.data;
  EXPECT_EQ(before, Data(written(BasicConsent::rejectAll())));
  storage.saveConsent(BasicConsent());
  storage.saveConsentIfStill(before, BasicConsent::acceptAll());
  storage.saveConsentIfStill(std::nullopt, BasicConsent::acceptAll());
  EXPECT_EQ(written(*storage.loadConsent()), "{}");
  EXPECT_EQ(platform.store->synchronizations(), 2);
}

}  // namespace
}  // namespace TalvoConsentSDK

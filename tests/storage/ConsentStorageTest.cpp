#include "TalvoConsentSDK/storage/ConsentStorage.h"

#include "tests/support/Testing.h"

namespace TalvoConsentSDK {

namespace {

std::string textOf(const std::optional<BasicConsent>& consent) {
  return consent ? written(*consent) : "none";
}

BasicConsent consentOf(const std::string& json) {
  if (json != "unwritable") return parsed<BasicConsent>(json);
  BasicConsent consent;
  consent.id = "\xFF";
  return consent;
}

KeptConsent keptOf(const std::string& json) {
  return json == "none" ? KeptConsent() : KeptConsent{consentOf(json), {}};
}

// Saves a consent, an original and a user in one commit. Returns the order in which their keys are written.
std::string orderOf(ConsentStorage& storage, const Texts& values, FailingUserDefaults& store) {
  const KeptValues before = storage.load();
  KeptValues after{keptOf(values[0]), keptOf(values[1]), {}};
  if (values[2] != "none") after.user.value = values[2];
  Texts order;
  store.before = [&](std::string_view key) { order.push_back(split(std::string(key), '.').at(3)); };
  EXPECT_EQ(storage.save(before, after), ConsentStorage::Saved::durably);
  store.before = [](auto) {};
  return joined(order, " ");
}

// Runs one operation of the table and returns its result.
std::string outcome(ConsentStorage& storage, const std::string& operation, const std::string& value) {
  if (operation == "loadConsent") return textOf(storage.loadConsent());
  if (operation == "loadOriginalConsent") return textOf(storage.loadOriginalConsent());
  if (operation == "loadUserId") return storage.loadUserId().value_or("none");
  if (operation == "load") return storage.load().isUnknown() ? "unknown" : "known";
  if (operation == "saveConsent") return storage.saveConsent(consentOf(value)) ? "saved" : "not saved";
  if (operation == "saveConsentIfNone")
    return storage.saveConsentIfStill({}, consentOf(value)).value_or(Data("not saved")).bytes;
  if (operation == "saveOriginalConsent") storage.saveOriginalConsent(consentOf(value));
  if (operation == "removeOriginalConsent") storage.removeOriginalConsent();
  if (operation == "saveUserId") storage.saveUserId(value);
  if (operation == "removeUserId") storage.removeUserId();
  return "";
}

TEST(ConsentStorageTest, KeepsEachValueWhateverFails) {
  for (const auto& [how, before, operation, value, returned, after, reported] : tableOf<7>("storage.txt")) {
    MemoryPlatform platform;
    platform.install();
    for (const std::string& each : split(before, ';')) {
      const std::string key = words(each)[0], content = words(each)[1];
      (content[0] == '{' ? platform.store->set(key, Data(content)) : platform.store->set(key, content))
          .value();
    }
    platform.userDefaults->failsToRead = platform.userDefaults->failsToWrite = how != "in order";
    platform.userDefaults->throws = how == "throws";
    ConsentStorage storage("s", platform.userDefaults);
    const std::string actual = operation == "save" ? orderOf(storage, words(value), *platform.userDefaults)
                                                   : outcome(storage, operation, value);
    EXPECT_EQ(actual, returned) << operation << " " << value;
    Texts left;
    for (const auto& [key, content] : platform.store->values()) {
      const auto* const data = std::get_if<Data>(&content);
      left.push_back(key + " " + (data ? data->bytes : std::get<std::string>(content)));
    }
    EXPECT_EQ(joined(left), after) << operation << " " << value;
    EXPECT_EQ(platform.store->synchronizations(), after == before ? 0 : 1) << operation << " " << value;
    EXPECT_EQ(joined(platform.printer->take()), reported) << operation << " " << value;
  }
}

}  // namespace
}  // namespace TalvoConsentSDK

// The SQLite store with damaged files and on faulty disks.

#include <chrono>

#include "adapters/sqlite/SQLiteUserDefaults.h"

#include "tests/adapters/FileFaults.h"

namespace TalvoConsentSDK {
namespace {

const std::string key = "com.talvo.consent.basicConsent.s";
const std::string old = R"({"marketing":true,"id":"old"})", inJournal = R"({"marketing":true,"id":"new"})";
const Data filler(std::string(900, 'x'));
const Texts others = words("a1 a2 a3 a4 a5 a6 z1 z2 z3 z4 z5 z6");

template <class T>
std::string described(const Result<T>& outcome) {
  if (outcome) return "saved";
  const auto* error = outcome.error().template as<PlatformError>();
  return "error " + std::to_string(error->code() & 0xFF) + " " + error->what();
}

// The table is tests/golden/store/faults.txt, whose header explains the columns.
class StoreFaultsTest : public SQLiteUserDefaultsTest {
 protected:
  StoreFaultsTest() {
    {
      SQLiteUserDefaults store(file);
      store.set(key, Data(old)).value();
      for (const std::string& each : others) store.set(each, filler).value();
    }
    faults.sound = contentOf(file);
    SQLiteUserDefaults store(file);
    store.set(key, Data(inJournal)).value();
    for (const char* each : {"a3", "z3"}) store.set(each, filler).value();
    faults.journal = contentOf(faults.journalFile);
  }

  void begin(const std::string& fault) {
    faults.begin(fault);
    std::error_code hidden;
    damaged = fs::is_regular_file(file, hidden) ? contentOf(file) : "";
    damagedJournal = contentOf(faults.journalFile);
  }

  // Returns what the store reads. Checks that no value is lost: each is in the store or in a file set aside.
  std::string reading(SQLiteUserDefaults& store, bool isEmpty) {
    const auto value = store.data(key);
    if (!value) return described(value);
    for (const std::string& each : others) {
      const auto there = store.data(each);
      EXPECT_TRUE(isEmpty || !there || *there == filler || fs::exists(aside)) << each;
    }
    if (fs::exists(aside)) {
      EXPECT_TRUE(contentOf(aside) == damaged && contentOf(aside + "-wal") == damagedJournal);
      EXPECT_THAT(printer->take(),
                  ElementsAre("⚠️ The consent store was damaged and has been set aside as: " + aside));
      return "aside";
    }
    return *value ? (*value)->bytes : "none";
  }

  void holdsInAStore(const std::string& fault, const std::string& read, const std::string& save) {
    begin(fault);
    SQLiteUserDefaults store(file, std::chrono::milliseconds(20));
    const std::string seen = reading(store, read == "none");
    const bool isKept = seen == old || seen == inJournal || seen == "aside";
    EXPECT_TRUE(read == "kept" ? isKept : seen.starts_with(read == "old" ? old : read)) << seen;

    const Data large(std::string(300'000, 'n'));
    EXPECT_THAT(described(store.set(key, large)), StartsWith(save));
    EXPECT_THAT(described(store.replace(key, Data(old), large)), StartsWith(save));
    EXPECT_THAT(described(store.commit({{"a1", Data("changed")}, {key, large}})), StartsWith(save));
    EXPECT_TRUE(fault.starts_with("full") || described(store.remove("nothing")).starts_with(save));
    EXPECT_TRUE(save == "saved" || damaged.empty() || contentOf(file) == damaged);
    faults.end();
    EXPECT_TRUE(store.data(key).value() == (save == "saved" ? large : Data(old)));
    EXPECT_TRUE(store.data("a1").value() == (save == "saved" ? Data("changed") : filler));
    EXPECT_TRUE(store.replace(key, store.data(key).value(), Data("last")).value());
    EXPECT_EQ(SQLiteUserDefaults(file).data(key).value(), Data("last"));
    EXPECT_THAT(printer->take(), IsEmpty());
  }

  void holdsInAClient(const std::string& fault) {
    begin(fault);
    MemoryPlatform platform;
    platform.userDefaults = std::make_shared<FailingUserDefaults>(
        std::make_shared<SQLiteUserDefaults>(file, std::chrono::milliseconds(20)));
    const std::string service = "https://service.example/public/";
    platform.session->answer("GET", service + "cookies/s/configurations", 200, "{}");
    for (const char* method : {"POST", "PUT"})
      platform.session->answer(method, service + "cookie-consent/s", 200, R"({"id":"c"})");
    platform.install();
    const auto client = CookiesSDK::createInstance("https://service.example/", "s");
    int sent = 0;
    for (const char* consent : {R"({"marketing":true})", R"({"marketing":false})"}) {
      platform.settle();
      client->submitConsent(parsed<BasicConsent>(consent),
                            [&](const auto& reply) { sent += reply.has_value(); });
      platform.settle();
      faults.end();
    }
    EXPECT_EQ(sent, 2);
    EXPECT_EQ(SQLiteUserDefaults(file).data(key).value(), Data(R"({"marketing":false})"));
  }

  FileFaults faults{file};
  const std::string aside = file.string() + ".damaged-1";
  std::string damaged, damagedJournal;
};

TEST_F(StoreFaultsTest, KeepTheOldValueOrSetTheFileAside) {
  const auto holds = [&](const std::string& fault, const std::string& read, const std::string& save) {
    SCOPED_TRACE(fault);
    EXPECT_EQ(inAChild([&] { holdsInAStore(fault, read, save); }), 0);
    EXPECT_EQ(inAChild([&] { holdsInAClient(fault); }), 0);
  };
  for (const auto& [name, fault, read, save] : tableOf<4>("store/faults.txt")) {
    SCOPED_TRACE(name);
    for (const std::string& each : faults.all(fault)) holds(each, read, save);
  }
}

}  // namespace
}  // namespace TalvoConsentSDK

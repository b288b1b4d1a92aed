// The store on SQLite: several processes, processes that are killed, damage and bad disks.

#include <chrono>
#include <csignal>
#include <filesystem>
#include <thread>

#include <fcntl.h>
#include <sqlite3.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <unistd.h>

#include "TalvoConsentSDK/TalvoConsentSDK.h"
#include "TalvoConsentSDK/platform/StoreDeadline.h"

#include "adapters/sqlite/SQLiteUserDefaults.h"

#include "testing/ChildProcess.h"
#include "testing/DurabilityConformance.h"
#include "testing/SharingConformance.h"
#include "testing/UserDefaultsConformance.h"
#include "tests/support/Repetitions.h"
#include "tests/support/Testing.h"

namespace TalvoConsentSDK {
namespace {

namespace fs = std::filesystem;

class TemporaryFolder {
 public:
  TemporaryFolder() : path_(::mkdtemp(pattern_.data())) {}
  ~TemporaryFolder() { fs::remove_all(path_); }
  TemporaryFolder(const TemporaryFolder&) = delete;

  fs::path file() const { return path_ / "app" / "store.db"; }

 private:
  std::string pattern_ = (fs::temp_directory_path() / "store-XXXXXX").string();
  fs::path path_;
};

void write(const fs::path& file, const std::string& content) {
  fs::create_directories(file.parent_path());
  std::ofstream(file, std::ios::binary) << content;
}

// As patient as a busy machine needs where many threads and processes take turns.
std::shared_ptr<UserDefaults> openPatiently(const fs::path& file) {
  return std::make_shared<SQLiteUserDefaults>(file, std::chrono::minutes(1));
}

struct InSQLite {
  TemporaryFolder folder;
  std::shared_ptr<UserDefaults> open() { return openPatiently(folder.file()); }
  static int kills() { return repetitions("TALVO_TEST_KILLS", 50); }
  static int saves() { return repetitions("TALVO_TEST_SAVES", 10); }
  ~InSQLite() {
    for (const auto& left : fs::directory_iterator(folder.file().parent_path()))
      EXPECT_EQ(left.path(), folder.file());
  }
};
INSTANTIATE_TYPED_TEST_SUITE_P(SQLite, UserDefaultsConformance, InSQLite);
INSTANTIATE_TYPED_TEST_SUITE_P(SQLite, DurabilityConformance, InSQLite);

// In place of a damaged file, which all processes find.
struct InDamagedSQLite {
  TemporaryFolder folder;
  InDamagedSQLite() { write(folder.file(), std::string(20'000, 'x')); }
  std::shared_ptr<UserDefaults> open() { return openPatiently(folder.file()); }
  static int saves() { return InSQLite::saves(); }
  ~InDamagedSQLite() {
    EXPECT_EQ(contentOf(folder.file().string() + ".damaged-1").size(), 20'000u);
    EXPECT_FALSE(fs::exists(folder.file().string() + ".damaged-2"));
  }
};
using Shared = ::testing::Types<InSQLite, InDamagedSQLite>;
INSTANTIATE_TYPED_TEST_SUITE_P(SQLite, SharingConformance, Shared);

// Another program at work on the same file.
class OtherConnection {
 public:
  explicit OtherConnection(const fs::path& file) { sqlite3_open(file.c_str(), &connection_); }
  ~OtherConnection() { sqlite3_close(connection_); }
  OtherConnection(const OtherConnection&) = delete;

  void execute(const char* sql) {
    ASSERT_EQ(sqlite3_exec(connection_, sql, nullptr, nullptr, nullptr), SQLITE_OK)
        << sqlite3_errmsg(connection_);
  }

 private:
  sqlite3* connection_ = nullptr;
};

int inAChild(const std::function<void()>& work) {
  return ChildProcess([&](const ProcessChannel&) { work(); }).wait();
}

class SQLiteUserDefaultsTest : public ::testing::Test {
 protected:
  SQLiteUserDefaultsTest() {
    Platform platform;
    platform.printer = printer;
    Platform::install(platform);
  }

  TemporaryFolder folder;
  fs::path file = folder.file();
  std::shared_ptr<CapturingPrinter> printer = std::make_shared<CapturingPrinter>();
};

TEST_F(SQLiteUserDefaultsTest, KeepsValuesAndKeepsThemPrivate) {
  {
    SQLiteUserDefaults store(file);
    EXPECT_FALSE(fs::exists(file)) << "opened before it is used";
    store.set("k", Data("v")).value();
    for (const char* suffix : {"", "-wal", "-shm"}) {
      EXPECT_EQ(fs::status(file.string() + suffix).permissions(), fs::perms(0600)) << suffix;
    }
    EXPECT_EQ(fs::status(file.parent_path()).permissions(), fs::perms(0700));
  }
  for (const fs::path& noFile : {fs::path(), file / "", file / "."})
    EXPECT_FALSE(SQLiteUserDefaults(noFile).set("k", Data("another"))) << noFile;
  EXPECT_EQ(SQLiteUserDefaults(file).data("k").value(), Data("v"));
}

// A caller with a deadline waits no longer than that, also for a thread that goes on waiting.
TEST_F(SQLiteUserDefaultsTest, WaitsForAnotherWriterUntilTheDeadline) {
  constexpr auto patience = std::chrono::milliseconds::max();
  SQLiteUserDefaults store(file, patience);
  store.set("k", Data("old")).value();
  const fs::path plainFile = file.parent_path() / "plain.db";  // has no write-ahead log yet
  OtherConnection other(file), plain(plainFile), alone(file.parent_path() / "alone.db");
  other.execute("BEGIN IMMEDIATE");
  plain.execute("CREATE TABLE t(x); BEGIN IMMEDIATE");
  alone.execute("BEGIN EXCLUSIVE");
  const fs::path stopped = file.parent_path() / "stopped.db";  // whose writer stands still in its work
  OtherConnection halfway(stopped);
  halfway.execute("PRAGMA journal_mode = WAL; CREATE TABLE t(x); BEGIN IMMEDIATE");
  std::fstream(stopped.string() + "-shm", std::ios::in | std::ios::out) << std::string(96, '\0');
  std::thread writer([&] {
    const StoreDeadline none(patience);
    EXPECT_TRUE(store.set("k", Data("new")));
  });
  const auto start = std::chrono::steady_clock::now();
  {
    const StoreDeadline deadline(std::chrono::milliseconds(50));
    EXPECT_THAT(store.remove("k").error().what(), HasSubstr(file.string()));
    EXPECT_FALSE(store.commit({}));
    for (const char* each : {"store.db", "plain.db", "alone.db", "stopped.db"})
      EXPECT_FALSE(SQLiteUserDefaults(file.parent_path() / each, patience).set("k", Data("mine"))) << each;
  }
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(10));
  other.execute("COMMIT");
  writer.join();
  EXPECT_EQ(store.data("k").value(), Data("new"));
}

// One process holds the store open, others open it afterwards; none of them was forked from one that has it.
TEST_F(SQLiteUserDefaultsTest, KnowsWhichFileItHas) {
  const fs::path root = file.parent_path().parent_path();
  const auto shell = [&](const std::string& command) {
    EXPECT_EQ(std::system(("cd " + root.string() + " && { " + command + "; }").c_str()), 0);
  };
  const auto hold = [&](const ProcessChannel& parent) {
    const auto letParentAct = [&] { EXPECT_TRUE(parent.send(true) && parent.receive<bool>()); };
    SQLiteUserDefaults store(file);
    store.commit({{"choice", Data("ours")}, {"long", std::string(20'000, 'x')}}).value();
    letParentAct();
    letParentAct();
    EXPECT_TRUE(store.replace("next", std::nullopt, Data("new")).value());
    shell("! find app/ -type f ! -perm 600 | grep .");
    for (int reader = 0; reader < 2; ++reader) {
      letParentAct();
      EXPECT_EQ(store.data("seen").value(), Data("by another"));
    }
    EXPECT_THAT(printer->take(), IsEmpty());
  };
  const auto open = [&](const std::string& choice, bool hasNext) {
    SQLiteUserDefaults other(file);
    EXPECT_EQ(other.data("choice").value(), Data(choice));
    EXPECT_EQ(other.data("next").value().has_value(), hasNext);
    EXPECT_EQ(other.string("long").value().has_value(), choice == "ours");
    EXPECT_TRUE(!hasNext || other.set("seen", Data("by another")));
    EXPECT_THAT(printer->take(), IsEmpty());
  };
  for (const auto& [name, before, during, choice] : tableOf<4>("store/files.txt")) {
    SCOPED_TRACE(name);
    {
      SQLiteUserDefaults(root / "theirs.db").set("choice", Data("theirs")).value();
    }
    shell(before);
    ChildProcess holder(hold);
    for (int turn = 0; holder.channel->receive<bool>(); ++turn) {
      if (turn == 1) {
        shell(during);
      } else {
        EXPECT_EQ(inAChild([&] { open(turn == 0 ? "ours" : choice, turn > 0); }), 0) << turn;
      }
      holder.channel->send(true);
    }
    EXPECT_EQ(holder.wait(), 0);
    shell("rm -r *");
  }

  SQLiteUserDefaults store(file);
  store.set("choice", Data("ours")).value();
  shell("rm -r app; touch app");
  EXPECT_FALSE(store.set("choice", Data("new"))) << "where no store can be";
  shell("rm app");
  EXPECT_EQ(store.data("choice").value(), Data("ours")) << "a failed change, or what was there before";
}

TEST_F(SQLiteUserDefaultsTest, LeavesNothingOfWhatWasRemovedInAnyFile) {
  const std::string somebody = "somebody@example.com";
  const auto isLeft = [&] {
    return std::ranges::any_of(fs::directory_iterator(file.parent_path()), [&](const auto& each) {
      return contentOf(each.path()).find(somebody) != std::string::npos;
    });
  };
  fs::create_directories(file.parent_path());
  OtherConnection earlier(file);  // a version that did not wipe
  earlier.execute(
      "PRAGMA secure_delete = OFF; PRAGMA user_version = 1; CREATE TABLE defaults("
      "  key BLOB PRIMARY KEY NOT NULL, isData INTEGER NOT NULL, value BLOB NOT NULL) WITHOUT ROWID;"
      "INSERT INTO defaults VALUES('k', 0, printf('%.9000c', 'x') || 'somebody@example.com');"
      "DELETE FROM defaults");
  ASSERT_TRUE(isLeft());
  SQLiteUserDefaults store(file);
  store.set("first", Data("change")).value();
  EXPECT_FALSE(isLeft());

  for (int n = 0; n < 40; ++n) {
    const std::string key = std::to_string(n);
    store.commit({{key, Data(std::string(500, 'x') + somebody)}, {key + key, std::string(300, 'y')}}).value();
  }
  for (int n = 0; n < 40; ++n) store.set(std::to_string(n), Data("z")).value();
  for (const auto& next : {StoreChange("user", std::monostate()), StoreChange("user", std::string("else"))}) {
    store.set("user", somebody).value();
    store.commit({next}).value();
    EXPECT_FALSE(isLeft());
  }

  store.set("user", somebody).value();
  earlier.execute("BEGIN; SELECT * FROM defaults");  // now a reader that keeps the log in use
  store.remove("user").value();
  ASSERT_TRUE(isLeft());
  earlier.execute("COMMIT");
  SQLiteUserDefaults(file).set("next", Data("change")).value();
  EXPECT_FALSE(isLeft());
}

// Somebody else lengthens and shortens the file, at any step at which it is looked at.
TEST_F(SQLiteUserDefaultsTest, FindsNoDamageInAFileThatOthersShorten) {
  {
    SQLiteUserDefaults(file).set("k", Data("v")).value();
  }
  static std::unique_ptr<OtherConnection> other;
  other = std::make_unique<OtherConnection>(file);
  const auto act = [](unsigned, void*, void*, void* sql) {
    const std::string_view statement = static_cast<const char*>(sql);
    if (statement == "PRAGMA user_version") {
      other->execute(
          "INSERT INTO defaults VALUES('large', 1, zeroblob(50000)); PRAGMA wal_checkpoint(TRUNCATE)");
    } else if (statement == "PRAGMA page_size") {
      other->execute("DELETE FROM defaults WHERE key = 'large'; VACUUM; PRAGMA wal_checkpoint(TRUNCATE)");
    }
    return 0;
  };
  static const auto watch = +act;
  const auto extension = +[](sqlite3* connection, char**, const sqlite3_api_routines*) {
    return sqlite3_trace_v2(connection, SQLITE_TRACE_STMT, watch, nullptr);
  };
  const auto entry = reinterpret_cast<void (*)()>(extension);
  sqlite3_auto_extension(entry);
  EXPECT_EQ(SQLiteUserDefaults(file).data("k").value(), Data("v"));
  sqlite3_cancel_auto_extension(entry);
  other.reset();
  EXPECT_THAT(printer->take(), IsEmpty());
}

// No descriptor may be left for a look at the log, while values stand only there.
TEST_F(SQLiteUserDefaultsTest, FindsNoDamageWhereDescriptorsAreMissing) {
  SQLiteUserDefaults store(file);
  store.set("k", Data(std::string(20'000, 'x'))).value();
  rlimit limit{};
  ::getrlimit(RLIMIT_NOFILE, &limit);
  const rlim_t before = limit.rlim_cur;
  const int next = ::dup(0);
  ::close(next);
  for (int left = 1; left < 8; ++left) {
    limit.rlim_cur = static_cast<rlim_t>(next + left);
    ::setrlimit(RLIMIT_NOFILE, &limit);
    const auto found = SQLiteUserDefaults(file).data("k");
    limit.rlim_cur = before;
    ::setrlimit(RLIMIT_NOFILE, &limit);
    EXPECT_TRUE(!found || found->has_value()) << left;
  }
  std::fstream(file.string() + "-wal").seekp((1LL << 32) + 99).put('\0');  // more than 32 bits count
  EXPECT_TRUE(SQLiteUserDefaults(file).data("k").value());
  EXPECT_THAT(printer->take(), IsEmpty());
}

TEST_F(SQLiteUserDefaultsTest, SetsAFileAsideOnceWhenSeveralConnectionsFindItDamaged) {
  SQLiteUserDefaults first(file);
  SQLiteUserDefaults second(file);
  for (SQLiteUserDefaults* store : {&first, &second}) store->set("k", Data("v")).value();
  // The write makes both forget the pages they know; the checkpoint leaves nothing in the journal.
  OtherConnection(file).execute("DELETE FROM defaults; PRAGMA wal_checkpoint(TRUNCATE)");
  write(file, std::string(20'000, 'x'));
  first.set("k", Data("after")).value();
  EXPECT_EQ(second.data("k").value(), Data("after"));
  EXPECT_EQ(printer->take().size(), 1u);

  // Others wait while somebody opens or sets aside a store of the folder, and look again afterwards.
  OtherConnection(file).execute("PRAGMA wal_checkpoint(TRUNCATE)");
  write(file, std::string(20'000, 'y'));
  const int somebody = ::open(file.parent_path().c_str(), O_RDONLY | O_CLOEXEC);
  ::flock(somebody, LOCK_SH);
  EXPECT_FALSE(SQLiteUserDefaults(file, std::chrono::milliseconds(20)).data("k"));
  EXPECT_THAT(printer->take(), IsEmpty());
  std::thread waiting([&] { EXPECT_EQ(SQLiteUserDefaults(file).data("k").value(), std::nullopt); });
  fs::rename(file, file.string() + ".damaged-2");
  ::close(somebody);
  waiting.join();
  EXPECT_THAT(printer->take(), IsEmpty());

  OtherConnection(file).execute("PRAGMA wal_checkpoint(TRUNCATE)");
  write(file, std::string(20'000, 'z'));
  EXPECT_EQ(SQLiteUserDefaults(file).data("k").value(), std::nullopt);
  EXPECT_THAT(printer->take(), ElementsAre(EndsWith("store.db.damaged-3")));
}

const std::string key = "com.talvo.consent.basicConsent.s";
const std::string old = R"({"marketing":true,"id":"old"})", inJournal = R"({"marketing":true,"id":"new"})";
const Data filler(std::string(900, 'x'));
const Texts others = words("a1 a2 a3 a4 a5 a6 z1 z2 z3 z4 z5 z6");

template <class T>
std::string told(const Result<T>& outcome) {
  if (outcome) return "saved";
  const auto* error = outcome.error().template as<PlatformError>();
  return "error " + std::to_string(error->code() & 0xFF) + " " + error->what();
}

// The table is tests/golden/store/faults.txt, whose head says how to read it.
class StoreFaultsTest : public SQLiteUserDefaultsTest {
 protected:
  StoreFaultsTest() {
    {
      SQLiteUserDefaults store(file);
      store.set(key, Data(old)).value();
      for (const std::string& each : others) store.set(each, filler).value();
    }
    sound = contentOf(file);
    SQLiteUserDefaults store(file);
    store.set(key, Data(inJournal)).value();
    for (const char* each : {"a3", "z3"}) store.set(each, filler).value();
    journal = contentOf(file.string() + "-wal");
  }

  void begin(const std::string& fault) {
    fs::remove_all(parent);
    write(file, sound);
    for (const std::string& step : split(fault, ',')) {
      const Texts parts = words(step);
      const std::string &verb = parts.front(), &object = parts.back();
      const std::string sql = step.substr(std::min(step.size(), verb.size() + 1));
      if (verb == "text") write(file, std::string(std::stoul(object), 'x'));
      if (verb == "fill") write(file, sound.substr(0, std::stoul(object)) + std::string(20'000, '\x7F'));
      if (verb == "cut") fs::resize_file(file, std::stoul(object));
      if (verb == "journal") write(journalFile, journal);
      if (verb == "journal-cut") fs::resize_file(journalFile, std::stoul(object));
      if (verb == "sql") OtherConnection(file).execute(sql.c_str());
      if (verb == "lock") (other = std::make_unique<OtherConnection>(file))->execute(sql.c_str());
      if (verb == "file" || verb == "directory") fs::remove_all(parent);
      if (verb == "file") write(parent, "x");
      if (verb == "directory") fs::create_directories(file / "x");
      if (verb == "mode")
        fs::permissions(object == "file" ? file : parent, fs::perms(std::stoi(parts[1], nullptr, 8)));
      if (verb == "become") becomeOrdinary();
      if (verb == "full") limitFiles(std::stoul(object));
    }
    isReplaced = fault == "file" || fault == "directory" || fault.ends_with("user_version = 2");
    std::error_code hidden;
    damaged = fs::is_regular_file(file, hidden) ? contentOf(file) : "";
    damagedJournal = contentOf(journalFile);
  }

  // The way back for what can be undone; damage cannot.
  void end() {
    other.reset();
    limitFiles(RLIM_INFINITY);
    ASSERT_EQ(::setresuid(user, user, user), 0);
    if (std::exchange(isReplaced, false)) fs::remove_all(parent), write(file, sound);
    fs::permissions(parent, fs::perms(0700));
    fs::permissions(file, fs::perms(0600));
  }

  // Root may read and write everything.
  void becomeOrdinary() {
    if (user != 0) return;
    constexpr uid_t nobody = 65534;
    for (const fs::path& each : {parent.parent_path(), parent, file})
      ASSERT_EQ(::chown(each.c_str(), nobody, nobody), 0);
    ASSERT_EQ(::setresuid(nobody, nobody, 0), 0);
  }

  static void limitFiles(rlim_t bytes) {
    std::signal(SIGXFSZ, SIG_IGN);
    rlimit limit{};
    ::getrlimit(RLIMIT_FSIZE, &limit);
    limit.rlim_cur = std::min(bytes, limit.rlim_max);
    ::setrlimit(RLIMIT_FSIZE, &limit);
  }

  // What the store gives, and that no value is lost: each is there, or in a file set aside.
  std::string reading(SQLiteUserDefaults& store, bool isEmpty) {
    const auto value = store.data(key);
    if (!value) return told(value);
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
    EXPECT_THAT(told(store.set(key, large)), StartsWith(save));
    EXPECT_THAT(told(store.replace(key, Data(old), large)), StartsWith(save));
    EXPECT_THAT(told(store.commit({{"a1", Data("changed")}, {key, large}})), StartsWith(save));
    EXPECT_TRUE(fault.starts_with("full") || told(store.remove("nothing")).starts_with(save));
    EXPECT_TRUE(save == "saved" || damaged.empty() || contentOf(file) == damaged);
    end();
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
    const std::string root = "https://service.example/public/";
    platform.session->answer("GET", root + "cookies/s/configurations", 200, "{}");
    for (const char* method : {"POST", "PUT"})
      platform.session->answer(method, root + "cookie-consent/s", 200, R"({"id":"c"})");
    platform.install();
    const auto client = CookiesSDK::createInstance("https://service.example/", "s");
    int sent = 0;
    for (const char* consent : {R"({"marketing":true})", R"({"marketing":false})"}) {
      platform.settle();
      client->submitConsent(parsed<BasicConsent>(consent),
                            [&](const auto& reply) { sent += reply.has_value(); });
      platform.settle();
      end();
    }
    EXPECT_EQ(sent, 2);
    EXPECT_EQ(SQLiteUserDefaults(file).data(key).value(), Data(R"({"marketing":false})"));
  }

  const uid_t user = ::getuid();
  const fs::path parent = file.parent_path(), journalFile = file.string() + "-wal";
  const std::string aside = file.string() + ".damaged-1";
  std::string sound, journal, damaged, damagedJournal;
  bool isReplaced = false;
  std::unique_ptr<OtherConnection> other;
};

TEST_F(StoreFaultsTest, LeaveTheOldValueOrTheFileAndGoOn) {
  const auto holds = [&](const std::string& fault, const std::string& read, const std::string& save) {
    SCOPED_TRACE(fault);
    EXPECT_EQ(inAChild([&] { holdsInAStore(fault, read, save); }), 0);
    EXPECT_EQ(inAChild([&] { holdsInAClient(fault); }), 0);
  };
  for (const auto& [name, fault, read, save] : tableOf<4>("store/faults.txt")) {
    SCOPED_TRACE(name);
    if (!fault.ends_with("*")) {
      holds(fault, read, save);
      continue;
    }
    const std::string::size_type size = (fault.find("journal-cut") == fault.npos ? sound : journal).size();
    for (std::size_t at = 1024; at < size; at += 1024)
      holds(fault.substr(0, fault.size() - 1) + std::to_string(at), read, save);
  }
}

}  // namespace
}  // namespace TalvoConsentSDK

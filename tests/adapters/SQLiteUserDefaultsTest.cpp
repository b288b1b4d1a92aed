// The SQLite store: several processes, killed processes, and files that others move or remove.

#include <chrono>
#include <csignal>
#include <filesystem>
#include <thread>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <unistd.h>

#include "TalvoConsentSDK/TalvoConsentSDK.h"
#include "TalvoConsentSDK/platform/StoreDeadline.h"

#include "adapters/sqlite/SQLiteUserDefaults.h"

#include "testing/DurabilityConformance.h"
#include "testing/SharingConformance.h"
#include "testing/UserDefaultsConformance.h"
#include "tests/adapters/SQLiteTest.h"
#include "tests/support/Repetitions.h"

namespace TalvoConsentSDK {
namespace {

// Opens a store whose timeout suffices for many threads and processes that take turns on a busy machine.
std::shared_ptr<UserDefaults> openWithLongTimeout(const fs::path& file) {
  return std::make_shared<SQLiteUserDefaults>(file, std::chrono::minutes(1));
}

struct InSQLite {
  TemporaryStore temporary;
  std::shared_ptr<UserDefaults> open() { return openWithLongTimeout(temporary.file); }
  static int kills() { return repetitions("TALVO_TEST_KILLS", 50); }
  static int saves() { return repetitions("TALVO_TEST_SAVES", 10); }
  ~InSQLite() {
    for (const auto& left : fs::directory_iterator(temporary.file.parent_path()))
      EXPECT_EQ(left.path(), temporary.file);
  }
};
INSTANTIATE_TYPED_TEST_SUITE_P(SQLite, UserDefaultsConformance, InSQLite);
INSTANTIATE_TYPED_TEST_SUITE_P(SQLite, DurabilityConformance, InSQLite);

// Begins with a damaged file, which one of the processes sets aside.
struct InDamagedSQLite {
  TemporaryStore temporary;
  InDamagedSQLite() { write(temporary.file, std::string(20'000, 'x')); }
  std::shared_ptr<UserDefaults> open() { return openWithLongTimeout(temporary.file); }
  static int saves() { return InSQLite::saves(); }
  ~InDamagedSQLite() {
    EXPECT_EQ(contentOf(temporary.file.string() + ".damaged-1").size(), 20'000u);
    EXPECT_FALSE(fs::exists(temporary.file.string() + ".damaged-2"));
  }
};
using Shared = ::testing::Types<InSQLite, InDamagedSQLite>;
INSTANTIATE_TYPED_TEST_SUITE_P(SQLite, SharingConformance, Shared);

TEST_F(SQLiteUserDefaultsTest, KeepsValuesAndKeepsThemPrivate) {
  {
    SQLiteUserDefaults store(file);
    EXPECT_FALSE(fs::exists(file)) << "the constructor opened the file";
    store.set("k", Data("v")).value();
    for (const char* suffix : {"", "-wal", "-shm"}) {
      EXPECT_EQ(fs::status(file.string() + suffix).permissions(), fs::perms(0600)) << suffix;
    }
    EXPECT_EQ(fs::status(file.parent_path()).permissions(), fs::perms(0700));
  }
  for (const fs::path& noFile : {fs::path(), file / "", file / ".", fs::path(file.native() + '\0')})
    EXPECT_FALSE(SQLiteUserDefaults(noFile).set("k", Data("another"))) << noFile;
  EXPECT_EQ(SQLiteUserDefaults(file).data("k").value(), Data("v"));
}

// A caller with a deadline does not wait past it, even if another thread uses the same store object and waits
// for the file without a limit.
TEST_F(SQLiteUserDefaultsTest, WaitsForAnotherWriterUntilTheDeadline) {
  constexpr auto noLimit = std::chrono::milliseconds::max();
  SQLiteUserDefaults store(file, noLimit);
  store.set("k", Data("old")).value();
  const fs::path plainFile = file.parent_path() / "plain.db";  // without a write-ahead log
  OtherConnection other(file), plain(plainFile), alone(file.parent_path() / "alone.db");
  other.execute("BEGIN IMMEDIATE");
  plain.execute("CREATE TABLE t(x); BEGIN IMMEDIATE");
  alone.execute("BEGIN EXCLUSIVE");
  // A writer of this file has stopped in the middle of a change.
  const fs::path stopped = file.parent_path() / "stopped.db";
  OtherConnection halfway(stopped);
  halfway.execute("PRAGMA journal_mode = WAL; CREATE TABLE t(x); BEGIN IMMEDIATE");
  std::fstream(stopped.string() + "-shm", std::ios::in | std::ios::out) << std::string(96, '\0');
  std::thread writer([&] {
    const StoreDeadline none(noLimit);
    EXPECT_TRUE(store.set("k", Data("new")));
  });
  const auto start = std::chrono::steady_clock::now();
  {
    const StoreDeadline deadline(std::chrono::milliseconds(50));
    EXPECT_THAT(store.remove("k").error().what(), HasSubstr(file.string()));
    EXPECT_FALSE(store.commit({}));
    for (const char* each : {"store.db", "plain.db", "alone.db", "stopped.db"})
      EXPECT_FALSE(SQLiteUserDefaults(file.parent_path() / each, noLimit).set("k", Data("mine"))) << each;
  }
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(10));
  other.execute("COMMIT");
  writer.join();
  EXPECT_EQ(store.data("k").value(), Data("new"));
}

// One process has the store open, and others open it afterwards. None of these was forked while its parent
// had the store open.
TEST_F(SQLiteUserDefaultsTest, NoticesWhenItsFileIsReplaced) {
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
  EXPECT_FALSE(store.set("choice", Data("new"))) << "the path cannot hold a store";
  shell("rm app");
  EXPECT_EQ(store.data("choice").value(), Data("ours")) << "lost by a failed change";
}

TEST_F(SQLiteUserDefaultsTest, LeavesNoTraceOfRemovedValues) {
  const std::string email = "somebody@example.com";
  const auto isLeft = [&] {
    return std::ranges::any_of(fs::directory_iterator(file.parent_path()), [&](const auto& each) {
      return contentOf(each.path()).find(email) != std::string::npos;
    });
  };
  fs::create_directories(file.parent_path());
  OtherConnection earlier(file);  // an earlier version, which did not wipe
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
    store.commit({{key, Data(std::string(500, 'x') + email)}, {key + key, std::string(300, 'y')}}).value();
  }
  for (int n = 0; n < 40; ++n) store.set(std::to_string(n), Data("z")).value();
  for (const auto& next : {StoreChange("user", std::monostate()), StoreChange("user", std::string("else"))}) {
    store.set("user", email).value();
    store.commit({next}).value();
    EXPECT_FALSE(isLeft());
  }

  store.set("user", email).value();
  earlier.execute("BEGIN; SELECT * FROM defaults");  // a reader that keeps the log in use
  store.remove("user").value();
  ASSERT_TRUE(isLeft());
  earlier.execute("COMMIT");
  SQLiteUserDefaults(file).set("next", Data("change")).value();
  EXPECT_FALSE(isLeft());
}

// Another connection extends and shortens the file between the steps with which the store checks it.
TEST_F(SQLiteUserDefaultsTest, FindsNoDamageInAFileThatIsBeingShortened) {
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

// Some values are only in the log, and the process may have no file descriptor left to open it.
TEST_F(SQLiteUserDefaultsTest, FindsNoDamageIfFileDescriptorsRunOut) {
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
  std::fstream(file.string() + "-wal").seekp((1LL << 32) + 99).put('\0');  // beyond 32 bits
  EXPECT_TRUE(SQLiteUserDefaults(file).data("k").value());
  EXPECT_THAT(printer->take(), IsEmpty());
}

TEST_F(SQLiteUserDefaultsTest, SetsAFileAsideOnceWhenSeveralConnectionsFindItDamaged) {
  SQLiteUserDefaults first(file);
  SQLiteUserDefaults second(file);
  for (SQLiteUserDefaults* store : {&first, &second}) store->set("k", Data("v")).value();
  // The write makes both connections drop their cached pages; the checkpoint empties the journal.
  OtherConnection(file).execute("DELETE FROM defaults; PRAGMA wal_checkpoint(TRUNCATE)");
  write(file, std::string(20'000, 'x'));
  first.set("k", Data("after")).value();
  EXPECT_EQ(second.data("k").value(), Data("after"));
  EXPECT_EQ(printer->take().size(), 1u);

  // A store waits while another one in the folder is being opened or set aside, and then checks again.
  OtherConnection(file).execute("PRAGMA wal_checkpoint(TRUNCATE)");
  write(file, std::string(20'000, 'y'));
  const int otherHolder = ::open(file.parent_path().c_str(), O_RDONLY | O_CLOEXEC);
  ::flock(otherHolder, LOCK_SH);
  EXPECT_FALSE(SQLiteUserDefaults(file, std::chrono::milliseconds(20)).data("k"));
  EXPECT_THAT(printer->take(), IsEmpty());
  std::thread waiting([&] { EXPECT_EQ(SQLiteUserDefaults(file).data("k").value(), std::nullopt); });
  fs::rename(file, file.string() + ".damaged-2");
  ::close(otherHolder);
  waiting.join();
  EXPECT_THAT(printer->take(), IsEmpty());

  OtherConnection(file).execute("PRAGMA wal_checkpoint(TRUNCATE)");
  write(file, std::string(20'000, 'z'));
  EXPECT_EQ(SQLiteUserDefaults(file).data("k").value(), std::nullopt);
  EXPECT_THAT(printer->take(), ElementsAre(EndsWith("store.db.damaged-3")));
}

}  // namespace
}  // namespace TalvoConsentSDK

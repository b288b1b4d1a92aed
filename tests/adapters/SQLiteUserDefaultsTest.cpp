#include <algorithm>
#include <array>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iostream>
#include <iterator>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sqlite3.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include "TalvoConsentSDK/platform/Platform.h"

#include "adapters/memory/CapturingPrinter.h"
#include "adapters/sqlite/SQLiteUserDefaults.h"

#include "testing/UserDefaultsConformance.h"
#include "tests/support/Repetitions.h"

namespace TalvoConsentSDK {
namespace {

namespace fs = std::filesystem;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

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

struct InSQLite {
  TemporaryFolder folder;
  std::shared_ptr<UserDefaults> open() { return std::make_shared<SQLiteUserDefaults>(folder.file()); }
};
INSTANTIATE_TYPED_TEST_SUITE_P(SQLite, UserDefaultsConformance, InSQLite);

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

std::string contentOf(const fs::path& file) {
  std::ifstream stream(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

void write(const fs::path& file, const std::string& content) {
  fs::create_directories(file.parent_path());
  std::ofstream(file, std::ios::binary) << content;
}

template <class T>
int primaryCode(const Result<T>& result) {
  if (result) return SQLITE_OK;
  const auto* error = result.error().template as<PlatformError>();
  EXPECT_EQ(error->domain(), "SQLite");
  EXPECT_STRNE(result.error().what(), "");
  return error->code() & 0xFF;
}

class SQLiteUserDefaultsTest : public ::testing::Test {
 protected:
  SQLiteUserDefaultsTest() {
    Platform platform;
    platform.printer = printer;
    Platform::install(platform);
  }

  // Runs `work` in a process of its own; tells its exit status, 0 when it went through.
  static pid_t start(const std::function<void()>& work) {
    const pid_t child = ::fork();
    if (child != 0) return child;
    try {
      work();
    } catch (...) {
      ::_exit(1);
    }
    ::_exit(0);
  }

  static int statusOf(pid_t child) {
    int status = -1;
    ::waitpid(child, &status, 0);
    return status;
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
  EXPECT_EQ(SQLiteUserDefaults(file).data("k").value(), Data("v"));
  OtherConnection(file).execute("DROP TABLE defaults");
  EXPECT_EQ(SQLiteUserDefaults(file).data("k").value(), std::nullopt) << "not unusable for ever";

  OtherConnection(file).execute("PRAGMA user_version = 2");
  const std::string newer = contentOf(file);
  EXPECT_EQ(primaryCode(SQLiteUserDefaults(file).data("k")), SQLITE_ERROR) << "of a later version's schema";
  EXPECT_EQ(contentOf(file), newer);
  EXPECT_THAT(printer->take(), IsEmpty());
}

TEST_F(SQLiteUserDefaultsTest, FailsWhileTheFileIsLockedAndThenGoesOn) {
  SQLiteUserDefaults store(file, std::chrono::milliseconds(20));
  store.set("k", Data("old")).value();
  {
    OtherConnection other(file);
    other.execute("BEGIN IMMEDIATE");
    const auto outcome = store.set("k", Data("secret"));
    EXPECT_EQ(primaryCode(outcome), SQLITE_BUSY);
    EXPECT_STREQ(outcome.error().what(), "database is locked");
    EXPECT_EQ(primaryCode(store.replace("k", Data("old"), Data("secret"))), SQLITE_BUSY);
    EXPECT_EQ(primaryCode(store.remove("k")), SQLITE_BUSY);
    EXPECT_EQ(store.data("k").value(), Data("old")) << "readers do not wait";
  }
  EXPECT_TRUE(store.replace("k", Data("old"), Data("new")).value());
  EXPECT_EQ(store.data("k").value(), Data("new"));
}

TEST_F(SQLiteUserDefaultsTest, WaitsForAnotherWriter) {
  SQLiteUserDefaults store(file);
  store.set("k", Data("old")).value();
  OtherConnection other(file);
  other.execute("BEGIN IMMEDIATE");
  std::thread writer([&] { store.set("k", Data("new")).value(); });
  std::this_thread::sleep_for(std::chrono::milliseconds(20));
  other.execute("COMMIT");
  writer.join();
  EXPECT_EQ(store.data("k").value(), Data("new"));
}

TEST_F(SQLiteUserDefaultsTest, LeavesALockedFileAsItIsWhenItOpens) {
  SQLiteUserDefaults(file).set("k", Data("v")).value();
  SQLiteUserDefaults store(file, std::chrono::milliseconds(20));
  {
    OtherConnection other(file);
    other.execute("PRAGMA locking_mode = EXCLUSIVE; BEGIN EXCLUSIVE");
    EXPECT_EQ(primaryCode(store.data("k")), SQLITE_BUSY);
    EXPECT_EQ(primaryCode(store.set("k", Data("secret"))), SQLITE_BUSY);
  }
  EXPECT_EQ(store.data("k").value(), Data("v"));
  EXPECT_THAT(printer->take(), IsEmpty());
}

TEST_F(SQLiteUserDefaultsTest, TriesAgainWhereItCouldNotOpen) {
  struct Obstacle {
    const char* name;
    std::function<void()> put;
    std::function<void()> take;
  };
  const fs::path parent = file.parent_path();
  const Obstacle obstacles[] = {
      {"a file where the folder should be", [&] { write(parent, "x"); }, [&] { fs::remove(parent); }},
      {"a directory where the file should be", [&] { fs::create_directories(file / "x"); },
       [&] { fs::remove_all(file); }},
  };
  for (const auto& [name, put, take] : obstacles) {
    SCOPED_TRACE(name);
    put();
    SQLiteUserDefaults store(file);
    EXPECT_EQ(primaryCode(store.set("k", Data("secret"))), SQLITE_CANTOPEN);
    EXPECT_EQ(primaryCode(store.data("k")), SQLITE_CANTOPEN);
    take();
    store.set("k", Data("v")).value();
    EXPECT_EQ(store.data("k").value(), Data("v"));
    fs::remove_all(parent);
  }
  EXPECT_EQ(primaryCode(SQLiteUserDefaults("").data("k")), SQLITE_CANTOPEN);
  EXPECT_THAT(printer->take(), IsEmpty());
}

TEST_F(SQLiteUserDefaultsTest, KeepsTheOldValueWhereAWriteFails) {
  SQLiteUserDefaults store(file);
  store.set("k", Data("old")).value();
  rlimit before{};
  ::getrlimit(RLIMIT_FSIZE, &before);
  std::signal(SIGXFSZ, SIG_IGN);
  const rlimit full{256 << 10, before.rlim_max};
  ::setrlimit(RLIMIT_FSIZE, &full);
  const auto outcome = store.set("k", Data(std::string(1 << 20, 'x')));
  const auto read = store.data("k");
  ::setrlimit(RLIMIT_FSIZE, &before);
  EXPECT_THAT(primaryCode(outcome), ::testing::AnyOf(SQLITE_FULL, SQLITE_IOERR));
  EXPECT_EQ(read.value(), Data("old"));
  store.set("k", Data("new")).value();
  EXPECT_EQ(SQLiteUserDefaults(file).data("k").value(), Data("new"));
  EXPECT_THAT(printer->take(), IsEmpty());
}

TEST_F(SQLiteUserDefaultsTest, SetsADamagedFileAside) {
  {
    SQLiteUserDefaults store(file);
    for (int n = 0; n < 40; ++n) store.set(std::to_string(n), Data(std::string(1000, 'x'))).value();
  }
  const std::string sound = contentOf(file);
  std::string soundJournal;
  {
    SQLiteUserDefaults store(file);
    store.set("20", Data(std::string(1000, 'y'))).value();
    soundJournal = contentOf(file.string() + "-wal");
  }
  ASSERT_GT(sound.size(), 20'000u);
  const auto overwritten = [&](std::size_t from) {
    std::string content = sound;
    std::fill(content.begin() + static_cast<std::ptrdiff_t>(from), content.end(), '\x7F');
    return content;
  };
  struct Damage {
    const char* name;
    std::string content;
    std::string journal = "";
  };
  const Damage damages[] = {
      {"text", std::string(20'000, 'x')},
      {"text beside a sound journal", std::string(20'000, 'x'), soundJournal},
      {"cut short", sound.substr(0, 4096)},
      {"header alone is sound", overwritten(100)},
      {"first page alone is sound", overwritten(4096)},
  };
  int count = 0;
  for (const auto& [name, content, journal] : damages) {
    SCOPED_TRACE(name);
    write(file, content);
    if (!journal.empty()) write(file.string() + "-wal", journal);
    SQLiteUserDefaults store(file);
    EXPECT_EQ(store.data("20").value(), std::nullopt);
    const std::string newName = file.string() + ".damaged-" + std::to_string(++count);
    EXPECT_THAT(printer->take(),
                ElementsAre("⚠️ The consent store was damaged and has been set aside as: " + newName));
    EXPECT_EQ(contentOf(newName), content);
    EXPECT_EQ(contentOf(newName + "-wal"), journal);
    store.set("20", Data("v")).value();
    EXPECT_EQ(SQLiteUserDefaults(file).data("20").value(), Data("v"));
  }
  EXPECT_THAT(printer->take(), IsEmpty());

  write(file, "");
  EXPECT_EQ(SQLiteUserDefaults(file).data("20").value(), std::nullopt);
  EXPECT_THAT(printer->take(), IsEmpty()) << "an empty file is a store without values";
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
}

TEST_F(SQLiteUserDefaultsTest, ServesSeveralProcessesFromTheStart) {
  constexpr int processes = 8;
  const int keys = repetitions("TALVO_TEST_SAVES", 10);
  std::array<pid_t, processes> children{};
  for (int n = 0; n < processes; ++n) {
    children[static_cast<std::size_t>(n)] = start([&] {
      SQLiteUserDefaults store(file);
      for (int key = 0; key < keys; ++key) store.set(std::to_string(n * keys + key), Data("v")).value();
    });
  }
  for (const pid_t child : children) EXPECT_EQ(statusOf(child), 0);
  SQLiteUserDefaults store(file);
  for (int key = 0; key < processes * keys; ++key)
    EXPECT_EQ(store.data(std::to_string(key)).value(), Data("v"));
}

// What a process was told to be stored is there after it was killed, at whatever point.
TEST_F(SQLiteUserDefaultsTest, SurvivesBeingKilled) {
  std::string padding(3000, '.');
  int last = 0;
  const int kills = repetitions("TALVO_TEST_KILLS", 50);
  for (int kill = 0; kill < kills; ++kill) {
    int reports[2];
    ASSERT_EQ(::pipe(reports), 0);
    const pid_t child = start([&] {
      SQLiteUserDefaults store(file);
      for (int n = last + 1;; ++n) {
        store.set("k", Data(std::to_string(n) + padding)).value();
        if (::write(reports[1], &n, sizeof n) != sizeof n) return;
      }
    });
    ::close(reports[1]);
    int acknowledged = last;
    for (int read = 0; read < kill % 7; ++read) {
      ASSERT_EQ(::read(reports[0], &acknowledged, sizeof acknowledged), static_cast<ssize_t>(sizeof(int)));
    }
    ::usleep(static_cast<useconds_t>(kill * 37 % 400));
    ::kill(child, SIGKILL);
    EXPECT_TRUE(WIFSIGNALED(statusOf(child)));
    while (::read(reports[0], &acknowledged, sizeof acknowledged) == sizeof(int)) {
    }
    ::close(reports[0]);

    const auto stored = SQLiteUserDefaults(file).data("k").value();
    last = stored ? std::stoi(stored->bytes) : 0;
    EXPECT_TRUE(!stored || stored->bytes == std::to_string(last) + padding);
    EXPECT_GE(last, acknowledged);
    EXPECT_LE(last, acknowledged + 1);
  }
  EXPECT_THAT(printer->take(), IsEmpty());
  for (const auto& left : fs::directory_iterator(file.parent_path())) EXPECT_EQ(left.path(), file);
  std::cout << kills << " kills, " << last << " saves\n";
}

}  // namespace
}  // namespace TalvoConsentSDK

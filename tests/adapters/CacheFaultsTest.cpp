// A cache's file that is damaged, full, locked, removed or replaced, or shared by processes that are killed.

#include <chrono>
#include <csignal>

#include "adapters/sqlite/SQLiteCacheStorage.h"
#include "adapters/sqlite/SQLiteUserDefaults.h"

#include "tests/adapters/CacheHistory.h"
#include "tests/adapters/CacheStorageSuite.h"
#include "tests/adapters/FileFaults.h"
#include "tests/support/Repetitions.h"

namespace TalvoConsentSDK {
namespace {

constexpr std::size_t megabyte = 1'000'000;

std::string url(int number) {
  return "https://service.example/" + std::to_string(number);
}

// Head and body repeat the number and the version, so that an entry that was written in part is noticed.
CacheEntry entryOf(int number, int version, std::size_t size = 9'000) {
  const std::string name = std::to_string(number) + "." + std::to_string(version) + " ";
  std::string body;
  while (body.size() < size) body += name;
  return {"head of " + name, body};
}

// The version of an entry that was read; 0 if there is none.
int versionOf(const std::optional<CacheEntry>& entry, int number) {
  if (!entry) return 0;
  const auto dot = entry->head.find('.');
  const int version = dot == std::string::npos ? -1 : std::atoi(entry->head.c_str() + dot + 1);
  EXPECT_TRUE(*entry == entryOf(number, version, entry->body.size() < 1'000 ? 100 : 9'000)) << entry->head;
  return version;
}

struct InAFile {
  TemporaryFolder folder;
  std::shared_ptr<CacheStorage> open(std::size_t maxBytes) {
    most = maxBytes;
    return std::make_shared<SQLiteCacheStorage>(folder.file(), maxBytes);
  }
  ~InAFile() {
    EXPECT_LE(fs::file_size(folder.file()), most);
    EXPECT_GT(fs::file_size(folder.file()), 0U);
    for (const auto& left : fs::directory_iterator(folder.file().parent_path()))
      EXPECT_EQ(left.path(), folder.file());
  }
  std::size_t most = 0;
};
INSTANTIATE_TYPED_TEST_SUITE_P(SQLite, CacheStorageSuite, InAFile);

class CacheFaultsTest : public SQLiteUserDefaultsTest {
 protected:
  static constexpr int count = 8;

  // Makes a file, and the content of its log after further changes.
  void prepare() {
    {
      SQLiteCacheStorage storage(file, megabyte);
      for (int i = 0; i < count; ++i) storage.write(url(i), entryOf(i, 1)).value();
    }
    faults.sound = contentOf(file);
    SQLiteCacheStorage storage(file, megabyte);
    for (int i = 0; i < count; i += 2) storage.write(url(i), entryOf(i, 2)).value();
    faults.journal = contentOf(faults.journalFile);
  }

  void hold(const std::string& fault, const std::string& read, const std::string& write) {
    faults.begin(fault);
    SQLiteCacheStorage storage(file, megabyte, std::chrono::milliseconds(20));
    int found = 0, failed = 0;
    for (int i = 0; i < count; ++i) {
      const auto entry = storage.read(url(i));
      failed += !entry;
      if (entry) found += versionOf(*entry, i) != 0;
    }
    EXPECT_EQ(failed, read == "fails" ? count : 0);
    EXPECT_TRUE(read != "kept" || found == count) << found;
    EXPECT_TRUE(read != "gone" || found == 0) << found;
    for (int i = 0; i < count; ++i) {
      const bool works = storage.write(url(i), entryOf(i, 3)).has_value();
      EXPECT_TRUE(write == "some" || works == (write == "works"));
    }
    faults.end();
    for (int i = 0; i < count; ++i) versionOf(storage.read(url(i)).value(), i);
    storage.write(url(0), entryOf(0, 4)).value();
    EXPECT_EQ(versionOf(storage.read(url(0)).value(), 0), 4);
    EXPECT_EQ(versionOf(SQLiteCacheStorage(file, megabyte).read(url(0)).value(), 0), 4);
    EXPECT_THAT(printer->take(), IsEmpty());
  }

  FileFaults faults{file};
};

TEST_F(CacheFaultsTest, CostEntriesAtMost) {
  prepare();
  for (const auto& [name, steps, read, write] : tableOf<4>("cache/faults.txt")) {
    for (const std::string& fault : faults.all(steps)) {
      SCOPED_TRACE(name + ": " + fault);
      const auto work = [&, &readColumn = read, &writeColumn = write] {
        hold(fault, readColumn, writeColumn);
      };
      if (fault.find("become") != fault.npos || fault.starts_with("full")) {
        EXPECT_EQ(inAChild(work), 0);
      } else {
        work();
      }
    }
  }
}

// Each row is what somebody does to the files while two objects have them open.
TEST_F(CacheFaultsTest, CostEntriesAtMostWhileTheFileIsOpen) {
  const char* const actions[] = {
      "rm store.db",
      "rm store.db-wal",
      "rm store.db-shm",
      "rm store.db*",
      "mv store.db gone.db",
      "rm store.db*; cp ../theirs.db store.db",
      "mv ../theirs.db store.db",
      "cp store.db copy.db; mv copy.db store.db",
      "cp ../theirs.db store.db",
      "truncate -s 20000 store.db",
      ": > store.db",
      "rm -r ../app",
  };
  const fs::path theirs = file.parent_path().parent_path() / "theirs.db";
  for (const char* const action : actions) {
    SCOPED_TRACE(action);
    fs::remove_all(file.parent_path());
    {
      SQLiteCacheStorage other(theirs, megabyte);
      for (int i = 0; i < count; ++i) other.write(url(i), entryOf(i, 7)).value();
    }
    EXPECT_EQ(inAChild([&] {
                SQLiteCacheStorage storage(file, megabyte), second(file, megabyte);
                for (int i = 0; i < count; ++i) storage.write(url(i), entryOf(i, 1)).value();
                for (int i = 0; i < count; ++i) EXPECT_EQ(versionOf(second.read(url(i)).value(), i), 1);
                EXPECT_EQ(
                    std::system(("cd " + file.parent_path().string() + " && { " + action + "; }").c_str()),
                    0);
                for (int round = 0; round < 3; ++round) {
                  for (SQLiteCacheStorage* const each : {&storage, &second}) {
                    for (int i = 0; i < count; ++i)
                      if (const auto entry = each->read(url(i))) versionOf(*entry, i);
                    static_cast<void>(each->write(url(round), entryOf(round, 2 + round)));
                  }
                }
                storage.write(url(9), entryOf(9, 9)).value();
                EXPECT_EQ(versionOf(second.read(url(9)).value(), 9), 9);
              }),
              0);
    EXPECT_EQ(versionOf(SQLiteCacheStorage(file, megabyte).read(url(9)).value(), 9), 9);
  }
}

TEST_F(CacheFaultsTest, ForgetsEverythingIfTheLogIsDeleted) {
  SQLiteCacheStorage(file, megabyte).write(url(1), entryOf(1, 1)).value();
  SQLiteCacheStorage storage(file, megabyte);
  storage.remove(url(1)).value();
  fs::remove(file.string() + "-wal");
  storage.write(url(2), entryOf(2, 1)).value();
  EXPECT_EQ(versionOf(storage.read(url(1)).value(), 1), 0) << "it had been removed";
  EXPECT_EQ(versionOf(storage.read(url(2)).value(), 2), 1);
}

TEST_F(CacheFaultsTest, SurvivesKilledProcessesThatShareTheFile) {
  SQLiteCacheStorage storage(file, megabyte);
  for (int kill = 0; kill < repetitions("TALVO_TEST_KILLS", 20); ++kill) {
    const auto writing = [&](const ProcessChannel& parent) {
      SQLiteCacheStorage own(file, megabyte, std::chrono::seconds(10));
      for (int version = 1;; ++version) {
        for (int i = 0; i < count; ++i) own.write(url(i), entryOf(i, version)).value();
        if (!parent.send(version)) return;
      }
    };
    ChildProcess one(writing), two(writing);
    for (int i = 0; i < 3 + kill % 3; ++i) {
      ASSERT_TRUE(one.channel->receive<int>() && two.channel->receive<int>());
      for (int each = 0; each < count; ++each)
        if (const auto entry = storage.read(url(each))) versionOf(*entry, each);
    }
    one.signal(SIGKILL);
    two.signal(SIGKILL);
    one.wait();
    two.wait();
    for (int i = 0; i < count; ++i)
      EXPECT_GT(versionOf(SQLiteCacheStorage(file, megabyte).read(url(i)).value(), i), 0);
  }
}

TEST_F(CacheFaultsTest, KeepsItsFilesPrivateAndOpensThemLate) {
  SQLiteCacheStorage storage(file, megabyte);
  EXPECT_FALSE(fs::exists(file.parent_path())) << "the constructor opened the file";
  storage.write(url(1), entryOf(1, 1)).value();
  for (const char* const suffix : {"", "-wal", "-shm"})
    EXPECT_EQ(fs::status(file.string() + suffix).permissions(), fs::perms(0600)) << suffix;
  EXPECT_FALSE(SQLiteCacheStorage(fs::path()).write(url(1), entryOf(1, 1)));
}

TEST_F(CacheFaultsTest, HoldsInRandomHistories) {
  int hits = 0;
  for (int seed = 1; seed <= repetitions("TALVO_TEST_HISTORIES", 20) && !HasFailure(); ++seed) {
    SCOPED_TRACE(seed);
    fs::remove_all(file.parent_path());
    CacheHistory history(static_cast<std::uint32_t>(seed), [&] {
      return std::make_shared<SQLiteCacheStorage>(file, seed % 3 == 0 ? 150'000 : megabyte);
    });
    history.play(200);
    hits += history.hits();
  }
  EXPECT_GT(hits, 20);
}

}  // namespace
}  // namespace TalvoConsentSDK

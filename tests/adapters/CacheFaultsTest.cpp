// A cache's file that is damaged, full, locked, removed or replaced.

#include "adapters/sqlite/SQLiteCacheStorage.h"

#include "testing/CacheSharingConformance.h"
#include "testing/CacheStorageConformance.h"
#include "tests/adapters/CacheHistory.h"
#include "tests/adapters/FileFaults.h"
#include "tests/support/Repetitions.h"

namespace TalvoConsentSDK {
namespace {

constexpr std::size_t megabyte = 1'000'000;

std::string url(int number) {
  return "https://service.example/" + std::to_string(number);
}

// Head and body repeat the number and the version, so that an entry that was written in part is noticed.
CacheEntry entryOf(int number, int version) {
  const std::string name = std::to_string(number) + "." + std::to_string(version) + " ";
  std::string body;
  while (body.size() < 9'000) body += name;
  return {"head of " + name, body};
}

// The version of an entry that was read; 0 if there is none.
int versionOf(const std::optional<CacheEntry>& entry, int number) {
  if (!entry) return 0;
  const int version = std::atoi(entry->head.c_str() + entry->head.find('.') + 1);
  EXPECT_TRUE(*entry == entryOf(number, version)) << entry->head;
  return version;
}

struct InAFile {
  TemporaryStore temporary;
  std::shared_ptr<CacheStorage> open(std::size_t maxBytes) {
    most = maxBytes;
    return std::make_shared<SQLiteCacheStorage>(temporary.file, maxBytes, std::chrono::seconds(10));
  }
  static int kills() { return repetitions("TALVO_TEST_KILLS", 20); }
  ~InAFile() {
    EXPECT_LE(fs::file_size(temporary.file), most);
    EXPECT_GT(fs::file_size(temporary.file), 0U);
    for (const auto& left : fs::directory_iterator(temporary.file.parent_path()))
      EXPECT_EQ(left.path(), temporary.file);
  }
  std::size_t most = 0;
};
INSTANTIATE_TYPED_TEST_SUITE_P(SQLite, CacheStorageConformance, InAFile);
INSTANTIATE_TYPED_TEST_SUITE_P(SQLite, CacheSharingConformance, InAFile);

class CacheFaultsTest : public SQLiteUserDefaultsTest {
 protected:
  static constexpr int count = 8;

  static void writeAll(const fs::path& to, int version) {
    SQLiteCacheStorage storage(to, megabyte);
    for (int i = 0; i < count; ++i) storage.write(url(i), entryOf(i, version)).value();
  }

  // Makes a file, and the content of its log after further changes.
  void prepare() {
    writeAll(file, 1);
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
    SCOPED_TRACE(name);
    for (const std::string& fault : faults.all(steps)) {
      SCOPED_TRACE(fault);
      EXPECT_EQ(inAChild([&] { hold(fault, read, write); }), 0);
    }
  }
}

// The table is tests/golden/cache/files.txt.
TEST_F(CacheFaultsTest, CostEntriesAtMostWhileTheFileIsOpen) {
  for (const auto& [name, command, removed] : tableOf<3>("cache/files.txt")) {
    SCOPED_TRACE(name);
    writeAll(root / "theirs.db", 7);
    writeAll(file, 1);
    const auto work = [&] {
      SQLiteCacheStorage storage(file, megabyte), second(file, megabyte);
      storage.remove(url(count - 1)).value();
      EXPECT_EQ(versionOf(second.read(url(0)).value(), 0), 1);
      shell(command);
      for (int round = 0; round < 3; ++round) {
        for (SQLiteCacheStorage* const each : {&storage, &second}) {
          for (int i = 0; i < count; ++i)
            if (const auto entry = each->read(url(i))) versionOf(*entry, i);
          static_cast<void>(each->write(url(round), entryOf(round, 2 + round)));
        }
      }
      storage.write(url(9), entryOf(9, 9)).value();
      EXPECT_EQ(versionOf(second.read(url(9)).value(), 9), 9);
      EXPECT_TRUE(removed == "may return" || !storage.read(url(count - 1)).value());
    };
    EXPECT_EQ(inAChild(work), 0);
    EXPECT_EQ(versionOf(SQLiteCacheStorage(file, megabyte).read(url(9)).value(), 9), 9);
    shell("rm -r *");
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
  int lastSeed = 0;
  CacheHistory::playAll(repetitions("TALVO_TEST_HISTORIES", 20), 200, [&](int seed) {
    if (std::exchange(lastSeed, seed) != seed) fs::remove_all(file.parent_path());
    return std::make_shared<SQLiteCacheStorage>(file, seed % 3 == 0 ? 150'000 : megabyte);
  });
}

}  // namespace
}  // namespace TalvoConsentSDK

#include "adapters/sqlite/CacheConnection.h"

#include <algorithm>
#include <cstring>

namespace TalvoConsentSDK {

using namespace platform;

namespace {

constexpr const char* cacheVersion = "1";
constexpr std::int64_t bytesPerPage = 4096;
constexpr std::int64_t tablesPages = 16;  // for the inner pages of the table and its indexes
constexpr std::size_t maxRead = 100;

// A power cut may leave pages of different times in the file, because nothing waits for the disk. SQLite does
// not notice that within a value. So each value has a checksum, which also covers the key.
class Checksum {
 public:
  explicit Checksum(std::string_view key) { add(key); }

  Checksum& add(std::string_view bytes) {
    mix(bytes.size());
    std::uint64_t word = 0;
    for (; bytes.size() >= sizeof word; bytes.remove_prefix(sizeof word)) {
      std::memcpy(&word, bytes.data(), sizeof word);
      mix(word);
    }
    word = 0;
    if (!bytes.empty()) std::memcpy(&word, bytes.data(), bytes.size());
    mix(word);
    return *this;
  }

  std::int64_t value() const { return static_cast<std::int64_t>(state_); }

 private:
  void mix(std::uint64_t word) {
    state_ = (state_ ^ word) * 0x9E37'79B9'7F4A'7C15U;
    state_ ^= state_ >> 32U;
  }

  std::uint64_t state_ = 0x5461'6C76;
};

std::int64_t checksum(std::string_view key, std::string_view value) {
  return Checksum(key).add(value).value();
}

void prepareCache(const SQLiteHandle& connection) {
  // What is lost in a power cut is fetched again, so nothing needs to wait for the disk.
  execute(connection,
          "PRAGMA synchronous = OFF; PRAGMA wal_autocheckpoint = 250; PRAGMA journal_size_limit = 1000000;"
          " PRAGMA cell_size_check = ON; PRAGMA trusted_schema = OFF");
  if (numberOf(connection, "PRAGMA user_version") != 0) return;
  SQLiteTransaction transaction(connection);
  execute(connection,
          "CREATE TABLE IF NOT EXISTS replies(key BLOB NOT NULL UNIQUE, head BLOB NOT NULL,"
          " body BLOB NOT NULL, headSum INTEGER NOT NULL, bodySum INTEGER NOT NULL, used INTEGER NOT NULL);"
          " CREATE INDEX IF NOT EXISTS uses ON replies(used)");
  execute(connection, std::string("PRAGMA user_version = ") + cacheVersion);
  transaction.commit();
}

std::int64_t pagesFor(std::size_t bytes) {
  return static_cast<std::int64_t>(bytes) / (bytesPerPage - 4) + 3;
}

}  // namespace

CacheConnection::CacheConnection(const std::filesystem::path& named, StoreWaitEnd end, std::int64_t maxBytes)
    : DatabaseFile(named, end, cacheVersion, prepareCache), maxPages_(maxBytes / bytesPerPage - tablesPages) {
  const std::int64_t most =
      std::max<std::int64_t>(maxPages_, 0) + tablesPages;  // a new file is never too large
  if (numberOf(handle(), "PRAGMA page_count") > most) throw storeFailure(SQLITE_TOOBIG);
}

CacheConnection::~CacheConnection() {
  if (read_.empty() || isAbandoned()) return;
  try {
    waitUntil(std::chrono::steady_clock::now());
    SQLiteTransaction transaction(handle());
    noteUses();
    transaction.commit();
  } catch (...) {
    // The order in which entries are forgotten is then not exact.
  }
}

std::optional<CacheEntry> CacheConnection::read(std::string_view key) {
  std::optional<CacheEntry> found;
  find_.forEachRow(
      [&] {
        found = CacheEntry{find_.column(0), find_.column(1)};
        const bool isSound =
            find_.number(2) == checksum(key, found->head) && find_.number(3) == checksum(key, found->body);
        if (!isSound) throw storeFailure(SQLITE_CORRUPT);
      },
      key);
  if (found && read_.size() < maxRead) read_.emplace(key);
  return found;
}

void CacheConnection::write(std::string_view key, const CacheEntry& entry) {
  const std::int64_t pages = pagesFor(2 * key.size() + entry.head.size() + entry.body.size());
  if (pages > maxPages_ / 2) return remove(key);
  SQLiteTransaction transaction(handle());
  noteUses();
  erase_.run(key);
  makeRoom(pages);
  insert_.run(key, std::string_view(entry.head), std::string_view(entry.body), checksum(key, entry.head),
              checksum(key, entry.body));
  transaction.commit();
}

void CacheConnection::replaceHead(std::string_view key, std::string_view former, std::string_view head) {
  SQLiteTransaction transaction(handle());
  if (head.size() > former.size()) {
    noteUses();
    makeRoom(pagesFor(head.size() - former.size()));
  }
  replaceHead_.run(key, former, head, checksum(key, head));
  transaction.commit();
}

void CacheConnection::remove(std::string_view key) {
  if (!find_.run(key)) return;  // takes no write lock
  erase_.run(key);
}

std::int64_t CacheConnection::pagesInUse() {
  return std::stoll(pageCount_.run().value_or("0")) - std::stoll(freePages_.run().value_or("0"));
}

void CacheConnection::noteUses() {
  for (const std::string& key : read_) use_.run(std::string_view(key));
  read_.clear();
}

void CacheConnection::makeRoom(std::int64_t pages) {
  while (pagesInUse() + pages > maxPages_) {
    eraseOldest_.run();
    if (sqlite3_changes(handle().get()) == 0) return;
  }
}

}  // namespace TalvoConsentSDK

#include "adapters/sqlite/StoreConnection.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <utility>
#include <variant>

namespace TalvoConsentSDK {

using namespace platform;

namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

constexpr const char* storeVersion = "1";

// The file's application id says whether removed values may remain in its free space or its log. This number
// means that there are none; any other number means that the file must be wiped. Each change that leaves
// such values in the file sets the id to 1 if it was this number, and otherwise increments it. Files written
// by versions that did not use the id have 0.
constexpr std::int64_t wiped = 0x54616C76;

// How long wiping may wait for other connections. The change itself is already on the disk by then.
constexpr milliseconds wipingWait{50};

void setWipingOwed(const SQLiteHandle& connection, std::int64_t owed) {
  execute(connection, "PRAGMA application_id = " + std::to_string(owed));
}

bool hasTable(const SQLiteHandle& connection) {
  return numberOf(connection, "SELECT count(*) FROM sqlite_master WHERE name = 'defaults'") == 1;
}

void createTable(const SQLiteHandle& connection) {
  SQLiteTransaction transaction(connection);
  if (!hasTable(connection)) {
    if (numberOf(connection, "PRAGMA page_count") <= 1) setWipingOwed(connection, wiped);
    execute(
        connection,
        "CREATE TABLE defaults(key BLOB PRIMARY KEY NOT NULL, isData INTEGER NOT NULL, value BLOB NOT NULL)"
        " WITHOUT ROWID");
  }
  execute(connection, std::string("PRAGMA user_version = ") + storeVersion);
  transaction.commit();
}

void prepareStore(const SQLiteHandle& connection) {
  execute(connection, "PRAGMA synchronous = FULL");
  if (numberOf(connection, "PRAGMA user_version") == 0 || !hasTable(connection)) createTable(connection);
}

}  // namespace

StoreConnection::StoreConnection(const std::filesystem::path& named, StoreWaitEnd end)
    : DatabaseFile(named, end, storeVersion, prepareStore) {}

std::optional<std::string> StoreConnection::read(std::string_view key, bool isData) {
  return read_.run(key, isData);
}

void StoreConnection::commit(const std::vector<StoreChange>& changes) {
  SQLiteTransaction transaction(handle());
  commit(transaction, make(changes));
}

// Makes the changes. Returns whether something must be wiped: a removed value, or a string that another
// string replaced, for example when the identified user changes.
bool StoreConnection::make(const std::vector<StoreChange>& changes) {
  bool mustWipe = false;
  for (const auto& [name, value] : changes) {
    const std::string_view key = name;
    if (const auto* const data = std::get_if<Data>(&value)) {
      write_.run(key, true, std::string_view(data->bytes));
    } else if (const auto* const text = std::get_if<std::string>(&value)) {
      const auto former = read(key, false);
      mustWipe |= former && former != *text;
      write_.run(key, false, std::string_view(*text));
    } else {
      erase_.run(key);
      mustWipe |= sqlite3_changes(handle().get()) > 0;
    }
  }
  return mustWipe;
}

bool StoreConnection::replace(std::string_view key, const std::optional<Data>& expected, const Data& value) {
  SQLiteTransaction transaction(handle());
  const std::string_view bytes = value.bytes;
  if (expected) {
    writeWhereData_.run(key, bytes, std::string_view(expected->bytes));
  } else {
    writeWhereNoData_.run(key, bytes);
  }
  const bool isReplaced = sqlite3_changes(handle().get()) == 1;
  commit(transaction, false);
  return isReplaced;
}

void StoreConnection::commit(SQLiteTransaction& transaction, bool mustWipe) {
  const std::int64_t owed = wipingOwed();
  if (mustWipe) setWipingOwed(handle(), owed == wiped ? 1 : owed + 1);
  owesWiping_ = mustWipe || owed != wiped;
  transaction.commit();
}

std::int64_t StoreConnection::wipingOwed() {
  return std::stoll(wipingOwed_.run().value_or("0"));
}

// SQLite's secure_delete is not enough: it misses copies of values in pages that were split, and values left
// behind by earlier versions. So this rewrites the file and then empties the log, which still holds the old
// pages.
void StoreConnection::wipeIfOwed() {
  if (!std::exchange(owesWiping_, false)) return;
  waitUntil(std::min(waitEnd(), steady_clock::now() + wipingWait));
  try {
    const std::int64_t owed = wipingOwed();
    execute(handle(), "VACUUM");
    if (numberOf(handle(), "PRAGMA wal_checkpoint(TRUNCATE)") != 0) return;
    SQLiteTransaction transaction(handle());
    if (wipingOwed() == owed) setWipingOwed(handle(), wiped);
    transaction.commit();
  } catch (const PlatformError&) {
    // The change itself is on the disk, and the file records that it must still be wiped.
  }
}

bool StoreConnection::copyValuesFrom(StoreConnection& other) {
  std::vector<StoreChange> values;
  try {
    SQLiteStatement all(other.handle(), "SELECT key, value, isData FROM defaults");
    all.forEachRow([&] {
      if (all.column(2) == "1") {
        values.emplace_back(all.column(0), Data(all.column(1)));
      } else {
        values.emplace_back(all.column(0), all.column(1));
      }
    });
  } catch (const PlatformError&) {  // the old file can no longer be read
    return false;
  }
  SQLiteTransaction transaction(handle());
  if (numberOf(handle(), "SELECT count(*) FROM defaults") != 0) return false;
  commit(transaction, make(values));
  return true;
}

}  // namespace TalvoConsentSDK

#include "benchmarks/BareStore.h"

#include <cstdlib>
#include <filesystem>

#include <sqlite3.h>
#include <unistd.h>

#include "TalvoConsentSDK/base/NeverDestroyed.h"

namespace TalvoConsentBenchmarks {

namespace {

void check(int code, int expected = SQLITE_OK) {
  if (code != expected) std::abort();
}

void bind(sqlite3_stmt* statement, int index, const std::string& bytes) {
  check(sqlite3_bind_blob64(statement, index, bytes.data(), bytes.size(), SQLITE_STATIC));
}

}  // namespace

BareStore::BareStore(const std::string& file) {
  check(sqlite3_open_v2(file.c_str(), &connection_,
                        SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX, nullptr));
  check(sqlite3_exec(connection_,
                     "PRAGMA journal_mode = WAL; PRAGMA synchronous = FULL;"
                     "CREATE TABLE IF NOT EXISTS pairs(key BLOB PRIMARY KEY NOT NULL, value BLOB NOT NULL)"
                     " WITHOUT ROWID",
                     nullptr, nullptr, nullptr));
  check(sqlite3_prepare_v3(connection_, "INSERT OR REPLACE INTO pairs VALUES(?1, ?2)", -1,
                           SQLITE_PREPARE_PERSISTENT, &write_, nullptr));
  check(sqlite3_prepare_v3(connection_, "SELECT value FROM pairs WHERE key = ?1", -1,
                           SQLITE_PREPARE_PERSISTENT, &read_, nullptr));
}

BareStore::~BareStore() {
  sqlite3_finalize(write_);
  sqlite3_finalize(read_);
  sqlite3_close(connection_);
}

void BareStore::save(const std::string& key, const std::string& value) {
  bind(write_, 1, key);
  bind(write_, 2, value);
  check(sqlite3_step(write_), SQLITE_DONE);
  sqlite3_reset(write_);
}

std::string BareStore::read(const std::string& key) {
  bind(read_, 1, key);
  std::string value;
  if (sqlite3_step(read_) == SQLITE_ROW) {
    value.assign(static_cast<const char*>(sqlite3_column_blob(read_, 0)),
                 static_cast<std::size_t>(sqlite3_column_bytes(read_, 0)));
  }
  sqlite3_reset(read_);
  return value;
}

std::string scratchFolder() {
  namespace fs = std::filesystem;
  static const std::string& folder =
      TalvoConsentSDK::neverDestroyed(fs::absolute("scratch-" + std::to_string(getpid())).string());
  fs::create_directories(folder);
  std::atexit([] {
    std::error_code ignored;
    fs::remove_all(folder, ignored);
  });
  return folder;
}

}  // namespace TalvoConsentBenchmarks

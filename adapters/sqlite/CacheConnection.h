#pragma once

// One open file of a cache. Only this class knows its schema. Failures are thrown as a PlatformError; its
// code is SQLITE_CORRUPT if an entry is not what was written. Not installed.

#include <cstdint>
#include <filesystem>
#include <optional>
#include <set>
#include <string>
#include <string_view>

#include "TalvoConsentSDK/platform/CacheStorage.h"

#include "adapters/sqlite/DatabaseFile.h"

namespace TalvoConsentSDK {

class CacheConnection : public DatabaseFile {
 public:
  /// Opens the file as `DatabaseFile` does. Throws SQLITE_TOOBIG if the file is larger than `maxBytes`.
  CacheConnection(const std::filesystem::path& named, StoreWaitEnd end, std::int64_t maxBytes);

  /// Writes which entries were read, unless the connection was abandoned or another one is writing.
  ~CacheConnection();

  std::optional<platform::CacheEntry> read(std::string_view key);
  void write(std::string_view key, const platform::CacheEntry& entry);
  void replaceHead(std::string_view key, std::string_view former, std::string_view head);
  void remove(std::string_view key);

 private:
  std::int64_t pagesInUse();
  void noteUses();
  void makeRoom(std::int64_t pages);

  const std::int64_t maxPages_;
  std::set<std::string, std::less<>> read_;  // the keys of entries read since the last change

  SQLiteStatement find_{handle(), "SELECT head, body, headSum, bodySum FROM replies WHERE key = ?1"};
  SQLiteStatement insert_{handle(),
                          "INSERT INTO replies(key, head, body, headSum, bodySum, used)"
                          " VALUES(?1, ?2, ?3, ?4, ?5, (SELECT ifnull(max(used), 0) + 1 FROM replies))"};
  SQLiteStatement replaceHead_{handle(),
                               "UPDATE replies SET head = ?3, headSum = ?4 WHERE key = ?1 AND head = ?2"};
  SQLiteStatement use_{handle(),
                       "UPDATE replies SET used = (SELECT max(used) + 1 FROM replies) WHERE key = ?1"};
  SQLiteStatement erase_{handle(), "DELETE FROM replies WHERE key = ?1"};
  SQLiteStatement eraseOldest_{handle(), "DELETE FROM replies WHERE used = (SELECT min(used) FROM replies)"};
  SQLiteStatement pageCount_{handle(), "PRAGMA page_count"};
  SQLiteStatement freePages_{handle(), "PRAGMA freelist_count"};
};

}  // namespace TalvoConsentSDK

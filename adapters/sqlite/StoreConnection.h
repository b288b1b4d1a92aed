#pragma once

// One open store. Only this class knows the schema. Use it on one thread at a time; failures are thrown as a
// PlatformError. Not installed.

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "TalvoConsentSDK/platform/UserDefaults.h"

#include "adapters/sqlite/DatabaseFile.h"

namespace TalvoConsentSDK {

class StoreConnection : public DatabaseFile {
 public:
  /// Opens the file as `DatabaseFile` does.
  StoreConnection(const std::filesystem::path& named, StoreWaitEnd end);

  std::optional<std::string> read(std::string_view key, bool isData);
  void commit(const std::vector<platform::StoreChange>& changes);
  bool replace(std::string_view key, const std::optional<platform::Data>& expected,
               const platform::Data& value);

  /// Wipes removed values from the files if the last change removed any, or found that earlier changes had
  /// left some there. If it cannot, for example because another process is reading, the next change by any
  /// connection tries again.
  void wipeIfOwed();

  /// Copies all values of another store to this one in one transaction, if this one holds no values yet.
  /// Returns whether it copied them.
  bool copyValuesFrom(StoreConnection& other);

 private:
  bool make(const std::vector<platform::StoreChange>& changes);
  void commit(SQLiteTransaction& transaction, bool mustWipe);
  std::int64_t wipingOwed();

  bool owesWiping_ = false;

  SQLiteStatement read_{handle(), "SELECT value FROM defaults WHERE key = ?1 AND isData = ?2"};
  SQLiteStatement write_{handle(),
                         "INSERT INTO defaults(key, isData, value) VALUES(?1, ?2, ?3)"
                         " ON CONFLICT(key) DO UPDATE SET isData = ?2, value = ?3"};
  SQLiteStatement erase_{handle(), "DELETE FROM defaults WHERE key = ?1"};
  SQLiteStatement writeWhereNoData_{
      handle(),
      "INSERT INTO defaults(key, isData, value) VALUES(?1, 1, ?2)"
      " ON CONFLICT(key) DO UPDATE SET isData = 1, value = ?2 WHERE isData = 0"};
  SQLiteStatement writeWhereData_{
      handle(), "UPDATE defaults SET value = ?2 WHERE key = ?1 AND isData = 1 AND value = ?3"};
  SQLiteStatement wipingOwed_{handle(), "PRAGMA application_id"};
};

}  // namespace TalvoConsentSDK

#pragma once

// One open store. Only this class knows the schema and configures SQLite. Use it on one thread at a time;
// failures are thrown as a PlatformError. Not installed.

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "TalvoConsentSDK/platform/UserDefaults.h"

#include "adapters/sqlite/SQLiteStatement.h"
#include "adapters/sqlite/StoreFile.h"

namespace TalvoConsentSDK {

class StoreConnection {
 public:
  /// Opens and checks the file that `named` leads to, and creates it if it is missing. Hold the lock of the
  /// file's folder, in either mode.
  StoreConnection(const std::filesystem::path& named, StoreWaitEnd end);

  /// Moves the write-ahead log's content to the file if no other connection has it open.
  ~StoreConnection();
  StoreConnection(const StoreConnection&) = delete;

  /// From now on, this connection's operations wait for other connections until `end` at most. Call it on the
  /// thread that runs them.
  void waitUntil(StoreWaitEnd end);

  std::optional<std::string> read(std::string_view key, bool isData);
  void commit(const std::vector<platform::StoreChange>& changes);
  bool replace(std::string_view key, const std::optional<platform::Data>& expected,
               const platform::Data& value);

  /// Wipes removed values from the files if the last change removed any, or found that earlier changes had
  /// left some there. If it cannot, for example because another process is reading, the next change by any
  /// connection tries again.
  void wipeIfOwed();

  /// Whether the path still leads to the files that this connection has open. `isInPlace` checks the
  /// database, its log and the log's index; `fileIsInPlace` checks only the database.
  bool isInPlace() const;
  bool fileIsInPlace() const;

  /// Call this when the write-ahead log was deleted or moved away while the file is still in place. Moves the
  /// log's content to the file, unless another connection has begun a new log meanwhile. Returns whether it
  /// moved the content. Hold the lock of the file's folder.
  bool moveLogToFile();

  /// Call this when the path leads to another file. Deletes this connection's log at the old path, because
  /// SQLite would take it as the log of the other file. This connection keeps using the deleted log.
  void deleteOldLog();

  /// Copies all values of another store to this one in one transaction, if this one holds no values yet.
  /// Returns whether it copied them.
  bool copyValuesFrom(StoreConnection& other);

  /// From now on, closing the connection leaves the file and its log as they are.
  void abandon();

 private:
  std::filesystem::path log() const { return std::filesystem::path(file_) += "-wal"; }
  std::filesystem::path index() const { return std::filesystem::path(file_) += "-shm"; }
  bool make(const std::vector<platform::StoreChange>& changes);
  void commit(SQLiteTransaction& transaction, bool mustWipe);
  std::int64_t wipingOwed();

  const std::filesystem::path named_;
  const std::filesystem::path file_;
  StoreWaitEnd waitEnd_;
  bool owesWiping_ = false;
  bool isAbandoned_ = false;
  std::optional<FolderLock> closing_;
  SQLiteHandle handle_;
  FileIdentity identity_, log_, index_;

  SQLiteStatement read_{handle_, "SELECT value FROM defaults WHERE key = ?1 AND isData = ?2"};
  SQLiteStatement write_{handle_,
                         "INSERT INTO defaults(key, isData, value) VALUES(?1, ?2, ?3)"
                         " ON CONFLICT(key) DO UPDATE SET isData = ?2, value = ?3"};
  SQLiteStatement erase_{handle_, "DELETE FROM defaults WHERE key = ?1"};
  SQLiteStatement writeWhereNoData_{
      handle_,
      "INSERT INTO defaults(key, isData, value) VALUES(?1, 1, ?2)"
      " ON CONFLICT(key) DO UPDATE SET isData = 1, value = ?2 WHERE isData = 0"};
  SQLiteStatement writeWhereData_{
      handle_, "UPDATE defaults SET value = ?2 WHERE key = ?1 AND isData = 1 AND value = ?3"};
  SQLiteStatement wipingOwed_{handle_, "PRAGMA application_id"};
};

}  // namespace TalvoConsentSDK

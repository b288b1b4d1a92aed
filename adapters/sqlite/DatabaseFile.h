#pragma once

// One open SQLite file with a write-ahead log. Notices if the files are damaged, deleted or replaced. Use it
// on one thread at a time; failures are thrown as a PlatformError. Not installed.

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>

#include "adapters/sqlite/SQLiteStatement.h"
#include "adapters/sqlite/StoreFile.h"

namespace TalvoConsentSDK {

class DatabaseFile {
 public:
  /// Opens and checks the file that `named` leads to, and creates it if it is missing. Throws SQLITE_ERROR if
  /// the file has another schema version; a new file has version 0. `prepare` sets up the connection and
  /// creates the schema. Hold the lock of the file's folder.
  DatabaseFile(const std::filesystem::path& named, StoreWaitEnd end, const std::string& schemaVersion,
               const std::function<void(const SQLiteHandle&)>& prepare);

  /// Moves the write-ahead log's content to the file if no other connection has it open.
  ~DatabaseFile();
  DatabaseFile(const DatabaseFile&) = delete;

  const SQLiteHandle& handle() const { return handle_; }
  StoreWaitEnd waitEnd() const { return waitEnd_; }

  /// From now on, this connection's operations wait for other connections until `end` at most. Call it on the
  /// thread that runs them.
  void waitUntil(StoreWaitEnd end);

  /// Whether the path still leads to the files that this connection has open. `isInPlace` checks the
  /// database, its log and the log's index; `fileIsInPlace` checks only the database.
  bool isInPlace() const;
  bool fileIsInPlace() const;

  /// Whether SQLite has opened the file for reading only, because the process may not write it.
  bool isReadOnly() const { return sqlite3_db_readonly(handle_.get(), "main") == 1; }

  /// Call this when the write-ahead log was deleted or moved away while the file is still in place. Moves the
  /// log's content to the file, unless another connection has begun a new log meanwhile. Returns whether it
  /// moved the content. Hold the lock of the file's folder.
  bool moveLogToFile();

  /// Call this when the path leads to another file. Deletes this connection's log at the old path, because
  /// SQLite would take it as the log of the other file. This connection keeps using the deleted log.
  void deleteOldLog();

  /// From now on, closing the connection leaves the file and its log as they are.
  void abandon();
  bool isAbandoned() const { return isAbandoned_; }

 private:
  std::filesystem::path log() const { return std::filesystem::path(file_) += "-wal"; }
  std::filesystem::path index() const { return std::filesystem::path(file_) += "-shm"; }

  const std::filesystem::path named_;
  const std::filesystem::path file_;
  StoreWaitEnd waitEnd_;
  bool isAbandoned_ = false;
  std::optional<FolderLock> closing_;
  SQLiteHandle handle_;
  FileIdentity identity_, log_, index_;
};

/// The first column of a query's last row, as a number; 0 if there are no rows.
std::int64_t numberOf(const SQLiteHandle& connection, const char* sql);

}  // namespace TalvoConsentSDK

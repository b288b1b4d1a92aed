#pragma once

// One opened store: the only place that knows its schema and what SQLite has to be told. It belongs to one
// thread at a time; what fails is thrown as a PlatformError. Not installed.

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
  /// Opens and checks the file that `named` leads to, and creates it when it is missing. Unless the thread
  /// has set out to set the file aside, hold the lock of the file's folder.
  StoreConnection(const std::filesystem::path& named, StoreWaitEnd end);

  /// Moves the write-ahead log's content to the file when nobody else has it open.
  ~StoreConnection();
  StoreConnection(const StoreConnection&) = delete;

  /// From now on nothing that the calling thread does waits for other connections beyond `end`.
  void waitUntil(StoreWaitEnd end);

  std::optional<std::string> read(std::string_view key, bool isData);
  void commit(const std::vector<platform::StoreChange>& changes);
  bool replace(std::string_view key, const std::optional<platform::Data>& expected,
               const platform::Data& value);

  /// Wipes removed values out of the files if the last change found or left any there. What keeps it from
  /// that, such as another process that reads, leaves it to the next change, whichever connection makes it.
  void wipeIfOwed();

  /// Whether the path still leads to the files that this connection has open.
  bool isInPlace() const;
  bool fileIsInPlace() const;

  /// When somebody took the write-ahead log from beside the file: moves what is in it to the file, which is
  /// right unless somebody else has begun a new log meanwhile. Tells whether it did.
  /// Hold the lock of the file's folder.
  bool bringLogHome();

  /// When the path leads to another file: takes away the log that still stands there, which SQLite would take
  /// for the other file's. This connection goes on with it.
  void leaveBehind();

  /// Fills this store from another, as one step, if it holds no value yet. Tells whether it then holds what
  /// the other does.
  bool takeOver(StoreConnection& other);

  /// Leaves files and log as they are from now on.
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

#include "adapters/sqlite/SQLiteCacheStorage.h"

#include <algorithm>
#include <cstdint>
#include <functional>
#include <limits>
#include <mutex>
#include <optional>
#include <string>
#include <system_error>
#include <utility>

#include "adapters/sqlite/CacheConnection.h"
#include "adapters/sqlite/StoreFile.h"

namespace TalvoConsentSDK {

using namespace platform;

namespace {

namespace fs = std::filesystem;

std::int64_t bytesOf(std::size_t bytes) {
  return static_cast<std::int64_t>(std::min<std::uint64_t>(bytes, std::numeric_limits<std::int64_t>::max()));
}

// Whether only a new file helps. SQLITE_ERROR is another schema or another version of it.
bool mustRecreateFile(const PlatformError& error) {
  return isDamage(error) || error.code() == SQLITE_ERROR || error.code() == SQLITE_TOOBIG;
}

}  // namespace

struct SQLiteCacheStorage::Access {
  static constexpr int maxAttempts = 4;

  enum class Kind { reading, change };

  template <class T>
  Result<T> perform(Kind kind, const std::function<T(CacheConnection&)>& operation) try {
    const std::scoped_lock guard(lock);
    const StoreWaitEnd end = std::chrono::steady_clock::now() + busyTimeout;
    std::optional<FolderLock> alone;
    for (int attempt = 1;; ++attempt) {
      try {
        connect(kind, end, alone);
        return finished(operation);
      } catch (const PlatformError& error) {
        if (current) current->abandon();
        current = nullptr;
        if (!mustRecreateFile(error) || attempt == maxAttempts) throw;
        recreateFile(end, alone);
      }
    }
  } catch (const PlatformError& error) {
    return storeFailure(error.code(), error.what() + (" (" + file.string() + ")"));
  }

  void connect(Kind kind, StoreWaitEnd end, const std::optional<FolderLock>& alone);
  void recreateFile(StoreWaitEnd end, std::optional<FolderLock>& alone);
  void deleteFiles() const;

  template <class T>
  Result<T> finished(const std::function<T(CacheConnection&)>& operation) {
    if constexpr (std::is_void_v<T>) {
      operation(*current);
      return {};
    } else {
      return operation(*current);
    }
  }

  const fs::path file;
  const std::int64_t maxBytes;
  const std::chrono::milliseconds busyTimeout;
  std::mutex lock{};
  std::unique_ptr<CacheConnection> current{};  // null until the first operation, and after a failure
};

// Makes `current` a connection to the file that the path leads to, which is begun anew if its log was
// deleted. A reader may use a log that was deleted: the next change notices it.
void SQLiteCacheStorage::Access::connect(Kind kind, StoreWaitEnd end,
                                         const std::optional<FolderLock>& alone) {
  if (current) current->waitUntil(end);
  if (current && (kind == Kind::reading ? current->fileIsInPlace() : current->isInPlace())) return;
  const fs::path folder = withoutLinks(file).parent_path();
  makeFolder(folder);
  std::optional<FolderLock> opening;
  if (!alone) opening.emplace(folder, current ? FolderLock::Kind::exclusive : FolderLock::Kind::shared, end);
  if (current) {
    const bool lacksLog = current->fileIsInPlace();
    current->deleteOldLog();
    current = nullptr;
    if (lacksLog && opening && opening->isHeld()) deleteFiles();  // they lack changes, such as removals
  }
  current = std::make_unique<CacheConnection>(file, end, maxBytes);
}

// Locks the folder exclusively, so that the next attempt finds out whether another process has begun the file
// anew already. If it has not, deletes the file.
void SQLiteCacheStorage::Access::recreateFile(StoreWaitEnd end, std::optional<FolderLock>& alone) {
  if (!alone) {
    alone.emplace(withoutLinks(file).parent_path(), FolderLock::Kind::exclusive, end);
    return;
  }
  if (!alone->isHeld()) throw storeFailure(SQLITE_CORRUPT);
  deleteFiles();
}

void SQLiteCacheStorage::Access::deleteFiles() const {
  const fs::path found = withoutLinks(file);
  std::error_code error;
  for (const char* suffix : {"-journal", "-wal", "-shm", ""}) fs::remove(fs::path(found) += suffix, error);
}

SQLiteCacheStorage::SQLiteCacheStorage(const fs::path& file, std::size_t maxBytes,
                                       std::chrono::milliseconds busyTimeout)
    : access_(new Access{absolutePath(file), bytesOf(maxBytes), busyTimeout}) {}

SQLiteCacheStorage::~SQLiteCacheStorage() = default;

Result<std::optional<CacheEntry>> SQLiteCacheStorage::read(std::string_view key) {
  return access_->perform<std::optional<CacheEntry>>(
      Access::Kind::reading, [&](CacheConnection& connection) { return connection.read(key); });
}

Result<void> SQLiteCacheStorage::write(std::string_view key, const CacheEntry& entry) {
  return access_->perform<void>(Access::Kind::change,
                                [&](CacheConnection& connection) { connection.write(key, entry); });
}

Result<void> SQLiteCacheStorage::replaceHead(std::string_view key, std::string_view former,
                                             std::string_view head) {
  return access_->perform<void>(
      Access::Kind::change, [&](CacheConnection& connection) { connection.replaceHead(key, former, head); });
}

Result<void> SQLiteCacheStorage::remove(std::string_view key) {
  return access_->perform<void>(Access::Kind::change,
                                [&](CacheConnection& connection) { connection.remove(key); });
}

}  // namespace TalvoConsentSDK

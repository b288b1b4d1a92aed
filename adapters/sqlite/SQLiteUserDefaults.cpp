#include "adapters/sqlite/SQLiteUserDefaults.h"

#include <functional>
#include <mutex>
#include <string>
#include <type_traits>
#include <utility>

#include "TalvoConsentSDK/base/Deadline.h"
#include "TalvoConsentSDK/platform/Printer.h"
#include "TalvoConsentSDK/platform/StoreDeadline.h"

#include "adapters/sqlite/StoreConnection.h"
#include "adapters/sqlite/StoreFile.h"

namespace TalvoConsentSDK {

using namespace platform;

namespace {

namespace fs = std::filesystem;

struct SetAsideNotice {
  fs::path name;
  ~SetAsideNotice() {
    if (!name.empty()) print("⚠️ The consent store was damaged and has been set aside as: " + name.string());
  }
};

}  // namespace

// Runs one operation at a time on the store that the path leads to.
struct SQLiteUserDefaults::Access {
  static constexpr int maxAttempts = 8;

  enum class Kind { reading, change };
  using Operation = std::function<void(StoreConnection&)>;

  template <class T>
  Result<T> perform(Kind kind, const std::function<T(StoreConnection&)>& operation) {
    try {
      if constexpr (std::is_void_v<T>) {
        run(kind, operation);
        return {};
      } else {
        T value{};
        run(kind, [&](StoreConnection& store) { value = operation(store); });
        return value;
      }
    } catch (const PlatformError& error) {
      return storeFailure(error.code(), error.what() + (" (" + file.string() + ")"));
    }
  }

  void run(Kind kind, const Operation& operation);
  void connect(StoreWaitEnd end, bool isAlone, bool& isDone);

  const fs::path file;
  const std::chrono::milliseconds busyTimeout;
  std::timed_mutex lock{};
  std::unique_ptr<StoreConnection> current{};  // null until the first operation, and after most failures
  std::unique_ptr<StoreConnection> lost{};     // a connection to a file that the path no longer leads to
};

// When a connection finds damage, this locks the folder exclusively and opens the path again. The file is set
// aside only if the new connection also finds damage: another thread or process may already have set the
// damaged file aside.
void SQLiteUserDefaults::Access::run(Kind kind, const Operation& operation) {
  const StoreWaitEnd end = deadlineAfter(StoreDeadline::remaining(busyTimeout));
  SetAsideNotice notice;  // printed after the lock is released, because the host provides the printer
  const std::unique_lock guard(lock, end);
  if (!guard) throw storeFailure(SQLITE_BUSY);
  std::optional<FolderLock> alone;
  bool isDone = false;
  for (int attempt = 1; attempt <= maxAttempts; ++attempt) {
    try {
      if (kind == Kind::change && current && current->isReadOnly()) current = nullptr;  // may be writable now
      connect(end, alone.has_value(), isDone);
      if (isDone) return current->wipeIfOwed();
      operation(*current);
      if (kind == Kind::reading) return;
      isDone = true;
      alone.reset();
    } catch (const PlatformError& error) {
      if (!isDamage(error)) {
        if (current && current->isInPlace()) current = nullptr;
        throw;
      }
      if (current) current->abandon();
      current = nullptr;
      const fs::path damaged = withoutLinks(file);
      if (!alone) {
        alone.emplace(damaged.parent_path(), FolderLock::Kind::exclusive, end);
        continue;
      }
      const auto newName = alone->isHeld() ? setAside(damaged) : std::nullopt;
      if (!newName) throw;
      notice.name = *newName;
      alone.reset();
    }
  }
  throw storeFailure(SQLITE_BUSY, "the file keeps being replaced");
}

// Makes `current` a connection to the file that the path leads to. Sets `isDone` to false if that file lacks
// the change that was made.
//
// If the file was deleted or set aside while this process had it open, and the new file holds no values, all
// values of the old file are copied to it, not only those of the current change: tidying up files must not
// undo a user's choice. If the new file already holds values, it is left as it is: the values may be newer
// decisions, and a missing value may have been removed on purpose.
void SQLiteUserDefaults::Access::connect(StoreWaitEnd end, bool isAlone, bool& isDone) {
  if (current) current->waitUntil(end);
  if (current && current->isInPlace()) return;
  const fs::path folder = withoutLinks(file).parent_path();
  makeFolder(folder);
  std::optional<FolderLock> opening;
  if (!isAlone)
    opening.emplace(folder, current ? FolderLock::Kind::exclusive : FolderLock::Kind::shared, end);
  if (current && current->fileIsInPlace()) {
    isDone = current->moveLogToFile() && isDone;
    current = nullptr;
  } else if (current) {
    current->deleteOldLog();
    lost = std::move(current);
  }
  auto opened = std::make_unique<StoreConnection>(file, end);
  if (lost) {
    lost->waitUntil(end);
    isDone = opened->copyValuesFrom(*lost) && isDone;
  }
  lost = nullptr;
  current = std::move(opened);
}

SQLiteUserDefaults::SQLiteUserDefaults(const fs::path& file, std::chrono::milliseconds busyTimeout)
    : access_(new Access{absolutePath(file), busyTimeout}) {}

SQLiteUserDefaults::~SQLiteUserDefaults() = default;

Result<std::optional<Data>> SQLiteUserDefaults::data(std::string_view key) {
  return access_->perform<std::optional<Data>>(Access::Kind::reading,
                                               [&](StoreConnection& store) -> std::optional<Data> {
                                                 auto bytes = store.read(key, true);
                                                 if (!bytes) return std::nullopt;
                                                 return Data(*std::move(bytes));
                                               });
}

Result<std::optional<std::string>> SQLiteUserDefaults::string(std::string_view key) {
  return access_->perform<std::optional<std::string>>(
      Access::Kind::reading, [&](StoreConnection& store) { return store.read(key, false); });
}

Result<void> SQLiteUserDefaults::set(std::string_view key, Data value) {
  return commit({StoreChange(std::string(key), std::move(value))});
}

Result<void> SQLiteUserDefaults::set(std::string_view key, std::string value) {
  return commit({StoreChange(std::string(key), std::move(value))});
}

Result<void> SQLiteUserDefaults::remove(std::string_view key) {
  return commit({StoreChange(std::string(key), std::monostate())});
}

Result<bool> SQLiteUserDefaults::replace(std::string_view key, const std::optional<Data>& expected,
                                         Data value) {
  return access_->perform<bool>(Access::Kind::change,
                                [&](StoreConnection& store) { return store.replace(key, expected, value); });
}

Result<void> SQLiteUserDefaults::commit(const std::vector<StoreChange>& changes) {
  return access_->perform<void>(Access::Kind::change, [&](StoreConnection& store) { store.commit(changes); });
}

}  // namespace TalvoConsentSDK

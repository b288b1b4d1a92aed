#pragma once

// A device store in one SQLite file.

#include <chrono>
#include <filesystem>
#include <memory>
#include <vector>

#include "TalvoConsentSDK/base/Export.h"
#include "TalvoConsentSDK/platform/UserDefaults.h"

namespace TalvoConsentSDK TALVO_EXPORT {

/// Keeps values in a file that several objects and processes may share. Every operation is one transaction,
/// which is on the disk when the operation returns. The first operation opens the file, which takes a
/// millisecond or two. Only the file's owner can read and write it. Keys and values may hold any bytes. Does
/// not support network file systems, files with hard links, or use of the same object across a `fork`.
///
/// The path is checked before each read, and before and after each change. If it now leads to another file,
/// or the journal beside it was removed, the operation continues with the file that is there now; if that
/// file holds no values, the values of the lost file are copied to it. Before an operation returns, it wipes
/// the values that it removed, and the strings that it replaced by other strings, from the file and its
/// journal. If others are using the file at that moment, or the disk is full, a later change wipes them.
///
/// A failure is a `PlatformError` of the domain "SQLite" with SQLite's extended result code. Its text names
/// the file and never contains a value. After a failure, the next operation opens the file again, so the
/// store recovers once the disk does. A damaged file is renamed to "NAME.damaged-N", one line is printed, and
/// the operation continues with a new, empty file.
class SQLiteUserDefaults : public platform::UserDefaults {
 public:
  /// The first operation creates `file` and its folder if they are missing. `file` may be a symbolic link;
  /// after links are followed, the path may have at most 500 bytes. An operation waits for other threads and
  /// connections for at most `busyTimeout`, or until the calling thread's `StoreDeadline` if that is sooner;
  /// then it fails.
  explicit SQLiteUserDefaults(const std::filesystem::path& file,
                              std::chrono::milliseconds busyTimeout = std::chrono::seconds(5));
  ~SQLiteUserDefaults() override;

  Result<std::optional<platform::Data>> data(std::string_view key) override;
  Result<std::optional<std::string>> string(std::string_view key) override;
  Result<void> set(std::string_view key, platform::Data value) override;
  Result<void> set(std::string_view key, std::string value) override;
  Result<bool> replace(std::string_view key, const std::optional<platform::Data>& expected,
                       platform::Data value) override;
  Result<void> remove(std::string_view key) override;
  Result<void> commit(const std::vector<platform::StoreChange>& changes) override;

  /// Does nothing, because every change is already on the disk.
  Result<void> synchronize() override { return {}; }

 private:
  struct Access;

  const std::unique_ptr<Access> access_;
};

}  // namespace TalvoConsentSDK

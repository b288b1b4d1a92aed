#pragma once

// The device store in one SQLite file.

#include <chrono>
#include <filesystem>
#include <memory>
#include <vector>

#include "TalvoConsentSDK/base/Export.h"
#include "TalvoConsentSDK/platform/UserDefaults.h"

namespace TalvoConsentSDK TALVO_EXPORT {

/// Keeps values in a file that several objects and processes may share; every operation is one transaction,
/// on the disk when it returns. The file is opened by the first operation, which takes a millisecond or two,
/// and can only be read and written by the person it belongs to. Keys and values may hold any bytes. Not for
/// network file systems or files with hard links, and not to be carried across a `fork`.
///
/// The path is looked at before and after each change, and before each reading. When it has come to lead to
/// another file, or the journal beside it was taken away, the operation goes on with what stands there now,
/// and a store without values there gets those of the lost file. What is removed, and a string that another
/// one replaces, is wiped out of the file and its journal before the operation returns or, when others use
/// the file just then or the disk is full, by the next change that can.
///
/// A failure is a `PlatformError` of domain "SQLite" with SQLite's extended result code and a text that names
/// the file and never holds a value. After one, the next operation opens the file again, so a disk that comes
/// back is used again. A file that turns out damaged is renamed to "NAME.damaged-N", one line is printed, and
/// the operation goes on with a new, empty file.
class SQLiteUserDefaults : public platform::UserDefaults {
 public:
  /// `file` and its folder are created when they are missing; it may be a symbolic link. Its path, with links
  /// followed, has at most 500 bytes. An operation fails once it has waited for other threads and connections
  /// for `busyTimeout` or, when that is sooner, until the calling thread's `StoreDeadline`.
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

  /// Does nothing: what has been set or removed already is durable.
  Result<void> synchronize() override { return {}; }

 private:
  struct Access;

  const std::unique_ptr<Access> access_;
};

}  // namespace TalvoConsentSDK

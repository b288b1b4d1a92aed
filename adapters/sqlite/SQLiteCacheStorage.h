#pragma once

// What an HTTP cache keeps, in one SQLite file.

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <memory>

#include "TalvoConsentSDK/base/Export.h"
#include "TalvoConsentSDK/platform/CacheStorage.h"

namespace TalvoConsentSDK TALVO_EXPORT {

/// Keeps entries in a file that several objects and processes may share. The first operation opens the file,
/// which takes a millisecond or two. Only the file's owner can read and write it. Changes do not wait for the
/// disk: a power cut may cost entries or undo the latest changes, but never mixes entries up. Does not
/// support network file systems, or use of the same object across a `fork`.
///
/// A file that is damaged, larger than allowed, or from another version is deleted and created again. If the
/// file was deleted or replaced while it was open, the next operation opens what is there now; if its log
/// was, the next change begins the file anew. An operation fails if the file cannot be used, for example
/// because others are writing to it or the disk is full; the next operation tries again. Thread-safe.
class SQLiteCacheStorage : public platform::CacheStorage {
 public:
  /// The first operation creates `file` and its folder if they are missing. The file takes at most
  /// `maxBytes`; its log may take some more while it is open. No entry that is larger than half of the file
  /// is kept; in less than 90 kB, none is kept. An operation waits for other connections for at most
  /// `busyTimeout`.
  explicit SQLiteCacheStorage(const std::filesystem::path& file, std::size_t maxBytes = 10'000'000,
                              std::chrono::milliseconds busyTimeout = std::chrono::milliseconds(50));
  ~SQLiteCacheStorage() override;

  Result<std::optional<platform::CacheEntry>> read(std::string_view key) override;
  Result<void> write(std::string_view key, const platform::CacheEntry& entry) override;
  Result<void> replaceHead(std::string_view key, std::string_view former, std::string_view head) override;
  Result<void> remove(std::string_view key) override;

 private:
  struct Access;

  const std::unique_ptr<Access> access_;
};

}  // namespace TalvoConsentSDK

#pragma once

// The files of a store as the file system sees them: where they are, whose they are, which ones they are, and
// how a damaged one gets out of the way. What is in them is StoreConnection's business. Not installed.

#include <array>
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <utility>

#include <sys/types.h>

namespace TalvoConsentSDK {

/// When a thread gives up waiting.
using StoreWaitEnd = std::chrono::steady_clock::time_point;

/// Where `file` is once every symbolic link on the way has been followed, also those whose target is missing.
/// SQLite keeps the side files there.
std::filesystem::path withoutLinks(const std::filesystem::path& file);

/// Creates the folders that are missing, for their owner alone.
void makeFolder(const std::filesystem::path& folder);

/// Creates the file when it is missing, and takes everybody's but its owner's rights to it and its side
/// files.
void makeOwnersFile(const std::filesystem::path& file);

/// Which file stands at a path, as device and inode; nothing when none does or it cannot be looked at.
using FileIdentity = std::optional<std::pair<dev_t, ino_t>>;
FileIdentity identityOf(const std::filesystem::path& file);

/// In bytes; nothing, which is less than any size, where there is no file or it cannot be looked at.
std::optional<std::int64_t> sizeOf(const std::filesystem::path& file);

/// Keeps processes and threads that open or close a store in a folder (shared) apart from one that sets a
/// store of that folder aside (exclusive). It leaves no file behind and ends with its process.
class FolderLock {
 public:
  enum class Kind { shared, exclusive };

  /// Waits until `end`, then throws SQLITE_BUSY. A folder that cannot be locked is not: see `isHeld`.
  FolderLock(const std::filesystem::path& folder, Kind kind, StoreWaitEnd end);
  ~FolderLock();
  FolderLock(const FolderLock&) = delete;

  bool isHeld() const { return descriptor_ >= 0; }

 private:
  int descriptor_;
};

/// Renames the file and its side files to a name that was free, which it returns; nothing when that is not
/// possible. Hold the folder's lock exclusively.
std::optional<std::filesystem::path> setAside(const std::filesystem::path& file);

}  // namespace TalvoConsentSDK

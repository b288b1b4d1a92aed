#pragma once

// The files of a store in the file system: paths, permissions, identity, and setting a damaged file aside.
// StoreConnection handles their content. Not installed.

#include <array>
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <utility>

#include <sys/types.h>

namespace TalvoConsentSDK {

/// The time at which a thread gives up waiting.
using StoreWaitEnd = std::chrono::steady_clock::time_point;

/// The absolute path, so that the store stays the same when the process changes its working directory. Empty
/// if there is none: every operation then fails to open it.
std::filesystem::path absolutePath(const std::filesystem::path& file);

/// The path of `file` with every symbolic link followed, including links whose target is missing. SQLite
/// keeps the side files beside this path.
std::filesystem::path withoutLinks(const std::filesystem::path& file);

/// Creates missing folders with access for their owner only.
void makeFolder(const std::filesystem::path& folder);

/// Creates the file if it is missing, and restricts access to it and its side files to its owner.
void makePrivateFile(const std::filesystem::path& file);

/// The device and inode of the file at a path; nothing if there is none or it cannot be examined.
using FileIdentity = std::optional<std::pair<dev_t, ino_t>>;
FileIdentity identityOf(const std::filesystem::path& file);

/// The file's size in bytes; nothing if there is no file or it cannot be examined. An absent size compares
/// less than any other.
std::optional<std::int64_t> sizeOf(const std::filesystem::path& file);

/// A lock on the folder of a store. Opening or closing a store takes it shared; setting a store aside, or
/// reopening one whose files were replaced or removed, takes it exclusively. It works across threads and
/// processes, needs no lock file, and ends with its process.
class FolderLock {
 public:
  enum class Kind { shared, exclusive };

  /// Waits for the lock until `end`, then throws SQLITE_BUSY. If the folder cannot be locked at all, `isHeld`
  /// returns false.
  FolderLock(const std::filesystem::path& folder, Kind kind, StoreWaitEnd end);
  ~FolderLock();
  FolderLock(const FolderLock&) = delete;

  bool isHeld() const { return descriptor_ >= 0; }

 private:
  int descriptor_;
};

/// Renames the file and its side files to a free name and returns that name, or nothing if a rename fails.
/// Hold the folder's lock exclusively.
std::optional<std::filesystem::path> setAside(const std::filesystem::path& file);

}  // namespace TalvoConsentSDK

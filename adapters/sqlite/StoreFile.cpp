#include "adapters/sqlite/StoreFile.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <mutex>
#include <string>
#include <system_error>
#include <thread>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include "adapters/sqlite/SQLiteStatement.h"

namespace TalvoConsentSDK {

namespace {

namespace fs = std::filesystem;

// In the order in which they are set aside. The file itself comes last, because otherwise a new file of the
// same name could be created beside the old side files.
constexpr std::array sideFilesAndFile{"-journal", "-wal", "-shm", ""};

fs::path sibling(const fs::path& file, const char* suffix) {
  return fs::path(file) += suffix;
}

[[noreturn]] void cannotOpen(int reason) {
  const std::string text = std::generic_category().message(reason);
  throw storeFailure(SQLITE_CANTOPEN, sqlite3_errstr(SQLITE_CANTOPEN) + (": " + text));
}

// In 32-bit builds, the standard library's function misses links whose inode number or time needs more than
// 32 bits.
std::optional<fs::path> linkTarget(const fs::path& path) {
  std::array<char, PATH_MAX> target{};
  const ssize_t size = ::readlink(path.c_str(), target.data(), target.size());
  if (size < 0) return std::nullopt;
  return fs::path(target.data(), target.data() + size);
}

fs::path withoutLinks(const fs::path& path, int& linksLeft) {
  if (!path.has_relative_path()) return path;
  fs::path folder = withoutLinks(path.parent_path(), linksLeft);
  const fs::path name = path.filename();
  if (name == "..") return folder.parent_path();
  if (name.empty() || name == ".") return folder;
  const auto target = linkTarget(folder / name);
  if (!target) return folder / name;
  if (--linksLeft < 0) cannotOpen(ELOOP);
  return withoutLinks(folder / *target, linksLeft);
}

bool pathExists(const fs::path& path) {
  struct stat status{};
  return ::lstat(path.c_str(), &status) == 0;
}

}  // namespace

fs::path absolutePath(const fs::path& file) {
  std::error_code error;
  return fs::absolute(file, error);
}

fs::path withoutLinks(const fs::path& file) {
  int linksLeft = 40;
  return withoutLinks(file, linksLeft);
}

void makeFolder(const fs::path& folder) {
  if (::mkdir(folder.c_str(), S_IRWXU) == 0 || errno != ENOENT || !folder.has_relative_path()) return;
  makeFolder(folder.parent_path());
  ::mkdir(folder.c_str(), S_IRWXU);
}

// A process that closes any descriptor of a file loses all its locks on that file. So this opens the file
// only if it did not exist, and the mutex keeps other threads from opening it before it is closed again.
void makePrivateFile(const fs::path& file) {
  static constinit std::mutex lock;
  const std::scoped_lock guard(lock);
  const int descriptor = ::open(file.c_str(), O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC, S_IRUSR | S_IWUSR);
  if (descriptor >= 0) {
    ::close(descriptor);
  } else if (errno != EEXIST) {
    cannotOpen(errno);
  }
  // SQLite creates side files with the same mode as the file; this fixes those that already exist.
  for (const char* suffix : sideFilesAndFile) {
    const fs::path each = sibling(file, suffix);
    struct stat status{};
    if (::lstat(each.c_str(), &status) != 0 || !S_ISREG(status.st_mode)) continue;
    constexpr mode_t owners = S_IRUSR | S_IWUSR;
    if (status.st_mode & ALLPERMS & ~owners) ::chmod(each.c_str(), status.st_mode & owners);
  }
}

FileIdentity identityOf(const fs::path& file) {
  struct stat status{};
  if (::stat(file.c_str(), &status) != 0) return std::nullopt;
  return std::pair(status.st_dev, status.st_ino);
}

std::optional<std::int64_t> sizeOf(const fs::path& file) {
  struct stat status{};
  if (::stat(file.c_str(), &status) != 0) return std::nullopt;
  return status.st_size;
}

FolderLock::FolderLock(const fs::path& folder, Kind kind, StoreWaitEnd end)
    : descriptor_(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {
  const int operation = (kind == Kind::shared ? LOCK_SH : LOCK_EX) | LOCK_NB;
  while (isHeld() && ::flock(descriptor_, operation) != 0) {
    const bool isBusy = errno == EWOULDBLOCK;
    if (isBusy && std::chrono::steady_clock::now() < end) {
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    } else if (errno != EINTR) {
      ::close(std::exchange(descriptor_, -1));
      if (isBusy) throw storeFailure(SQLITE_BUSY);
    }
  }
}

// Unlocks before it closes, because a child process forked meanwhile shares the lock and would keep it.
FolderLock::~FolderLock() {
  if (!isHeld()) return;
  ::flock(descriptor_, LOCK_UN);
  ::close(descriptor_);
}

std::optional<fs::path> setAside(const fs::path& file) {
  fs::path name;
  for (int n = 1; name.empty(); ++n) {
    const fs::path candidate = sibling(file, (".damaged-" + std::to_string(n)).c_str());
    const auto isUsedWith = [&](const char* suffix) { return pathExists(sibling(candidate, suffix)); };
    if (std::ranges::none_of(sideFilesAndFile, isUsedWith)) name = candidate;
  }
  for (const char* suffix : sideFilesAndFile) {
    const fs::path each = sibling(file, suffix);
    if (pathExists(each) && ::rename(each.c_str(), sibling(name, suffix).c_str()) != 0) return std::nullopt;
  }
  return name;
}

}  // namespace TalvoConsentSDK

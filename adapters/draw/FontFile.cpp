#include "adapters/draw/FontFile.h"

#if __has_include(<sys/mman.h>)

#include <cstddef>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace TalvoConsentSDK {

std::shared_ptr<FontFile> FontFile::open(const std::string& path) {
  const int file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);  // a pipe must not block
  if (file < 0) return nullptr;
  struct stat status{};
  void* start = MAP_FAILED;
  if (fstat(file, &status) == 0 && S_ISREG(status.st_mode) && status.st_size > 0) {
    start = mmap(nullptr, static_cast<std::size_t>(status.st_size), PROT_READ, MAP_PRIVATE, file, 0);
  }
  close(file);
  if (start == MAP_FAILED) return nullptr;
  return std::shared_ptr<FontFile>(
      new FontFile({static_cast<const char*>(start), static_cast<std::size_t>(status.st_size)}));
}

FontFile::~FontFile() {
  munmap(const_cast<char*>(bytes_.data()), bytes_.size());
}

void FontFile::releasePages() {
  madvise(const_cast<char*>(bytes_.data()), bytes_.size(), MADV_DONTNEED);
}

}  // namespace TalvoConsentSDK

#else

namespace TalvoConsentSDK {

std::shared_ptr<FontFile> FontFile::open(const std::string&) {
  return nullptr;
}

FontFile::~FontFile() = default;

void FontFile::releasePages() {}

}  // namespace TalvoConsentSDK

#endif

#include "adapters/draw/FontFile.h"

#if __has_include(<sys/mman.h>)

#include <algorithm>
#include <cstddef>

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

namespace TalvoConsentSDK {

std::shared_ptr<FontFile> FontFile::open(const std::string& path) {
  const int file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);  // a pipe must not block
  if (file < 0) return nullptr;
  const off_t end = lseek(file, 0, SEEK_END);  // fstat would need a reason in the privacy manifest
  const auto size = static_cast<std::size_t>(std::max<off_t>(end, 0));
  void* const start = size > 0 ? mmap(nullptr, size, PROT_READ, MAP_PRIVATE, file, 0) : MAP_FAILED;
  close(file);
  if (start == MAP_FAILED) return nullptr;
  return std::shared_ptr<FontFile>(new FontFile({static_cast<const char*>(start), size}));
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

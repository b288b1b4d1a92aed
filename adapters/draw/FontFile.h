#pragma once

// The file of a font. It is mapped, so that the system shares its pages among processes.

#include <memory>
#include <string>
#include <string_view>

namespace TalvoConsentSDK {

/// Main thread only. If another program shortens the file while it is open, reading it ends the process, as
/// with every mapped file; programs that install fonts replace the file instead.
class FontFile {
 public:
  /// Returns null if the file cannot be mapped.
  static std::shared_ptr<FontFile> open(const std::string& path);

  ~FontFile();
  FontFile(const FontFile&) = delete;
  FontFile& operator=(const FontFile&) = delete;

  std::string_view bytes() const { return bytes_; }

  /// The process no longer counts the file's pages as its memory. The system brings each back when it is
  /// read.
  void releasePages();

 private:
  explicit FontFile(std::string_view bytes) : bytes_(bytes) {}

  const std::string_view bytes_;
};

}  // namespace TalvoConsentSDK

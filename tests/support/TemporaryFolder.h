#pragma once

// A folder for the files of one test.

#include <filesystem>
#include <string>
#include <system_error>

#include <unistd.h>

namespace TalvoConsentSDK {

namespace fs = std::filesystem;

/// The destructor removes the folder with everything in it.
class TemporaryFolder {
 public:
  TemporaryFolder() : path(make()) {}
  ~TemporaryFolder() {
    std::error_code ignored;  // a thread that outlives the test may still write
    fs::remove_all(path, ignored);
  }
  TemporaryFolder(const TemporaryFolder&) = delete;

  const fs::path path;

 private:
  static fs::path make() {
    std::string pattern = (fs::temp_directory_path() / "talvo-XXXXXX").string();
    return ::mkdtemp(pattern.data());
  }
};

}  // namespace TalvoConsentSDK

#pragma once

// Helpers for tests of the SQLite store: a temporary folder, another connection to a file, and a fixture.

#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <string>

#include <sqlite3.h>
#include <unistd.h>

#include "TalvoConsentSDK/TalvoConsentSDK.h"

#include "testing/ChildProcess.h"
#include "tests/support/Testing.h"

namespace TalvoConsentSDK {

namespace fs = std::filesystem;

class TemporaryFolder {
 public:
  TemporaryFolder() : path_(::mkdtemp(pattern_.data())) {}
  ~TemporaryFolder() { fs::remove_all(path_); }
  TemporaryFolder(const TemporaryFolder&) = delete;

  fs::path file() const { return path_ / "app" / "store.db"; }

 private:
  std::string pattern_ = (fs::temp_directory_path() / "store-XXXXXX").string();
  fs::path path_;
};

inline void write(const fs::path& file, const std::string& content) {
  fs::create_directories(file.parent_path());
  std::ofstream(file, std::ios::binary) << content;
}

// Stands for another program that uses the same file.
class OtherConnection {
 public:
  explicit OtherConnection(const fs::path& file) { sqlite3_open(file.c_str(), &connection_); }
  ~OtherConnection() { sqlite3_close(connection_); }
  OtherConnection(const OtherConnection&) = delete;

  void execute(const char* sql) {
    ASSERT_EQ(sqlite3_exec(connection_, sql, nullptr, nullptr, nullptr), SQLITE_OK)
        << sqlite3_errmsg(connection_);
  }

 private:
  sqlite3* connection_ = nullptr;
};

inline int inAChild(const std::function<void()>& work) {
  return ChildProcess([&](const ProcessChannel&) { work(); }).wait();
}

class SQLiteUserDefaultsTest : public ::testing::Test {
 protected:
  SQLiteUserDefaultsTest() {
    Platform platform;
    platform.printer = printer;
    Platform::install(platform);
  }

  TemporaryFolder folder;
  fs::path file = folder.file();
  std::shared_ptr<CapturingPrinter> printer = std::make_shared<CapturingPrinter>();
};

}  // namespace TalvoConsentSDK

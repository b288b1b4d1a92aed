#pragma once

// Helpers for tests of the SQLite store: another connection to a file, and a fixture.

#include <fstream>
#include <functional>
#include <memory>
#include <string>

#include <sqlite3.h>

#include "TalvoConsentSDK/TalvoConsentSDK.h"

#include "testing/ChildProcess.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/Testing.h"

namespace TalvoConsentSDK {

/// The file of a store, in a folder that does not exist yet.
struct TemporaryStore : TemporaryFolder {
  const fs::path file = path / "app" / "store.db";
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

  /// Runs a shell command in the folder `root`.
  void shell(const std::string& command) const {
    EXPECT_EQ(std::system(("cd " + root.string() + " && { " + command + "; }").c_str()), 0);
  }

  const TemporaryStore temporary;
  const fs::path root = temporary.path, file = temporary.file;
  std::shared_ptr<CapturingPrinter> printer = std::make_shared<CapturingPrinter>();
};

}  // namespace TalvoConsentSDK

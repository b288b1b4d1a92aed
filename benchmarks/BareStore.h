#pragma once

// What a host would write to keep one value durably in SQLite, and nothing more.

#include <string>

struct sqlite3;
struct sqlite3_stmt;

namespace TalvoConsentBenchmarks {

/// A file in write-ahead mode, synchronised fully; one value under each key. Aborts on any error.
class BareStore {
 public:
  explicit BareStore(const std::string& file);
  ~BareStore();
  BareStore(const BareStore&) = delete;
  BareStore& operator=(const BareStore&) = delete;

  void save(const std::string& key, const std::string& value);

  /// The value's bytes; empty when there is none.
  std::string read(const std::string& key);

 private:
  sqlite3* connection_ = nullptr;
  sqlite3_stmt* write_ = nullptr;
  sqlite3_stmt* read_ = nullptr;
};

/// An empty folder of this process's own below the working directory, which is to be a real disk; removed
/// when the process exits.
std::string scratchFolder();

}  // namespace TalvoConsentBenchmarks

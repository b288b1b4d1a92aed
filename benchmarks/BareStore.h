#pragma once

// The minimum that a host would write to store one value durably in SQLite.

#include <string>

struct sqlite3;
struct sqlite3_stmt;

namespace TalvoConsentBenchmarks {

/// A file in write-ahead mode with full synchronisation, with one value per key. Aborts on any error.
class BareStore {
 public:
  explicit BareStore(const std::string& file);
  ~BareStore();
  BareStore(const BareStore&) = delete;
  BareStore& operator=(const BareStore&) = delete;

  void save(const std::string& key, const std::string& value);

  /// The value's bytes; empty if there is no value.
  std::string read(const std::string& key);

 private:
  sqlite3* connection_ = nullptr;
  sqlite3_stmt* write_ = nullptr;
  sqlite3_stmt* read_ = nullptr;
};

/// This process's own folder, made in the working directory by the first call and removed when the process
/// exits. The working directory should be on a real disk.
std::string scratchFolder();

}  // namespace TalvoConsentBenchmarks

#include "adapters/sqlite/SQLiteUserDefaults.h"

#include <cerrno>
#include <cstdint>
#include <fstream>
#include <iterator>
#include <set>
#include <string>
#include <system_error>
#include <thread>
#include <utility>

#include <fcntl.h>
#include <sqlite3.h>
#include <sys/stat.h>
#include <unistd.h>

#include "TalvoConsentSDK/platform/Printer.h"

namespace TalvoConsentSDK {

namespace {

namespace fs = std::filesystem;

constexpr const char* schemaVersion = "1";

PlatformError failure(int code, const std::string& text) {
  return {"SQLite", code, text};
}

PlatformError lastFailure(sqlite3* connection) {
  return failure(sqlite3_extended_errcode(connection), sqlite3_errmsg(connection));
}

bool isBusy(const PlatformError& error) {
  return (error.code() & 0xFF) == SQLITE_BUSY;
}

bool isDamage(const PlatformError& error) {
  const int primaryCode = error.code() & 0xFF;
  return primaryCode == SQLITE_CORRUPT || primaryCode == SQLITE_NOTADB;
}

struct Close {
  void operator()(sqlite3* connection) const noexcept { sqlite3_close(connection); }
  void operator()(sqlite3_stmt* statement) const noexcept { sqlite3_finalize(statement); }
};
using Handle = std::unique_ptr<sqlite3, Close>;

// A prepared statement that yields at most one column of one row.
class Statement {
 public:
  Statement(const Handle& connection, const char* sql) {
    sqlite3_stmt* prepared = nullptr;
    sqlite3_prepare_v3(connection.get(), sql, -1, SQLITE_PREPARE_PERSISTENT, &prepared, nullptr);
    if (!prepared) throw lastFailure(connection.get());
    statement_.reset(prepared);
  }

  // Runs it with its parameters in order.
  template <class... Parameters>
  std::optional<std::string> run(const Parameters&... parameters) {
    const Reset reset{statement_.get()};
    int index = 0;
    (check(bind(++index, parameters)), ...);
    std::optional<std::string> value;
    int code = sqlite3_step(statement_.get());
    for (; code == SQLITE_ROW; code = sqlite3_step(statement_.get())) value = column();
    if (code != SQLITE_DONE) throw lastFailure(sqlite3_db_handle(statement_.get()));
    return value;
  }

 private:
  struct Reset {
    sqlite3_stmt* statement;
    ~Reset() {
      sqlite3_reset(statement);
      sqlite3_clear_bindings(statement);
    }
  };

  void check(int code) const {
    if (code != SQLITE_OK) throw lastFailure(sqlite3_db_handle(statement_.get()));
  }

  int bind(int index, bool flag) { return sqlite3_bind_int(statement_.get(), index, flag); }

  // A null pointer would bind NULL.
  int bind(int index, std::string_view bytes) {
    return sqlite3_bind_blob64(statement_.get(), index, bytes.data() ? bytes.data() : "", bytes.size(),
                               SQLITE_STATIC);
  }

  std::string column() {
    const void* const bytes = sqlite3_column_blob(statement_.get(), 0);
    const int size = sqlite3_column_bytes(statement_.get(), 0);
    return bytes ? std::string(static_cast<const char*>(bytes), static_cast<std::size_t>(size))
                 : std::string();
  }

  std::unique_ptr<sqlite3_stmt, Close> statement_;
};

// Keeps the store where it is when the process changes its working directory.
fs::path anchored(const fs::path& file) {
  std::error_code error;  // leaves an empty path, which no operation can open
  return fs::absolute(file, error);
}

// Creates the file and its folder for their owner alone; SQLite gives its side files the mode of the main
// one. A process that closes any descriptor of a file loses its locks on it. So this opens only a file that
// did not exist, and nobody else in the process can open that one before it is closed again.
void createIfMissing(const fs::path& file) {
  static constinit std::mutex lock;
  const std::scoped_lock guard(lock);
  const fs::path folder = file.parent_path();
  std::error_code ignored;
  fs::create_directories(folder.parent_path(), ignored);
  ::mkdir(folder.c_str(), S_IRWXU);
  const int descriptor = ::open(file.c_str(), O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC, S_IRUSR | S_IWUSR);
  if (descriptor >= 0) {
    ::close(descriptor);
  } else if (errno != EEXIST) {
    const std::string reason = std::generic_category().message(errno);
    throw failure(SQLITE_CANTOPEN, sqlite3_errstr(SQLITE_CANTOPEN) + (": " + reason));
  }
}

void execute(const Handle& connection, const char* sql) {
  if (sqlite3_exec(connection.get(), sql, nullptr, nullptr, nullptr) != SQLITE_OK) {
    throw lastFailure(connection.get());
  }
}

// The switch needs the file alone for a moment and, unlike anything else, does not wait for it by itself.
void useWriteAheadLog(const Handle& connection, std::chrono::milliseconds busyTimeout) {
  const auto deadline = std::chrono::steady_clock::now() + busyTimeout;
  for (;; std::this_thread::sleep_for(std::chrono::milliseconds(1))) {
    try {
      return execute(connection, "PRAGMA journal_mode = WAL");
    } catch (const PlatformError& error) {
      if (!isBusy(error) || std::chrono::steady_clock::now() > deadline) throw;
    }
  }
}

// The pages that stand in the write-ahead log, as its file format has it: a header of 32 bytes, and before
// each page one of 24 that begins with the page's number. Both hold the same salt, unless the page is of old.
std::set<std::int64_t> pagesInLog(const fs::path& file, std::size_t pageSize) {
  std::ifstream stream(file.string() + "-wal", std::ios::binary);
  const std::string log{std::istreambuf_iterator<char>(stream), {}};
  std::set<std::int64_t> pages;
  for (std::size_t at = 32; at + 24 + pageSize <= log.size(); at += 24 + pageSize) {
    std::int64_t page = 0;
    for (std::size_t byte = at; byte < at + 4; ++byte)
      page = page << 8 | static_cast<unsigned char>(log[byte]);
    if (log.compare(at + 8, 8, log, 16, 8) == 0) pages.insert(page);
  }
  return pages;
}

// SQLite notices when whole pages are missing at the end of the file. What is missing of the last page, or
// behind a write-ahead log, it takes for zeros. The log is read before the file's size, since another process
// that moves pages from it to the file lets go of the log last.
void requireAllPages(const Handle& connection, const fs::path& file) {
  const auto numberOf = [&](const char* pragma) {
    return std::stoll(Statement(connection, pragma).run().value_or("0"));
  };
  const std::int64_t size = numberOf("PRAGMA page_size"), count = numberOf("PRAGMA page_count");
  const auto wholePages = [&] {
    std::error_code code;
    const auto bytes = fs::file_size(file, code);
    if (code) throw failure(SQLITE_IOERR, code.message());
    return static_cast<std::int64_t>(bytes) / size;
  };
  if (wholePages() >= count) return;
  const auto logged = pagesInLog(file, static_cast<std::size_t>(size));
  for (std::int64_t page = wholePages() + 1; page <= count; ++page) {
    if (!logged.contains(page)) throw failure(SQLITE_CORRUPT, sqlite3_errstr(SQLITE_CORRUPT));
  }
}

// Whether closing moves what is in the write-ahead log to the file; a damaged file is left as it was found.
void setMovesLogOnClose(const Handle& connection, bool moves) {
  sqlite3_db_config(connection.get(), SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, moves ? 0 : 1, nullptr);
}

Handle open(const fs::path& file, std::chrono::milliseconds busyTimeout) {
  createIfMissing(file);
  sqlite3* opened = nullptr;
  const int code =
      sqlite3_open_v2(reinterpret_cast<const char*>(file.u8string().c_str()), &opened,
                      SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_EXRESCODE, nullptr);
  Handle connection(opened);
  if (code != SQLITE_OK) throw lastFailure(opened);
  sqlite3_busy_timeout(opened, static_cast<int>(busyTimeout.count()));
  setMovesLogOnClose(connection, false);

  const std::string version = Statement(connection, "PRAGMA user_version").run().value_or("");
  if (version != "0" && version != schemaVersion) {
    throw failure(SQLITE_ERROR, "unknown schema version " + version);
  }
  requireAllPages(connection, file);
  useWriteAheadLog(connection, busyTimeout);
  execute(connection, "PRAGMA synchronous = FULL");
  const auto tables =
      Statement(connection, "SELECT count(*) FROM sqlite_master WHERE name = 'defaults'").run();
  if (version == "0" || tables == "0") {
    execute(connection,
            "BEGIN IMMEDIATE;"
            "CREATE TABLE IF NOT EXISTS defaults("
            "  key BLOB PRIMARY KEY NOT NULL, isData INTEGER NOT NULL, value BLOB NOT NULL) WITHOUT ROWID;"
            "PRAGMA user_version = 1;"
            "COMMIT");
  }
  setMovesLogOnClose(connection, true);
  return connection;
}

// Moves the file out of the way, its side files first: what was stored last may stand in the journal only,
// and other connections may still be using them. Gives the new name, or nothing when the file cannot be
// renamed.
std::optional<std::string> setAside(const fs::path& file) {
  std::error_code error;
  std::string name;
  for (int n = 1; name.empty() || fs::exists(name, error); ++n) {
    name = file.string() + ".damaged-" + std::to_string(n);
  }
  for (const char* suffix : {"-wal", "-shm", ""}) fs::rename(file.string() + suffix, name + suffix, error);
  if (error) return std::nullopt;
  return name;
}

}  // namespace

// Each statement is a transaction of its own, and one that writes takes the write lock before it reads.
struct SQLiteUserDefaults::Connection {
  Connection(const fs::path& file, std::chrono::milliseconds busyTimeout) : handle(open(file, busyTimeout)) {}

  Handle handle;
  Statement read{handle, "SELECT value FROM defaults WHERE key = ?1 AND isData = ?2"};
  Statement write{handle,
                  "INSERT INTO defaults(key, isData, value) VALUES(?1, ?2, ?3)"
                  " ON CONFLICT(key) DO UPDATE SET isData = ?2, value = ?3"};
  Statement erase{handle, "DELETE FROM defaults WHERE key = ?1"};
  Statement writeWhereNoData{handle,
                             "INSERT INTO defaults(key, isData, value) VALUES(?1, 1, ?2)"
                             " ON CONFLICT(key) DO UPDATE SET isData = 1, value = ?2 WHERE isData = 0"};
  Statement writeWhereData{handle,
                           "UPDATE defaults SET value = ?2 WHERE key = ?1 AND isData = 1 AND value = ?3"};
};

SQLiteUserDefaults::SQLiteUserDefaults(const fs::path& file, std::chrono::milliseconds busyTimeout)
    : file_(anchored(file)), busyTimeout_(busyTimeout) {}

SQLiteUserDefaults::~SQLiteUserDefaults() = default;

Result<std::optional<Data>> SQLiteUserDefaults::data(std::string_view key) {
  return perform<std::optional<Data>>([&](Connection& connection) -> std::optional<Data> {
    auto bytes = connection.read.run(key, true);
    if (!bytes) return std::nullopt;
    return Data(*std::move(bytes));
  });
}

Result<std::optional<std::string>> SQLiteUserDefaults::string(std::string_view key) {
  return perform<std::optional<std::string>>(
      [&](Connection& connection) { return connection.read.run(key, false); });
}

Result<void> SQLiteUserDefaults::set(std::string_view key, Data value) {
  return perform<void>(
      [&](Connection& connection) { connection.write.run(key, true, std::string_view(value.bytes)); });
}

Result<void> SQLiteUserDefaults::set(std::string_view key, std::string value) {
  return perform<void>(
      [&](Connection& connection) { connection.write.run(key, false, std::string_view(value)); });
}

Result<bool> SQLiteUserDefaults::replace(std::string_view key, const std::optional<Data>& expected,
                                         Data value) {
  return perform<bool>([&](Connection& connection) {
    const std::string_view bytes = value.bytes;
    if (expected) {
      connection.writeWhereData.run(key, bytes, std::string_view(expected->bytes));
    } else {
      connection.writeWhereNoData.run(key, bytes);
    }
    return sqlite3_changes(connection.handle.get()) == 1;
  });
}

Result<void> SQLiteUserDefaults::remove(std::string_view key) {
  return perform<void>([&](Connection& connection) { connection.erase.run(key); });
}

// Another connection may have replaced a damaged file already, so damage counts only when a fresh connection
// finds it too.
template <class T, class Operation>
Result<T> SQLiteUserDefaults::perform(const Operation& operation) {
  std::unique_lock guard(lock_);
  for (int attempt = 1;; ++attempt) {
    try {
      if (!connection_) connection_ = std::make_unique<Connection>(file_, busyTimeout_);
      if constexpr (std::is_void_v<T>) {
        operation(*connection_);
        return {};
      } else {
        return operation(*connection_);
      }
    } catch (const PlatformError& error) {
      if (connection_ && isDamage(error)) setMovesLogOnClose(connection_->handle, false);
      connection_ = nullptr;
      if (!isDamage(error) || attempt == 3) return error;
      if (attempt == 1) continue;
      const auto newName = setAside(file_);
      if (!newName) return error;
      guard.unlock();  // the printer is the host's
      print("⚠️ The consent store was damaged and has been set aside as: " + *newName);
      guard.lock();
    }
  }
}

}  // namespace TalvoConsentSDK

#include "adapters/sqlite/DatabaseFile.h"

#include <algorithm>
#include <array>
#include <set>
#include <system_error>
#include <thread>

namespace TalvoConsentSDK {

namespace {

namespace fs = std::filesystem;
using std::chrono::milliseconds;
using std::chrono::steady_clock;

int waitForOthers(void* end, int attempt) {
  const auto left = *static_cast<const StoreWaitEnd*>(end) - steady_clock::now();
  if (left <= left.zero()) return 0;
  std::this_thread::sleep_for(
      std::min<steady_clock::duration>(left, milliseconds(std::min(attempt + 1, 10))));
  return 1;
}

// If a writer stops while it is publishing a change, SQLite sleeps for ten seconds in total without calling
// the busy handler. So these sleeps also end at the deadline of the calling thread's operation.
thread_local StoreWaitEnd sleepsEnd;

const char* fileSystem() {
  static sqlite3_vfs* const system = sqlite3_vfs_find(nullptr);
  static sqlite3_vfs impatient = [] {
    sqlite3_vfs copy = *system;
    copy.zName = "TalvoConsentSDK";
    copy.xSleep = [](sqlite3_vfs*, int microseconds) {
      using std::chrono::duration_cast;
      const auto left = duration_cast<std::chrono::microseconds>(sleepsEnd - steady_clock::now()).count();
      return system->xSleep(system, static_cast<int>(std::clamp<std::int64_t>(left, 0, microseconds)));
    };
    return copy;
  }();
  static const int registration = sqlite3_vfs_register(&impatient, 0);
  return registration == SQLITE_OK ? impatient.zName : nullptr;
}

SQLiteHandle opened(const fs::path& file, const StoreWaitEnd& end) {
  sleepsEnd = end;
  sqlite3* connection = nullptr;
  const int code =
      sqlite3_open_v2(reinterpret_cast<const char*>(file.u8string().c_str()), &connection,
                      SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_EXRESCODE, fileSystem());
  SQLiteHandle handle(connection);
  if (code != SQLITE_OK) throw lastFailure(connection);
  sqlite3_busy_handler(connection, waitForOthers, const_cast<StoreWaitEnd*>(&end));
  return handle;
}

// Sets whether closing moves the content of the write-ahead log to the file.
void setMovesLogOnClose(const SQLiteHandle& connection, bool moves) {
  sqlite3_db_config(connection.get(), SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, moves ? 0 : 1, nullptr);
}

// The database or the log of a connection, read through SQLite's own descriptor. A log that SQLite has not
// opened counts as empty.
class OpenFile {
 public:
  OpenFile(const SQLiteHandle& connection, int which) {
    sqlite3_file_control(connection.get(), "main", which, static_cast<void*>(&file_));
    if (file_ && !file_->pMethods) file_ = nullptr;
  }

  std::int64_t size() const {
    sqlite3_int64 size = 0;
    if (file_) check(file_->pMethods->xFileSize(file_, &size));
    return size;
  }

  // Returns false if the file ends before `bytes` is full.
  template <std::size_t count>
  bool read(std::int64_t at, std::array<unsigned char, count>& bytes) const {
    const int code = file_ ? file_->pMethods->xRead(file_, bytes.data(), count, at) : SQLITE_IOERR_SHORT_READ;
    if (code != SQLITE_IOERR_SHORT_READ) check(code);
    return code == SQLITE_OK;
  }

 private:
  static void check(int code) {
    if (code != SQLITE_OK) throw storeFailure(code);
  }

  sqlite3_file* file_ = nullptr;
};

// The numbers of the pages in the write-ahead log. The format is a header of 32 bytes, and before each page a
// header of 24 bytes that begins with the page's number. All headers hold the same salt; the first page with
// another salt, and everything after it, is left over from an earlier use of the log.
std::set<std::int64_t> pagesIn(const OpenFile& log, std::int64_t pageSize) {
  std::set<std::int64_t> pages;
  std::array<unsigned char, 32> head{};
  std::array<unsigned char, 24> frame{};
  if (!log.read(0, head)) return pages;
  const std::int64_t last = log.size() - pageSize - std::ssize(frame);
  for (std::int64_t at = head.size(); at <= last && log.read(at, frame); at += std::ssize(frame) + pageSize) {
    if (!std::equal(&frame[8], &frame[16], &head[16])) break;
    std::int64_t page = 0;
    for (std::size_t byte = 0; byte < 4; ++byte) page = page << 8 | frame[byte];
    pages.insert(page);
  }
  return pages;
}

// SQLite notices if whole pages are missing at the end of the file. But it reads zeros where part of the last
// page is missing, or where pages are missing and there is a write-ahead log. The transaction keeps other
// processes from moving pages out of the log, and from shortening the file, between these checks. The checks
// use the descriptors that SQLite has open: the path may lead elsewhere by now, and the process may have no
// descriptors left.
void requireAllPages(const SQLiteHandle& connection) {
  execute(connection, "BEGIN");
  const std::int64_t count = numberOf(connection, "PRAGMA page_count");
  const std::int64_t size = numberOf(connection, "PRAGMA page_size");
  const std::int64_t whole = OpenFile(connection, SQLITE_FCNTL_FILE_POINTER).size() / size;
  if (whole < count) {
    const auto logged = pagesIn(OpenFile(connection, SQLITE_FCNTL_JOURNAL_POINTER), size);
    for (std::int64_t page = whole + 1; page <= count; ++page) {
      if (!logged.contains(page)) throw storeFailure(SQLITE_CORRUPT);
    }
  }
  execute(connection, "COMMIT");
}

// Switching the journal mode briefly needs exclusive access to the file. Unlike other statements, the switch
// does not wait for that, so this tries again until `end`.
void useWriteAheadLog(const SQLiteHandle& connection, const StoreWaitEnd& end) {
  for (;; std::this_thread::sleep_for(milliseconds(1))) {
    try {
      return execute(connection, "PRAGMA journal_mode = WAL");
    } catch (const PlatformError& error) {
      if (!isBusy(error) || steady_clock::now() > end) throw;
    }
  }
}

PlatformError noFile() {
  return storeFailure(SQLITE_CANTOPEN, "the path does not name a file");
}

// SQLite discards a log beside an empty file, although the log may hold the latest changes.
void requireFileOfLog(const fs::path& file) {
  const fs::path log = file.native() + "-wal";
  if (sizeOf(log) > 0 && sizeOf(file) == 0) throw storeFailure(SQLITE_CORRUPT);
}

SQLiteHandle prepared(const fs::path& file, const StoreWaitEnd& end, const std::string& schemaVersion) {
  if (file.native().find('\0') != file.native().npos) throw noFile();  // the system would cut the path there
  makePrivateFile(file);
  requireFileOfLog(file);
  SQLiteHandle handle = opened(file, end);
  setMovesLogOnClose(handle, false);  // leave a damaged file as it was found
  const std::string version = SQLiteStatement(handle, "PRAGMA user_version").run().value_or("");
  if (version != "0" && version != schemaVersion) {
    throw storeFailure(SQLITE_ERROR, "unknown schema version " + version);
  }
  requireAllPages(handle);
  useWriteAheadLog(handle, end);
  // Few pages are kept in memory, because each value is read and written as a whole. Those that SQLite has
  // reserved are freed.
  execute(handle, "PRAGMA temp_store = MEMORY; PRAGMA cache_size = 10; PRAGMA shrink_memory");
  return handle;
}

bool isUnmoved(const SQLiteHandle& connection) {
  int hasMoved = 0;
  sqlite3_file_control(connection.get(), "main", SQLITE_FCNTL_HAS_MOVED, &hasMoved);
  return !hasMoved;
}

}  // namespace

std::int64_t numberOf(const SQLiteHandle& connection, const char* sql) {
  return std::stoll(SQLiteStatement(connection, sql).run().value_or("0"));
}

DatabaseFile::DatabaseFile(const fs::path& named, StoreWaitEnd end, const std::string& schemaVersion,
                           const std::function<void(const SQLiteHandle&)>& prepare)
    : named_(named),
      file_(withoutLinks(named)),
      waitEnd_(end),
      handle_(prepared(file_, waitEnd_, schemaVersion)) {
  prepare(handle_);
  setMovesLogOnClose(handle_, true);
  identity_ = identityOf(file_);
  log_ = identityOf(log());
  index_ = identityOf(index());
  const bool isMoved = !isUnmoved(handle_);
  if (!isMoved && identityOf(named_)) return;
  abandon();
  throw isMoved ? storeFailure(SQLITE_BUSY, "the file was replaced while it was being opened")
                : noFile();  // e.g. if the path ends in a slash
}

void DatabaseFile::waitUntil(StoreWaitEnd end) {
  waitEnd_ = end;
  sleepsEnd = end;
}

// Closing deletes the log by name, so this holds the folder's lock: no other process may set the file aside
// meanwhile.
DatabaseFile::~DatabaseFile() {
  if (isAbandoned_) return;
  try {
    closing_.emplace(file_.parent_path(), FolderLock::Kind::shared, steady_clock::now());
    if (!isInPlace()) moveLogToFile();
  } catch (const PlatformError&) {
    abandon();
  }
}

void DatabaseFile::abandon() {
  isAbandoned_ = true;
  setMovesLogOnClose(handle_, false);
}

bool DatabaseFile::isInPlace() const {
  return fileIsInPlace() && log_ == identityOf(log()) && index_ == identityOf(index());
}

bool DatabaseFile::fileIsInPlace() const {
  return identity_ && identity_ == identityOf(named_);
}

bool DatabaseFile::moveLogToFile() {
  abandon();
  const bool hasNewLog = sizeOf(log()) > 0;
  if (!fileIsInPlace() || hasNewLog) return false;
  if (numberOf(handle_, "PRAGMA wal_checkpoint(FULL)") != 0) throw storeFailure(SQLITE_BUSY);
  return true;
}

void DatabaseFile::deleteOldLog() {
  abandon();
  if (identityOf(file_) == identity_) return;  // only a symbolic link has changed
  std::error_code isMissing;
  if (log_ == identityOf(log())) fs::remove(log(), isMissing);
  if (index_ == identityOf(index())) fs::remove(index(), isMissing);
}

}  // namespace TalvoConsentSDK

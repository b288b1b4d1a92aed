#pragma once

// Wraps the part of SQLite's C interface that this project needs; failures become exceptions. Not installed.

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include <sqlite3.h>

#include "TalvoConsentSDK/base/Error.h"

namespace TalvoConsentSDK {

inline PlatformError storeFailure(int code, const std::string& text) {
  return {"SQLite", code, text};
}

inline PlatformError storeFailure(int code) {
  return storeFailure(code, sqlite3_errstr(code));
}

inline PlatformError lastFailure(sqlite3* connection) {
  return storeFailure(sqlite3_extended_errcode(connection), sqlite3_errmsg(connection));
}

inline bool isBusy(const PlatformError& error) {
  return (error.code() & 0xFF) == SQLITE_BUSY;
}

inline bool isDamage(const PlatformError& error) {
  const int primaryCode = error.code() & 0xFF;
  return primaryCode == SQLITE_CORRUPT || primaryCode == SQLITE_NOTADB;
}

struct SQLiteClose {
  void operator()(sqlite3* connection) const noexcept { sqlite3_close(connection); }
  void operator()(sqlite3_stmt* statement) const noexcept { sqlite3_finalize(statement); }
};
using SQLiteHandle = std::unique_ptr<sqlite3, SQLiteClose>;

/// A parameter of type TEXT; NULL if absent.
struct SQLiteText {
  std::optional<std::string_view> text;
};

/// A prepared statement, run as often as needed. Its connection must outlive it.
class SQLiteStatement {
 public:
  SQLiteStatement(const SQLiteHandle& connection, const char* sql) {
    sqlite3_stmt* prepared = nullptr;
    sqlite3_prepare_v3(connection.get(), sql, -1, SQLITE_PREPARE_PERSISTENT, &prepared, nullptr);
    if (!prepared) throw lastFailure(connection.get());
    statement_.reset(prepared);
  }

  /// Runs the statement with its parameters in order and calls `eachRow()` on each row.
  template <class EachRow, class... Parameters>
  void forEachRow(const EachRow& eachRow, const Parameters&... parameters) {
    const Reset reset{statement_.get()};
    int index = 0;
    (check(bind(++index, parameters)), ...);
    int code = sqlite3_step(statement_.get());
    for (; code == SQLITE_ROW; code = sqlite3_step(statement_.get())) eachRow();
    if (code != SQLITE_DONE) throw lastFailure(sqlite3_db_handle(statement_.get()));
  }

  /// Runs the statement with its parameters in order. Returns the first column of the last row, or nothing if
  /// there are no rows.
  template <class... Parameters>
  std::optional<std::string> run(const Parameters&... parameters) {
    std::optional<std::string> value;
    forEachRow([&] { value = column(0); }, parameters...);
    return value;
  }

  /// The bytes in a column of the current row; numbers as decimal text.
  std::string column(int index) {
    const void* const bytes = sqlite3_column_blob(statement_.get(), index);
    const int size = sqlite3_column_bytes(statement_.get(), index);
    return bytes ? std::string(static_cast<const char*>(bytes), static_cast<std::size_t>(size))
                 : std::string();
  }

  /// The number in a column of the current row; 0 if the column holds no number.
  std::int64_t number(int index) { return sqlite3_column_int64(statement_.get(), index); }

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

  int bind(int index, std::int64_t number) { return sqlite3_bind_int64(statement_.get(), index, number); }

  int bind(int index, const SQLiteText& parameter) {
    const std::string_view text = parameter.text.value_or(std::string_view());
    return sqlite3_bind_text64(statement_.get(), index, text.data(), text.size(), SQLITE_STATIC, SQLITE_UTF8);
  }

  // A BLOB. A null pointer would bind NULL.
  int bind(int index, std::string_view bytes) {
    return sqlite3_bind_blob64(statement_.get(), index, bytes.data() ? bytes.data() : "", bytes.size(),
                               SQLITE_STATIC);
  }

  std::unique_ptr<sqlite3_stmt, SQLiteClose> statement_;
};

inline void execute(const SQLiteHandle& connection, const std::string& sql) {
  if (sqlite3_exec(connection.get(), sql.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK) {
    throw lastFailure(connection.get());
  }
}

/// Takes the write lock, and rolls back on destruction unless committed.
class SQLiteTransaction {
 public:
  explicit SQLiteTransaction(const SQLiteHandle& connection) : connection_(connection) {
    execute(connection, "BEGIN IMMEDIATE");
  }
  ~SQLiteTransaction() {
    if (!sqlite3_get_autocommit(connection_.get()))
      sqlite3_exec(connection_.get(), "ROLLBACK", nullptr, nullptr, nullptr);
  }
  SQLiteTransaction(const SQLiteTransaction&) = delete;

  void commit() { execute(connection_, "COMMIT"); }

 private:
  const SQLiteHandle& connection_;
};

}  // namespace TalvoConsentSDK

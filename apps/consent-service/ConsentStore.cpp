#include "ConsentStore.h"

#include <mutex>
#include <utility>

#include <sqlite3.h>

#include "TalvoConsentSDK/models/JSONCoding.h"

#include "Identifier.h"

namespace TalvoConsentSDK::service {

namespace {

constexpr const char* schema = R"(
  PRAGMA journal_mode = WAL;
  CREATE TABLE IF NOT EXISTS consents (
    site TEXT NOT NULL,
    id TEXT NOT NULL,
    user TEXT,
    revision INTEGER NOT NULL,  -- counts the changes of all records
    payload TEXT NOT NULL,
    PRIMARY KEY (site, id)
  );
  CREATE INDEX IF NOT EXISTS consents_by_user ON consents (site, user, revision);
)";

PlatformError failure(sqlite3* database) {
  return {"ConsentStore", sqlite3_extended_errcode(database), sqlite3_errmsg(database)};
}

// A prepared statement. Texts are bound without copying and must outlive it. Throws PlatformErrors.
class Statement {
 public:
  Statement(sqlite3* database, std::string_view sql) : database_(database) {
    check(sqlite3_prepare_v2(database, sql.data(), static_cast<int>(sql.size()), &statement_, nullptr));
  }
  Statement(const Statement&) = delete;
  Statement& operator=(const Statement&) = delete;
  ~Statement() { sqlite3_finalize(statement_); }

  void bind(int index, std::string_view text) {
    check(sqlite3_bind_text(statement_, index, text.data(), static_cast<int>(text.size()), SQLITE_STATIC));
  }

  /// Moves to the next row. Returns false if there is none.
  bool step() {
    const int code = sqlite3_step(statement_);
    if (code != SQLITE_ROW && code != SQLITE_DONE) throw failure(database_);
    return code == SQLITE_ROW;
  }

  std::string text(int column) const {
    const auto* bytes = reinterpret_cast<const char*>(sqlite3_column_text(statement_, column));
    return {bytes, static_cast<std::size_t>(sqlite3_column_bytes(statement_, column))};
  }

 private:
  void check(int code) const {
    if (code != SQLITE_OK) throw failure(database_);
  }

  sqlite3* database_;
  sqlite3_stmt* statement_ = nullptr;
};

}  // namespace

struct ConsentStore::State {
  std::mutex lock;
  sqlite3* database = nullptr;

  ~State() { sqlite3_close(database); }

  bool knows(std::string_view site, std::string_view id) const {
    Statement query(database, "SELECT 1 FROM consents WHERE site = ? AND id = ?");
    query.bind(1, site);
    query.bind(2, id);
    return query.step();
  }

  std::string save(std::string_view site, FullConsent consent) const {
    consent.siteId = site;
    const std::string payload = JSONEncoder().encode(consent).value();
    Statement change(database,
                     "INSERT OR REPLACE INTO consents (site, id, user, payload, revision) VALUES "
                     "(?, ?, ?, ?, (SELECT coalesce(max(revision), 0) + 1 FROM consents))");
    change.bind(1, site);
    change.bind(2, *consent.id);
    if (consent.userId) change.bind(3, *consent.userId);
    change.bind(4, payload);
    change.step();
    return *consent.id;
  }
};

Result<std::unique_ptr<ConsentStore>> ConsentStore::open(const std::string& file) {
  auto state = std::make_unique<State>();
  const char* name = file.empty() ? ":memory:" : file.c_str();
  if (sqlite3_open(name, &state->database) != SQLITE_OK) return failure(state->database);
  sqlite3_busy_timeout(state->database, 5000);
  if (sqlite3_exec(state->database, schema, nullptr, nullptr, nullptr) != SQLITE_OK) {
    return failure(state->database);
  }
  return std::unique_ptr<ConsentStore>(new ConsentStore(std::move(state)));
}

ConsentStore::ConsentStore(std::unique_ptr<State> state) : state_(std::move(state)) {}

ConsentStore::~ConsentStore() = default;

Result<std::string> ConsentStore::create(std::string_view site, FullConsent consent) {
  const std::scoped_lock guard(state_->lock);
  try {
    consent.id = newIdentifier();
    return state_->save(site, std::move(consent));
  } catch (...) {
    return Error::current();
  }
}

Result<std::string> ConsentStore::update(std::string_view site, FullConsent consent) {
  const std::scoped_lock guard(state_->lock);
  try {
    if (!consent.id || !state_->knows(site, *consent.id)) consent.id = newIdentifier();
    return state_->save(site, std::move(consent));
  } catch (...) {
    return Error::current();
  }
}

Result<std::optional<FullConsent>> ConsentStore::newest(std::string_view site, std::string_view userId) {
  const std::scoped_lock guard(state_->lock);
  try {
    Statement query(
        state_->database,
        "SELECT payload FROM consents WHERE site = ? AND user = ? ORDER BY revision DESC LIMIT 1");
    query.bind(1, site);
    query.bind(2, userId);
    if (!query.step()) return std::optional<FullConsent>();
    return JSONDecoder().decode<std::optional<FullConsent>>(query.text(0));
  } catch (...) {
    return Error::current();
  }
}

}  // namespace TalvoConsentSDK::service

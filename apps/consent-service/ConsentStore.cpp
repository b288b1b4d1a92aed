#include "ConsentStore.h"

#include <mutex>
#include <utility>

#include "TalvoConsentSDK/models/JSONCoding.h"

#include "adapters/sqlite/SQLiteStatement.h"

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

}  // namespace

struct ConsentStore::State {
  std::mutex lock;
  SQLiteHandle database;

  bool knows(std::string_view site, std::string_view id) const {
    SQLiteStatement query(database, "SELECT 1 FROM consents WHERE site = ? AND id = ?");
    return query.run(SQLiteText{site}, SQLiteText{id}).has_value();
  }

  std::string save(std::string_view site, FullConsent consent) const {
    consent.siteId = site;
    const std::string payload = JSONEncoder().encode(consent).value();
    SQLiteStatement change(database,
                           "INSERT OR REPLACE INTO consents (site, id, user, payload, revision) VALUES "
                           "(?, ?, ?, ?, (SELECT coalesce(max(revision), 0) + 1 FROM consents))");
    change.run(SQLiteText{site}, SQLiteText{*consent.id}, SQLiteText{consent.userId}, SQLiteText{payload});
    return *consent.id;
  }
};

Result<std::unique_ptr<ConsentStore>> ConsentStore::open(const std::string& file) {
  auto state = std::make_unique<State>();
  sqlite3* connection = nullptr;
  const int code = sqlite3_open(file.empty() ? ":memory:" : file.c_str(), &connection);
  state->database.reset(connection);
  if (code != SQLITE_OK) return lastFailure(connection);
  sqlite3_busy_timeout(connection, 5000);
  try {
    execute(state->database, schema);
  } catch (...) {
    return Error::current();
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
    SQLiteStatement query(
        state_->database,
        "SELECT payload FROM consents WHERE site = ? AND user = ? ORDER BY revision DESC LIMIT 1");
    const auto payload = query.run(SQLiteText{site}, SQLiteText{userId});
    if (!payload) return std::optional<FullConsent>();
    return JSONDecoder().decode<std::optional<FullConsent>>(*payload);
  } catch (...) {
    return Error::current();
  }
}

}  // namespace TalvoConsentSDK::service

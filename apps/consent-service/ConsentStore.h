#pragma once

// Stores the consents that clients submit, by site.

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "TalvoConsentSDK/base/Result.h"
#include "TalvoConsentSDK/models/FullConsent.h"

namespace TalvoConsentSDK::service {

/// Keeps consents in an SQLite database. Every operation is one transaction and returns the database's
/// errors. Thread-safe.
class ConsentStore {
 public:
  /// Opens the database in `file` and creates the file if it is missing. With an empty name, the database is
  /// in memory.
  static Result<std::unique_ptr<ConsentStore>> open(const std::string& file);

  ~ConsentStore();

  /// Stores a consent as a new record. Returns the record's identifier.
  Result<std::string> create(std::string_view site, FullConsent consent);

  /// Replaces the record with the identifier `consent.id` at this site, including its user. A consent without
  /// an identifier, or with one that the site does not know, becomes a new record. Returns the record's
  /// identifier.
  Result<std::string> update(std::string_view site, FullConsent consent);

  /// The most recently created or updated consent of a user at a site.
  Result<std::optional<FullConsent>> newest(std::string_view site, std::string_view userId);

 private:
  struct State;
  explicit ConsentStore(std::unique_ptr<State> state);

  std::unique_ptr<State> state_;
};

}  // namespace TalvoConsentSDK::service

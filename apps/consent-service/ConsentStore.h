#pragma once

// The consents that the service was given, per site.

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "TalvoConsentSDK/base/Result.h"
#include "TalvoConsentSDK/models/FullConsent.h"

namespace TalvoConsentSDK::service {

/// Keeps consents in an SQLite database. Every operation is one transaction; errors are the database's. Safe
/// from any thread.
class ConsentStore {
 public:
  /// Opens the database in `file`, which is created when missing; an empty name keeps it in memory.
  static Result<std::unique_ptr<ConsentStore>> open(const std::string& file);

  ~ConsentStore();

  /// Keeps a consent as a new record and answers the record's identifier.
  Result<std::string> create(std::string_view site, FullConsent consent);

  /// Replaces the record that `consent.id` names at this site, user and all. A consent without identifier, or
  /// with one that the site does not know, becomes a new record.
  Result<std::string> update(std::string_view site, FullConsent consent);

  /// The consent of a user at a site that was created or updated last.
  Result<std::optional<FullConsent>> newest(std::string_view site, std::string_view userId);

 private:
  struct State;
  explicit ConsentStore(std::unique_ptr<State> state);

  std::unique_ptr<State> state_;
};

}  // namespace TalvoConsentSDK::service

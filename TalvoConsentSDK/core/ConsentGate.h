#pragma once

// Starts and stops what needs consent, such as an analytics SDK, as the stored consent changes.

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "TalvoConsentSDK/base/Export.h"
#include "TalvoConsentSDK/core/Subscription.h"
#include "TalvoConsentSDK/models/ConsentVocabulary.h"

namespace TalvoConsentSDK TALVO_EXPORT {

class ConsentLedger;
class ConsentObservers;

/// Tells whether the stored consent allows a category or one of its vendors, and runs closures when that
/// changes, whatever changed it: the banner, a submission, implicit consent, a login, a logout, the service's
/// reply about a user, or `eraseConsent`. Copies are the same gate. Safe from any thread.
///
/// The necessary category is always allowed. Preferences, statistics and marketing are allowed if the stored
/// consent accepts them as a whole; a vendor of theirs is allowed if the consent accepts the category as a
/// whole or lists the vendor. Without a stored consent, and under do-not-sell (`optedIn` is false), these
/// three are not allowed. Any other category is refused: the functions throw an Error with a PlatformError of
/// domain "TalvoConsentSDK" and code -7.
///
/// A consent counts once it is stored, hence once the service has accepted it: a refusal that could not be
/// sent changes nothing here. A change that another process makes counts when this process next reads the
/// store, for example in `getConsent`. If the store cannot be read, the gate stays as it is; but after a
/// logout it is closed until the store can be read.
class ConsentGate {
 public:
  /// Whether there is a gate for the category.
  static constexpr bool has(ConsentCategory category) {
    return category != ConsentCategory::unclassified && category != ConsentCategory::doNotSell;
  }

  /// Runs `start` on the main actor if the category is allowed now, and from then on, whenever that changes,
  /// `stop` and `start` in turn. Both run on the main actor, one after the other, and either may be empty. If
  /// a change is undone before the main actor runs, neither is called. Ending the subscription runs neither.
  Subscription on(ConsentCategory category, std::function<void()> start, std::function<void()> stop) const {
    return watch(category, std::nullopt, std::move(start), std::move(stop));
  }

  /// The same for one vendor of the category. `vendor` is written as in a partial consent: as the site's
  /// services document names the vendor.
  Subscription on(ConsentCategory category, std::string vendor, std::function<void()> start,
                  std::function<void()> stop) const {
    return watch(category, std::move(vendor), std::move(start), std::move(stop));
  }

  /// Returns whether the category, or one of its vendors, is allowed now. Neither reads the store nor waits
  /// for anyone who does.
  bool isAllowed(ConsentCategory category) const { return isAllowed(category, nullptr); }
  bool isAllowed(ConsentCategory category, const std::string& vendor) const {
    return isAllowed(category, &vendor);
  }

 private:
  friend class CookiesSDK;

  ConsentGate(std::shared_ptr<const ConsentLedger> ledger, std::shared_ptr<ConsentObservers> observers);

  // Without a vendor, these concern the whole category.
  Subscription watch(ConsentCategory category, std::optional<std::string> vendor, std::function<void()> start,
                     std::function<void()> stop) const;
  bool isAllowed(ConsentCategory category, const std::string* vendor) const;

  std::shared_ptr<const ConsentLedger> ledger_;
  std::shared_ptr<ConsentObservers> observers_;
};

}  // namespace TalvoConsentSDK

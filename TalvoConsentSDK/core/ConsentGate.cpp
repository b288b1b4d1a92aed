#include "TalvoConsentSDK/core/ConsentGate.h"

#include <algorithm>
#include <utility>

#include "TalvoConsentSDK/base/Error.h"
#include "TalvoConsentSDK/core/ConsentLedger.h"
#include "TalvoConsentSDK/core/ConsentObservers.h"

namespace TalvoConsentSDK {

namespace {

// Where a consent keeps a category; null for the necessary category, which needs none. Throws for the others.
std::optional<ConsentValue> BasicConsent::* field(ConsentCategory category) {
  switch (category) {
    case ConsentCategory::necessary:
      return nullptr;
    case ConsentCategory::preferences:
      return &BasicConsent::preferences;
    case ConsentCategory::statistics:
      return &BasicConsent::statistics;
    case ConsentCategory::marketing:
      return &BasicConsent::marketing;
    case ConsentCategory::unclassified:
    case ConsentCategory::doNotSell:
      break;
  }
  throw Error(PlatformError("TalvoConsentSDK", -7,
                            "A gate is for the categories necessary, preferences, statistics and marketing"));
}

bool isAllowedBy(const BasicConsent* consent, ConsentCategory category, const std::string* vendor) {
  const auto member = field(category);
  if (!member) return true;
  if (!consent || consent->optedIn == false) return false;
  const std::optional<ConsentValue>& value = consent->*member;
  if (!value) return false;
  return value->isAll() || (vendor && std::ranges::find(value->items(), *vendor) != value->items().end());
}

// One registration. It is used on the main actor only, after its construction.
class Gated : public ConsentObserver {
 public:
  Gated(std::shared_ptr<const ConsentLedger> ledger, ConsentCategory category,
        std::optional<std::string> vendor, std::function<void()> start, std::function<void()> stop)
      : ledger_(std::move(ledger)),
        category_(category),
        vendor_(std::move(vendor)),
        start_(std::move(start)),
        stop_(std::move(stop)) {}

  void consentMayHaveChanged() override {
    const bool isAllowed =
        isAllowedBy(ledger_->known().consent.get(), category_, vendor_ ? &*vendor_ : nullptr);
    if (std::exchange(isRunning_, isAllowed) == isAllowed) return;
    if (const std::function<void()>& closure = isAllowed ? start_ : stop_) closure();
  }

 private:
  const std::shared_ptr<const ConsentLedger> ledger_;
  const ConsentCategory category_;
  const std::optional<std::string> vendor_;
  const std::function<void()> start_;
  const std::function<void()> stop_;
  bool isRunning_ = false;
};

}  // namespace

ConsentGate::ConsentGate(std::shared_ptr<const ConsentLedger> ledger,
                         std::shared_ptr<ConsentObservers> observers)
    : ledger_(std::move(ledger)), observers_(std::move(observers)) {}

bool ConsentGate::isAllowed(ConsentCategory category, const std::string* vendor) const {
  return isAllowedBy(ledger_->known().consent.get(), category, vendor);
}

Subscription ConsentGate::watch(ConsentCategory category, std::optional<std::string> vendor,
                                std::function<void()> start, std::function<void()> stop) const {
  field(category);
  return ConsentObservers::add(observers_, std::make_shared<Gated>(ledger_, category, std::move(vendor),
                                                                   std::move(start), std::move(stop)));
}

}  // namespace TalvoConsentSDK

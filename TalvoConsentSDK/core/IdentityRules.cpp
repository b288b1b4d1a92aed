#include "TalvoConsentSDK/core/IdentityRules.h"

#include <utility>

#include "TalvoConsentSDK/models/JSONCoding.h"

namespace TalvoConsentSDK {

namespace {

std::optional<std::string> text(const KeptConsent& consent) {
  if (!consent) return std::nullopt;
  return JSONEncoder().encode(*consent).value();
}

}  // namespace

KeptConsent withoutId(const KeptConsent& consent) {
  if (!consent || !consent->id) return consent;
  BasicConsent stripped = *consent;
  stripped.id.reset();
  return stripped;
}

void restoreOwed(KeptValues& kept) {
  if (kept.userId || kept.userId.isUnknown || !kept.original) return;
  kept.consent = std::exchange(kept.original, KeptConsent());
}

void logIn(KeptValues& kept, const std::string& userId) {
  if (kept.consent.isUnknown || kept.userId.isUnknown) return;
  if (!kept.userId) {
    if (kept.original.isUnknown) return;
    if (kept.consent) kept.original = kept.consent;
  }
  if (kept.userId != userId) kept.consent = withoutId(kept.consent);
  kept.userId = userId;
}

void logOut(KeptValues& kept) {
  kept.userId = Loaded<std::string>();
  if (kept.original.isUnknown) {
    kept.consent = KeptConsent();
    kept.consent.isUnknown = true;
    return;
  }
  kept.consent = kept.original ? kept.original : withoutId(kept.consent);
  if (!kept.consent.isUnknown) kept.original = KeptConsent();
}

bool isInherited(const KeptValues& kept) {
  return !kept.isUnknown() && text(kept.consent) == text(withoutId(kept.original));
}

}  // namespace TalvoConsentSDK

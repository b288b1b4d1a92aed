#include "TalvoConsentSDK/core/IdentityRules.h"

#include <utility>

#include "TalvoConsentSDK/models/JSONCoding.h"

namespace TalvoConsentSDK {

namespace {

std::optional<std::string> text(const KeptConsent& kept) {
  if (!kept.value) return std::nullopt;
  return JSONEncoder().encode(*kept.value).value();
}

}  // namespace

KeptConsent withoutId(const KeptConsent& kept) {
  if (!kept.value || !kept.value->id) return kept;
  KeptConsent stripped{kept.value, {}};
  stripped.value->id.reset();
  return stripped;
}

void restoreOriginal(KeptValues& kept) {
  if (kept.user.value || kept.user.isUnknown || !kept.original.value) return;
  kept.consent = std::exchange(kept.original, KeptConsent());
}

void logIn(KeptValues& kept, const std::string& userId) {
  if (kept.consent.isUnknown || kept.user.isUnknown) return;
  if (!kept.user.value) {
    if (kept.original.isUnknown) return;
    if (kept.consent.value) kept.original = kept.consent;
  }
  if (kept.user.value != userId) kept.consent = withoutId(kept.consent);
  kept.user.value = userId;
}

void logOut(KeptValues& kept) {
  kept.user = {};
  if (kept.original.isUnknown) {
    kept.consent = {{}, {}, true};
    return;
  }
  kept.consent = kept.original.value ? kept.original : withoutId(kept.consent);
  if (!kept.consent.isUnknown) kept.original = {};
}

bool isInherited(const KeptValues& kept) {
  return !kept.isUnknown() && text(kept.consent) == text(withoutId(kept.original));
}

}  // namespace TalvoConsentSDK

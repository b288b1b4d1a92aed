#pragma once

// Reads a consent that a binding's host has written as JSON.

#include <string>

#include "TalvoConsentSDK/base/Error.h"
#include "TalvoConsentSDK/base/Result.h"
#include "TalvoConsentSDK/models/BasicConsent.h"
#include "TalvoConsentSDK/models/CodingError.h"
#include "TalvoConsentSDK/models/JSONCoding.h"
#include "TalvoConsentSDK/models/JSONValue.h"

namespace TalvoConsentSDK {

/// Decodes a consent. Refuses keys that it does not have, such as a misspelt category, which a record from
/// the service may contain.
inline Result<BasicConsent> consentOf(const std::string& json) {
  auto consent = JSONDecoder().decode<BasicConsent>(json);
  if (!consent) return consent;
  const auto given = JSONDecoder().decode<JSONObject>(json);
  if (!given) return given.error();
  const auto known = JSONDecoder().decode<JSONObject>(JSONEncoder().encode(*consent).value());
  for (const auto& [key, value] : *given) {
    if (value.isNull() || known->contains(key)) continue;
    return Error(CodingError(CodingError::Kind::dataCorrupted, key,
                             "There is no such category; use preferences, statistics and marketing"));
  }
  return consent;
}

}  // namespace TalvoConsentSDK

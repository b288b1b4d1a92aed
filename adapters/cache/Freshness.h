#pragma once

// How old a reply is and how long it may be used (RFC 9111, section 4.2). Not installed.

#include <chrono>
#include <optional>

#include "adapters/cache/StoredReply.h"

namespace TalvoConsentSDK {

/// The age of a reply when it arrived (section 4.2.3).
std::chrono::seconds ageOnArrival(const platform::HTTPHeaders& headers, const CacheTime& request,
                                  const CacheTime& arrival);

/// The age now; nothing if the reply seems to arrive in the future, because the clock was set back.
std::optional<std::chrono::seconds> currentAge(const StoredReply& reply, const CacheTime& now);

/// How long the reply counts as fresh, by max-age or Expires; 0 if it has neither. Nothing is guessed.
std::chrono::seconds freshnessLifetime(const platform::HTTPHeaders& headers, const CacheTime& arrival);

/// Whether the reply may be used without asking the service.
bool isFresh(const StoredReply& reply, const CacheTime& now);

/// Whether the reply may be used in place of an error (RFC 5861, section 4).
bool mayReplaceError(const StoredReply& reply, const CacheTime& now);

}  // namespace TalvoConsentSDK

#pragma once

// A reply as a cache keeps it, and its form in a storage. Not installed.

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

#include "TalvoConsentSDK/platform/CacheStorage.h"
#include "TalvoConsentSDK/platform/URLSession.h"

#include "adapters/cache/CacheClock.h"

namespace TalvoConsentSDK {

/// A complete reply with status 200 to a GET.
struct StoredReply {
  platform::HTTPHeaders headers;    // of the reply
  platform::HTTPHeaders selecting;  // the fields of the request that the reply's Vary names
  CacheTime arrival;
  std::chrono::seconds ageOnArrival{0};
  std::string body;
};

/// Everything of a reply except its body. `decodedReply` returns nothing if the head was not written by
/// `encodedHead`, or was written by a version with another format.
std::string encodedHead(const StoredReply& reply);
std::optional<StoredReply> decodedReply(platform::CacheEntry entry);

}  // namespace TalvoConsentSDK

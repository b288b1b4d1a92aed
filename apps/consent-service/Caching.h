#pragma once

// What replies say to caches: whether they may be kept, and how a kept reply is checked (RFC 9110, RFC 9111).

#include <chrono>
#include <optional>
#include <string_view>

#include "Reply.h"

namespace TalvoConsentSDK::service {

/// Lets caches keep a reply, and names its present body by an ETag. A cache may use the kept reply without
/// asking for as long as `keepFor` says; without `keepFor`, and after that time, it asks whether the reply is
/// current. Does nothing to replies with another status than 200.
Reply cacheable(Reply reply, std::optional<std::chrono::seconds> keepFor);

/// Forbids caches to keep a reply, because it is about one person.
Reply personal(Reply reply);

/// The reply to a request with this If-None-Match header, which is empty if the request has none: a 304
/// without a body if the header names the reply's ETag, and otherwise the reply.
Reply validated(Reply reply, std::string_view ifNoneMatch);

}  // namespace TalvoConsentSDK::service

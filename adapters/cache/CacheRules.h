#pragma once

// What a private cache may keep and use, and what it must forget (RFC 9111, sections 3 and 4). Not installed.

#include <string>
#include <vector>

#include "adapters/cache/StoredReply.h"

namespace TalvoConsentSDK {

/// Whether a request may be answered from the cache, and its reply be kept.
bool mayUseCache(const platform::URLRequest& request);

/// Whether the request demands that the service is asked.
bool demandsValidation(const platform::URLRequest& request);

/// Whether the reply came from the request's own URL, and not from a URL that a redirect led to.
bool isFromItsURL(const platform::URLRequest& request, const platform::URLResponse& reply);

/// Whether the request accepts the reply's type. If not, the reply may not come from the service: the login
/// page of a network is HTML, although the request did not ask for HTML.
bool hasExpectedType(const platform::URLRequest& request, const platform::HTTPHeaders& headers);

/// Whether a reply with these headers may be kept at all.
bool mayStay(const platform::HTTPHeaders& headers);

/// Whether a reply to `request` may be kept, given that `mayUseCache(request)`. A reply that could never be
/// used again is not worth keeping.
bool mayKeep(const platform::URLRequest& request, const platform::URLResponse& reply,
             const CacheTime& arrival);

/// The reply as it is kept. Leaves out the fields that concern only a connection, and Set-Cookie.
StoredReply storedReply(const platform::URLRequest& request, platform::URLResponse reply,
                        const CacheTime& sent, const CacheTime& arrival);

/// Whether `request` and the request of `kept` agree in the fields that Vary names (section 4.1).
bool matches(const StoredReply& kept, const platform::URLRequest& request);

/// Adds to `request` the conditions that let the service answer "not modified". Returns false if there are
/// no such conditions.
bool addConditions(platform::URLRequest& request, const StoredReply& kept);

/// Whether a reply with status 304 says that `kept` is current.
bool confirms(const platform::URLRequest& request, const platform::URLResponse& reply,
              const StoredReply& kept);

/// Whether the fields of a confirming reply may replace those of `kept` (section 4.3.4). They may not if the
/// tag of `kept` is weak and the reply's is strong. Some services mix these up.
bool mayRefresh(const StoredReply& kept, const platform::URLResponse& reply);

/// Takes over the fields of a confirming reply (section 3.2).
void refresh(StoredReply& kept, const platform::URLRequest& request, const platform::URLResponse& reply,
             const CacheTime& sent, const CacheTime& arrival);

/// Whether the outcome counts as an error that a stale reply may replace: no reply, or status 500, 502, 503
/// or 504.
bool isError(const Result<platform::URLResponse>& outcome);

/// Whether the method may change what the service serves (RFC 9110, section 9.2.1).
bool isUnsafe(const std::string& method);

/// The keys of all that a successful unsafe request may have changed (section 4.4).
std::vector<std::string> changedKeys(const URL& requested, const platform::URLResponse& reply);

}  // namespace TalvoConsentSDK

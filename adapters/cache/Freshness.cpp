#include "adapters/cache/Freshness.h"

#include <algorithm>

#include "adapters/cache/HTTPDate.h"
#include "adapters/cache/HeaderFields.h"

namespace TalvoConsentSDK {

using namespace platform;

namespace {

using std::chrono::seconds;

// A reply without a valid Date counts as sent when it arrived (RFC 9110, section 6.6.1).
HTTPTime dateOf(const HTTPHeaders& headers, HTTPTime arrival) {
  return parseHTTPDate(fieldValue(headers, "Date").value_or(""), arrival).value_or(arrival);
}

// Of several values, the first counts (section 5.1).
seconds ageField(const HTTPHeaders& headers) {
  const auto values = listMembers(fieldValue(headers, "Age").value_or(""));
  return values.empty() ? seconds(0) : deltaSeconds(values.front()).value_or(seconds(0));
}

seconds lifetime(const CacheControl& control, const HTTPHeaders& headers, const CacheTime& arrival) {
  if (control.maxAge) return *control.maxAge;
  const auto expires = fieldValue(headers, "Expires");
  if (!expires) return seconds(0);
  const auto end = parseHTTPDate(*expires, arrival.wall);
  return end ? std::max(seconds(0), *end - dateOf(headers, arrival.wall)) : seconds(0);
}

}  // namespace

seconds ageOnArrival(const HTTPHeaders& headers, const CacheTime& request, const CacheTime& arrival) {
  const seconds apparent = std::max(seconds(0), arrival.wall - dateOf(headers, arrival.wall));
  const seconds corrected = ageField(headers) + std::max(seconds(0), arrival.since(request));
  return std::max(apparent, corrected);
}

std::optional<seconds> currentAge(const StoredReply& reply, const CacheTime& now) {
  const seconds kept = now.since(reply.arrival);
  if (kept < seconds(0)) return std::nullopt;
  return reply.ageOnArrival + kept;
}

seconds freshnessLifetime(const HTTPHeaders& headers, const CacheTime& arrival) {
  return lifetime(CacheControl(headers), headers, arrival);
}

bool isFresh(const StoredReply& reply, const CacheTime& now) {
  const CacheControl control(reply.headers);
  const auto age = currentAge(reply, now);
  return age && !control.noCache && lifetime(control, reply.headers, reply.arrival) > *age;
}

bool mayReplaceError(const StoredReply& reply, const CacheTime& now) {
  const CacheControl control(reply.headers);
  const auto age = currentAge(reply, now);
  if (!age || !control.staleIfError || control.noCache || control.mustRevalidate) return false;
  return *age < lifetime(control, reply.headers, reply.arrival) + *control.staleIfError;
}

}  // namespace TalvoConsentSDK

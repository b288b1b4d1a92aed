#include "adapters/cache/CacheRules.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <set>
#include <string_view>
#include <system_error>
#include <utility>

#include "TalvoConsentSDK/base/ASCII.h"

#include "adapters/cache/Freshness.h"
#include "adapters/cache/HeaderFields.h"
#include "adapters/cache/RequestTarget.h"

namespace TalvoConsentSDK {

using namespace platform;

namespace {

using std::chrono::seconds;

// A request with one of these fields asks for a part, on a condition, or on behalf of one person.
constexpr std::array bypassing{"Range",
                               "If-Match",
                               "If-None-Match",
                               "If-Modified-Since",
                               "If-Range",
                               "Authorization",
                               "Proxy-Authorization",
                               "Cookie",
                               "If-Unmodified-Since"};

// These concern only a connection or a proxy (sections 3.1 and 7.3), and cookies must not be kept in a file.
constexpr std::array<std::string_view, 9> unkept{
    "Connection",         "Keep-Alive", "Proxy-Authenticate", "Proxy-Authentication-Info",
    "Proxy-Connection",   "Set-Cookie", "Transfer-Encoding",  "Upgrade",
    "Proxy-Authorization"};

// These belong to the body that is kept, so a reply with status 304 does not replace them (section 3.2).
constexpr std::array<std::string_view, 4> ofBody{"Content-Length", "Content-Encoding", "Content-Range",
                                                 "Content-Type"};

bool isOneOf(std::string_view name, const auto& names) {
  return std::ranges::any_of(names,
                             [&](std::string_view each) { return lowercased(name) == lowercased(each); });
}

void removeUnkept(HTTPHeaders& headers) {
  std::set<std::string> named;
  for (const auto member : listMembers(fieldValue(headers, "Connection").value_or("")))
    named.insert(std::string(member));
  std::erase_if(headers, [&](const auto& field) {
    return isOneOf(field.first, unkept) || isOneOf(field.first, named);
  });
}

std::vector<std::string_view> varyingFields(const HTTPHeaders& headers) {
  auto fields = listMembers(fieldValue(headers, "Vary").value_or(""));
  // The session negotiates the encoding of the bytes on the wire, and its replies are decoded.
  std::erase_if(fields, [](auto name) { return lowercased(name) == "accept-encoding"; });
  return fields;
}

HTTPHeaders selectingFields(const URLRequest& request, const HTTPHeaders& reply) {
  HTTPHeaders selecting;
  for (const auto name : varyingFields(reply))
    if (const auto value = fieldValue(request.headers, name)) selecting[std::string(name)] = *value;
  return selecting;
}

// A body that ends with its connection may have been cut off. TLS would notice that.
bool isComplete(const URLRequest& request, const URLResponse& reply) {
  const auto length = fieldValue(reply.headers, "Content-Length");
  if (!length) return request.url.scheme() == "https" || fieldValue(reply.headers, "Transfer-Encoding");
  if (fieldValue(reply.headers, "Content-Encoding")) return true;
  std::size_t bytes = 0;
  const auto [end, error] = std::from_chars(length->data(), length->data() + length->size(), bytes);
  return error == std::errc() && end == length->data() + length->size() && bytes == reply.body->size();
}

std::string_view withoutWeakness(std::string_view tag) {
  return tag.starts_with("W/") ? tag.substr(2) : tag;
}

// Whether the headers can permit another use of the reply. A quick test, which most unkept replies fail.
bool saysAnything(const HTTPHeaders& headers) {
  return headers.contains("Cache-Control") || headers.contains("Expires") || headers.contains("ETag") ||
         headers.contains("Last-Modified");
}

}  // namespace

bool mayUseCache(const URLRequest& request) {
  if (request.method != "GET" || request.isPersonal || request.body || hasUserInfo(request.url)) return false;
  if (std::ranges::any_of(bypassing, [&](const char* name) { return request.headers.contains(name); }))
    return false;
  return !demandsValidation(request) || !CacheControl(request.headers).noStore;
}

bool demandsValidation(const URLRequest& request) {
  return request.headers.contains("Cache-Control") || request.headers.contains("Pragma");
}

bool isFromItsURL(const URLRequest& request, const URLResponse& reply) {
  return reply.url && (*reply.url == request.url || cacheKey(*reply.url) == cacheKey(request.url));
}

bool hasExpectedType(const URLRequest& request, const HTTPHeaders& headers) {
  const auto type = fieldValue(headers, "Content-Type");
  if (!type || listMembers(*type).size() != 1) return false;
  if (const auto accept = fieldValue(request.headers, "Accept")) return acceptsType(accept, *type);
  const std::string media = mediaType(*type);
  // Whatever a browser could show as a page counts, written correctly or not.
  return !media.starts_with("text/html") && media.find("xhtml") == std::string::npos;
}

bool mayStay(const HTTPHeaders& headers) {
  const auto vary = varyingFields(headers);
  return !CacheControl(headers).noStore && std::ranges::find(vary, "*") == vary.end();
}

bool mayKeep(const URLRequest& request, const URLResponse& reply, const CacheTime& arrival) {
  if (reply.statusCode != 200 || !reply.body || !saysAnything(reply.headers)) return false;
  if (!isFromItsURL(request, reply)) return false;
  if (!mayStay(reply.headers) || !isComplete(request, reply) || !hasExpectedType(request, reply.headers))
    return false;
  return fieldValue(reply.headers, "ETag") || fieldValue(reply.headers, "Last-Modified") ||
         CacheControl(reply.headers).staleIfError || freshnessLifetime(reply.headers, arrival) > seconds(0);
}

StoredReply storedReply(const URLRequest& request, URLResponse reply, const CacheTime& sent,
                        const CacheTime& arrival) {
  StoredReply kept;
  kept.headers = std::move(reply.headers);
  removeUnkept(kept.headers);
  kept.selecting = selectingFields(request, kept.headers);
  kept.arrival = arrival;
  kept.ageOnArrival = ageOnArrival(kept.headers, sent, arrival);
  kept.body = std::move(reply.body).value_or("");
  return kept;
}

bool matches(const StoredReply& kept, const URLRequest& request) {
  return std::ranges::all_of(varyingFields(kept.headers), [&](auto name) {
    return name != "*" && fieldValue(kept.selecting, name) == fieldValue(request.headers, name);
  });
}

bool addConditions(URLRequest& request, const StoredReply& kept) {
  const auto tag = fieldValue(kept.headers, "ETag");
  const auto modified = fieldValue(kept.headers, "Last-Modified");
  if (tag) request.headers["If-None-Match"] = *tag;
  if (modified) request.headers["If-Modified-Since"] = *modified;
  return tag || modified;
}

bool confirms(const URLRequest& request, const URLResponse& reply, const StoredReply& kept) {
  if (!isFromItsURL(request, reply)) return false;
  const auto tag = fieldValue(reply.headers, "ETag"), keptTag = fieldValue(kept.headers, "ETag");
  if (tag) return keptTag && withoutWeakness(*tag) == withoutWeakness(*keptTag);
  const auto modified = fieldValue(reply.headers, "Last-Modified");
  return !modified || keptTag || modified == fieldValue(kept.headers, "Last-Modified");
}

bool mayRefresh(const StoredReply& kept, const URLResponse& reply) {
  const auto tag = fieldValue(reply.headers, "ETag");
  return !tag || tag->starts_with("W/") || tag == fieldValue(kept.headers, "ETag");
}

void refresh(StoredReply& kept, const URLRequest& request, const URLResponse& reply, const CacheTime& sent,
             const CacheTime& arrival) {
  HTTPHeaders update = reply.headers;
  removeUnkept(update);
  for (auto& [name, value] : update)
    if (!isOneOf(name, ofBody)) kept.headers[name] = value;
  // An age or a date that the service did not repeat belongs to the earlier reply.
  for (const char* const name : {"Age", "Date"})
    if (!update.contains(name)) kept.headers.erase(name);
  kept.selecting = selectingFields(request, kept.headers);
  kept.arrival = arrival;
  kept.ageOnArrival = ageOnArrival(kept.headers, sent, arrival);
}

bool isError(const Result<URLResponse>& outcome) {
  if (!outcome) return true;
  const int status = outcome->statusCode.value_or(0);
  return status == 500 || status == 502 || status == 503 || status == 504;
}

bool isUnsafe(const std::string& method) {
  return method != "GET" && method != "HEAD" && method != "OPTIONS" && method != "TRACE";
}

std::vector<std::string> changedKeys(const URL& requested, const URLResponse& reply) {
  const int status = reply.statusCode.value_or(0);
  if (status < 200 || status > 399) return {};
  std::vector<std::string> keys{cacheKey(requested)};
  const auto add = [&](const std::optional<URL>& url) {
    if (!url || originOf(*url) != originOf(requested)) return;
    const std::string key = cacheKey(*url);
    if (std::ranges::find(keys, key) == keys.end()) keys.push_back(key);
  };
  add(reply.url);
  for (const char* const name : {"Location", "Content-Location"})
    if (const auto reference = fieldValue(reply.headers, name))
      add(resolved(reply.url.value_or(requested), *reference));
  return keys;
}

}  // namespace TalvoConsentSDK

#include "adapters/cache/RequestTarget.h"

#include <cstddef>

#include "TalvoConsentSDK/base/ASCII.h"

namespace TalvoConsentSDK {

namespace {

// The parts of "scheme://authority/path?query". `path` begins with a slash or is empty.
struct Parts {
  std::string_view scheme, authority, path, query;  // `query` begins with its question mark

  explicit Parts(std::string_view text) {
    text = text.substr(0, text.find('#'));
    const auto colon = text.find(':');
    scheme = text.substr(0, colon);
    text.remove_prefix(colon + 1);
    if (text.starts_with("//")) text.remove_prefix(2);
    const auto end = text.find_first_of("/?");
    authority = text.substr(0, end);
    text.remove_prefix(authority.size());
    const auto question = text.find('?');
    path = text.substr(0, question);
    if (question != text.npos) query = text.substr(question);
  }
};

std::string origin(const Parts& url) {
  const std::string scheme = lowercased(url.scheme);
  std::string authority = lowercased(url.authority);
  const std::string_view implied = scheme == "https" ? ":443" : scheme == "http" ? ":80" : ":";
  if (authority.ends_with(implied)) authority.resize(authority.size() - implied.size());
  if (authority.ends_with(':')) authority.pop_back();
  return scheme + "://" + authority;
}

// RFC 3986, section 5.2.4. `path` begins with a slash.
std::string withoutDots(std::string_view path) {
  std::string result;
  while (!path.empty()) {
    const auto next = path.find('/', 1);
    const std::string_view segment = path.substr(0, next);
    path = next == path.npos ? "" : path.substr(next);
    if (segment == "/.." || segment == "/.") {
      if (segment == "/..") result.resize(result.rfind('/') == result.npos ? 0 : result.rfind('/'));
      if (path.empty()) result += '/';
    } else {
      result += segment;
    }
  }
  return result;
}

}  // namespace

std::string cacheKey(const URL& url) {
  const Parts parts(url.text());
  std::string key = origin(parts);
  key += parts.path.empty() ? "/" : parts.path;
  key += parts.query;
  return key;
}

std::string originOf(const URL& url) {
  return origin(Parts(url.text()));
}

bool hasUserInfo(const URL& url) {
  return Parts(url.text()).authority.find('@') != std::string_view::npos;
}

std::optional<URL> resolved(const URL& base, std::string_view reference) {
  if (auto absolute = URL::parse(reference)) return absolute;
  const Parts from(base.text());
  const std::string scheme(from.scheme);
  if (reference.starts_with("//")) return URL::parse(scheme + ":" + std::string(reference));
  const std::string origin = scheme + "://" + std::string(from.authority);
  reference = reference.substr(0, reference.find('#'));
  const auto question = reference.find('?');
  const std::string_view path = reference.substr(0, question);
  const std::string query(question == reference.npos ? "" : reference.substr(question));
  if (path.starts_with('/')) return URL::parse(origin + withoutDots(path) + query);
  if (path.empty()) {
    return URL::parse(origin + std::string(from.path) + (query.empty() ? std::string(from.query) : query));
  }
  const std::string folder(from.path.empty() ? "/" : from.path.substr(0, from.path.rfind('/') + 1));
  return URL::parse(origin + withoutDots(folder + std::string(path)) + query);
}

}  // namespace TalvoConsentSDK

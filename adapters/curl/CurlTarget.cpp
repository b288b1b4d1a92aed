#include "adapters/curl/CurlTarget.h"

#include <arpa/inet.h>
#include <curl/curl.h>
#include <netinet/in.h>
#include <strings.h>

namespace TalvoConsentSDK {

bool sameText(const std::string& a, const std::string& b) {
  return strcasecmp(a.c_str(), b.c_str()) == 0;
}

std::optional<CurlTarget> CurlTarget::parse(const char* url) {
  CurlTarget target;
  target.url.reset(curl_url());
  if (curl_url_set(target.url.get(), CURLUPART_URL, url,
                   CURLU_URLENCODE | CURLU_ALLOW_SPACE | CURLU_NON_SUPPORT_SCHEME | CURLU_PATH_AS_IS)) {
    return std::nullopt;
  }
  target.scheme = target.part(CURLUPART_SCHEME);
  target.host = target.part(CURLUPART_HOST);
  return target;
}

void CurlTarget::Deleter::operator()(CURLU* parsed) const noexcept {
  curl_url_cleanup(parsed);
}

std::string CurlTarget::part(int name) const {
  char* text = nullptr;
  const unsigned flags = name == CURLUPART_PORT ? CURLU_DEFAULT_PORT : 0;
  if (curl_url_get(url.get(), static_cast<CURLUPart>(name), &text, flags)) return {};
  const std::unique_ptr<char, decltype(&curl_free)> owner(text, &curl_free);
  return text;
}

std::string CurlTarget::origin() const {
  return host + ":" + part(CURLUPART_PORT);
}

bool CurlTarget::isLoopback() const {
  if (sameText(host, "localhost") || host == "[::1]") return true;
  in_addr address{};
  return inet_pton(AF_INET, host.c_str(), &address) == 1 && ntohl(address.s_addr) >> 24U == IN_LOOPBACKNET;
}

bool CurlTarget::sharesOrigin(const CurlTarget& other) const {
  return scheme == other.scheme && sameText(host, other.host) &&
         part(CURLUPART_PORT) == other.part(CURLUPART_PORT);
}

}  // namespace TalvoConsentSDK

#include "adapters/curl/CurlShared.h"

#include <new>
#include <utility>

#include <curl/curl.h>

namespace TalvoConsentSDK {

void CurlHandleDeleter::operator()(void* handle) const noexcept {
  curl_easy_cleanup(handle);
}

void CurlShared::Deleter::operator()(void* share) const noexcept {
  curl_share_cleanup(share);
}

// Without a share, libcurl resumes a TLS session only on the easy handle that opened it.
CurlShared::CurlShared(CurlRules allRules) : rules(std::move(allRules)), tlsSessions(curl_share_init()) {
  if (!tlsSessions) throw std::bad_alloc();
  curl_share_setopt(tlsSessions.get(), CURLSHOPT_SHARE, CURL_LOCK_DATA_SSL_SESSION);
}

}  // namespace TalvoConsentSDK

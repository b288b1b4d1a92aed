#include "adapters/curl/CurlShared.h"

#include <curl/curl.h>

namespace TalvoConsentSDK {

void CurlHandleDeleter::operator()(void* handle) const noexcept {
  curl_easy_cleanup(handle);
}

}  // namespace TalvoConsentSDK

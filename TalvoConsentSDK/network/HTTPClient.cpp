#include "TalvoConsentSDK/network/HTTPClient.h"

namespace TalvoConsentSDK {

using namespace platform;

Result<URLRequest> HTTPClient::makeRequest(const char* method, const std::optional<URL>& url,
                                           Result<std::string>* body, const HTTPHeaders& headers,
                                           const RequestOptions& options) {
  if (!url) return HTTPClientError::invalidURL();
  if (body && !*body) return HTTPClientError::networkError(body->error());
  Result<URLRequest> made{URLRequest(*url)};
  URLRequest& request = *made;
  request.method = method;
  if (body) {
    request.headers["Content-Type"] = "application/json";
    request.body = *std::move(*body);
  }
  for (const auto& [name, value] : headers) request.headers[name] = value;
  request.totalTimeout = options.totalTimeout;
  request.cancellation = options.cancellation;
  request.isPersonal = options.isPersonal || body;
  return made;
}

void HTTPClient::decode(std::string_view text, void* value, const json::Coding& coding) {
  const Result<void> read = json::decode(text, value, coding);
  if (!read) throw Error(HTTPClientError::decodingError(read.error()));
}

Task<std::string> HTTPClient::send(const char* method, const std::optional<URL>& url,
                                   Result<std::string>* body, const HTTPHeaders& headers,
                                   const RequestOptions& options) {
  return exchange(makeRequest(method, url, body, headers, options));
}

}  // namespace TalvoConsentSDK

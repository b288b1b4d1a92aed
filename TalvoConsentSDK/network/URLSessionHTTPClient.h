#pragma once

// The HTTPClient over the platform's URL session.

#include <memory>

#include "TalvoConsentSDK/network/HTTPClient.h"

namespace TalvoConsentSDK {

/// Sends each request on a session, and checks what the session reports.
class URLSessionHTTPClient : public HTTPClient {
 public:
  explicit URLSessionHTTPClient(std::shared_ptr<platform::URLSession> session,
                                std::shared_ptr<platform::Executor> decodingExecutor = nullptr,
                                JSONDecoder decoder = {}, JSONEncoder encoder = {});

  void postJSON(const URL& url, const JSONObject& body, const platform::HTTPHeaders& headers,
                JSONCompletion completion) override;

 protected:
  Task<std::string> exchange(Result<platform::URLRequest> request) override;

 private:
  const std::shared_ptr<platform::URLSession> session_;
};

}  // namespace TalvoConsentSDK

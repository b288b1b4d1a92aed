#pragma once

// JSON over HTTP: records to and from an endpoint, or untyped objects.

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "TalvoConsentSDK/base/Result.h"
#include "TalvoConsentSDK/models/JSONCoding.h"
#include "TalvoConsentSDK/models/JSONValue.h"
#include "TalvoConsentSDK/network/HTTPClientError.h"
#include "TalvoConsentSDK/platform/Task.h"
#include "TalvoConsentSDK/platform/URLSession.h"

namespace TalvoConsentSDK {

/// One request, one reply: nothing is cached, retried, queued or cancelled. Safe from any thread. A client
/// must outlive its tasks.
class HTTPClient {
 public:
  using JSONCompletion = std::function<void(Result<JSONObject>)>;

  /// Replies to typed requests are decoded on `decodingExecutor`, or, if it is null, where the awaiting task
  /// runs.
  HTTPClient(JSONDecoder decoder, JSONEncoder encoder, std::shared_ptr<platform::Executor> decodingExecutor)
      : decoder_(decoder), encoder_(encoder), decodingExecutor_(std::move(decodingExecutor)) {}
  virtual ~HTTPClient() = default;

  /// Sends a request, with `body` as JSON if there is one, and reads the reply as a `Reply`. Every failure is
  /// thrown as an `HTTPClientError`: `invalidURL` if there is no `url`.
  template <class Reply>
  Task<Reply> get(std::optional<URL> url, platform::HTTPHeaders headers) {
    return reply<Reply>(exchange("GET", std::move(url), std::nullopt, std::move(headers)));
  }
  template <class Reply, class Body>
  Task<Reply> post(std::optional<URL> url, const Body& body, platform::HTTPHeaders headers) {
    return reply<Reply>(exchange("POST", std::move(url), encoder_.encode(body), std::move(headers)));
  }
  template <class Reply, class Body>
  Task<Reply> put(std::optional<URL> url, const Body& body, platform::HTTPHeaders headers) {
    return reply<Reply>(exchange("PUT", std::move(url), encoder_.encode(body), std::move(headers)));
  }

  /// Posts a JSON object and calls `completion` once, on the session's thread. If `body` cannot be encoded or
  /// the session throws, calls it on the caller's thread, before returning. `completion` receives the reply's
  /// object, an `HTTPClientError`, or a `PlatformError` of domain "HTTPClient":
  /// -1 "Failed to serialize JSON payload", -2 "No data received", -3 "Invalid JSON response".
  virtual void postJSON(URL url, const JSONObject& body, platform::HTTPHeaders headers,
                        JSONCompletion completion) = 0;

 protected:
  /// Sends one request and returns the body of an accepted reply. Throws an `HTTPClientError`, also if there
  /// is no `url` or the body could not be encoded.
  virtual Task<std::string> exchange(std::string method, std::optional<URL> url,
                                     std::optional<Result<std::string>> body,
                                     platform::HTTPHeaders headers) = 0;

  const JSONDecoder& decoder() const noexcept { return decoder_; }
  const JSONEncoder& encoder() const noexcept { return encoder_; }

 private:
  template <class Reply>
  Task<Reply> reply(Task<std::string> body) {
    return decoded<Reply>(std::move(body)).on(decodingExecutor_);
  }

  template <class Reply>
  Task<Reply> decoded(Task<std::string> body) {
    const std::string text = co_await std::move(body);
    Result<Reply> reply = decoder_.decode<Reply>(text);
    if (!reply) throw Error(HTTPClientError::decodingError(reply.error()));
    co_return *std::move(reply);
  }

  const JSONDecoder decoder_;
  const JSONEncoder encoder_;
  const std::shared_ptr<platform::Executor> decodingExecutor_;
};

}  // namespace TalvoConsentSDK

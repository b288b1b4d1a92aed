#pragma once

// JSON over HTTP: records to and from an endpoint, or untyped objects.

#include <chrono>
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

/// What a session should know about a request besides its content.
struct RequestOptions {
  std::shared_ptr<platform::Cancellation> cancellation{};
  std::optional<std::chrono::milliseconds> totalTimeout{};
  bool isPersonal = false;  // the reply is about one person
};

/// One request, one reply: this class caches, retries and queues nothing. Safe from any thread. A client must
/// outlive its tasks.
class HTTPClient {
 public:
  using JSONCompletion = std::function<void(Result<JSONObject>)>;

  /// Replies to typed requests are decoded on `decodingExecutor`, or, if it is null, where the awaiting task
  /// runs.
  HTTPClient(JSONDecoder decoder, JSONEncoder encoder, std::shared_ptr<platform::Executor> decodingExecutor)
      : decoder_(decoder), encoder_(encoder), decodingExecutor_(std::move(decodingExecutor)) {}
  virtual ~HTTPClient() = default;

  /// Sends a request, with `body` as JSON if there is one, and reads the reply as a `Reply`. Every failure is
  /// thrown as an `HTTPClientError`: `invalidURL` if there is no `url`. The reply to a request with a body is
  /// always personal.
  template <class Reply>
  Task<Reply> get(const std::optional<URL>& url, const platform::HTTPHeaders& headers,
                  const RequestOptions& options = {}) {
    return reply<Reply>(send("GET", url, nullptr, headers, options));
  }
  template <class Reply, class Body>
  Task<Reply> post(const std::optional<URL>& url, const Body& body, const platform::HTTPHeaders& headers) {
    Result<std::string> json = encoder_.encode(body);
    return reply<Reply>(send("POST", url, &json, headers, {}));
  }
  template <class Reply, class Body>
  Task<Reply> put(const std::optional<URL>& url, const Body& body, const platform::HTTPHeaders& headers) {
    Result<std::string> json = encoder_.encode(body);
    return reply<Reply>(send("PUT", url, &json, headers, {}));
  }

  /// Posts a JSON object and calls `completion` once, on the session's thread. If `body` cannot be encoded or
  /// the session throws, calls it on the caller's thread, before returning. `completion` receives the reply's
  /// object, an `HTTPClientError`, or a `PlatformError` of domain "HTTPClient":
  /// -1 "Failed to serialize JSON payload", -2 "No data received", -3 "Invalid JSON response".
  virtual void postJSON(const URL& url, const JSONObject& body, const platform::HTTPHeaders& headers,
                        JSONCompletion completion) = 0;

 protected:
  /// Sends `request` and returns the body of an accepted reply. Throws an `HTTPClientError`. If `request`
  /// holds an error, throws that one.
  virtual Task<std::string> exchange(Result<platform::URLRequest> request) = 0;

  /// Returns the request to send, or an `HTTPClientError` if there is no `url` or the body could not be
  /// encoded. Moves the text out of `body`, unless it is null. `headers` can replace the content type.
  static Result<platform::URLRequest> makeRequest(const char* method, const std::optional<URL>& url,
                                                  Result<std::string>* body,
                                                  const platform::HTTPHeaders& headers,
                                                  const RequestOptions& options);

  const JSONDecoder& decoder() const noexcept { return decoder_; }
  const JSONEncoder& encoder() const noexcept { return encoder_; }

 private:
  /// Reads `text` into a new value of `coding`'s type. Throws an `HTTPClientError`.
  static void decode(std::string_view text, void* value, const json::Coding& coding);

  Task<std::string> send(const char* method, const std::optional<URL>& url, Result<std::string>* body,
                         const platform::HTTPHeaders& headers, const RequestOptions& options);

  template <class Reply>
  Task<Reply> reply(Task<std::string> body) {
    return decoded<Reply>(std::move(body)).on(decodingExecutor_);
  }

  template <class Reply>
  Task<Reply> decoded(Task<std::string> body) {
    const std::string text = co_await std::move(body);
    Reply reply{};
    decode(text, &reply, json::codingOf<Reply>());
    co_return reply;
  }

  const JSONDecoder decoder_;
  const JSONEncoder encoder_;
  const std::shared_ptr<platform::Executor> decodingExecutor_;
};

}  // namespace TalvoConsentSDK

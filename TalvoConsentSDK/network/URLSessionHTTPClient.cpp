#include "TalvoConsentSDK/network/URLSessionHTTPClient.h"

#include <utility>

#include "TalvoConsentSDK/base/unicode/Characters.h"
#include "TalvoConsentSDK/models/CodingError.h"
#include "TalvoConsentSDK/platform/Printer.h"
#include "TalvoConsentSDK/platform/Spawn.h"

namespace TalvoConsentSDK {

using namespace platform;

namespace {

PlatformError transportError(int code, const char* description) {
  return {"HTTPClient", code, description};
}

enum class MissingBody { isEmpty, isAnError };

// The only place that decides whether a request succeeded. If several things are wrong, the first of these is
// reported: a transport error, a missing body, a response that is not HTTP, a status that is not accepted.
Result<std::string> acceptedBody(Result<URLResponse> outcome, MissingBody missingBody) {
  if (!outcome) return HTTPClientError::networkError(outcome.error());
  URLResponse& response = *outcome;
  if (!response.body && missingBody == MissingBody::isAnError) return transportError(-2, "No data received");
  if (!response.statusCode) return HTTPClientError::invalidResponse();
  std::string body = std::move(response.body).value_or("");
  if (*response.statusCode < 200 || *response.statusCode > 299) {
    return HTTPClientError::httpError(*response.statusCode, isUTF8(body) ? body : "Unknown error");
  }
  return body;
}

// Returns an error even if it runs out of memory, because the caller waits for the outcome.
Result<JSONObject> acceptedObject(const JSONDecoder& decoder, Result<URLResponse> outcome) try {
  const auto body = acceptedBody(std::move(outcome), MissingBody::isAnError);
  if (!body) return body.error();
  Result<JSONValue> value = decoder.decode<JSONValue>(*body);
  if (!value) return HTTPClientError::decodingError(value.error());
  if (JSONObject* object = value->object()) return std::move(*object);
  if (value->array()) return transportError(-3, "Invalid JSON response");
  return HTTPClientError::decodingError(
      CodingError(CodingError::Kind::dataCorrupted, "", "The document is neither an object nor an array"));
} catch (...) {
  return HTTPClientError::decodingError(Error::current());
}

void report(const HTTPClient::JSONCompletion& completion, const Result<JSONObject>& result) {
  callHost([&] {
    if (completion) completion(result);
  });
}

}  // namespace

URLSessionHTTPClient::URLSessionHTTPClient(std::shared_ptr<URLSession> session,
                                           std::shared_ptr<Executor> decodingExecutor, JSONDecoder decoder,
                                           JSONEncoder encoder)
    : HTTPClient(decoder, encoder, std::move(decodingExecutor)), session_(std::move(session)) {
  // The JSON parser destroys its objects when the process exits, in the reverse order of their creation and
  // of the registration of exit handlers. Creates them now, so that they outlive the threads that decode,
  // whose handlers are registered with the first job.
  static_cast<void>(isUTF8(""));
}

void URLSessionHTTPClient::postJSON(const URL& url, const JSONObject& body, const HTTPHeaders& headers,
                                    JSONCompletion completion) {
  Result<std::string> bytes = encoder().encode(body);
  Result<URLRequest> request = makeRequest("POST", url, &bytes, headers, {});
  if (!request) {
    return report(completion, transportError(-1, "Failed to serialize JSON payload"));
  }
  platform::runOnce(*session_, *std::move(request),
                    [decoder = decoder(), completion = std::move(completion)](Result<URLResponse> outcome) {
                      report(completion, acceptedObject(decoder, std::move(outcome)));
                    });
}

Task<std::string> URLSessionHTTPClient::exchange(Result<URLRequest> request) {
  CallbackAwaiter<Result<URLResponse>> reply(
      [session = session_, &request](URLSession::Completion completion) {
        platform::runOnce(*session, std::move(request).value(), std::move(completion));
      });
  Result<URLResponse> outcome = co_await std::move(reply);
  co_return acceptedBody(std::move(outcome), MissingBody::isEmpty).value();
}

}  // namespace TalvoConsentSDK

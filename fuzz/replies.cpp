// Passes outcomes of a session through the transport and through the cache. Every request must end exactly
// once, with the error that fits the outcome. The cache must not change an outcome. The input has five parts:
// the body; the status, or "-" for a reply without a body, or "?" for a reply without a status; the error's
// text; the header fields of the reply, one in a line; the header fields of the request.

#include <sstream>

#include "TalvoConsentSDK/models/BannerCustomization.h"
#include "TalvoConsentSDK/models/ConsentResponse.h"
#include "TalvoConsentSDK/models/FullConsent.h"
#include "TalvoConsentSDK/models/Services.h"
#include "TalvoConsentSDK/models/SiteConfiguration.h"
#include "TalvoConsentSDK/network/URLSessionHTTPClient.h"
#include "TalvoConsentSDK/platform/Spawn.h"

#include "adapters/cache/CachingURLSession.h"
#include "adapters/cache/MemoryCacheStorage.h"

#include "fuzz/Fuzzing.h"
#include "testing/fakes/ManualExecutor.h"

using namespace TalvoConsentSDK;
using namespace TalvoConsentSDK::platform;
using namespace TalvoConsentSDK::fuzzing;

namespace {

using Case = HTTPClientError::Case;

class OneOutcome : public URLSession {
 public:
  explicit OneOutcome(Result<URLResponse> outcome) : outcome_(std::move(outcome)) {}
  void run(URLRequest, Completion completion) override { completion(outcome_); }

 private:
  const Result<URLResponse> outcome_;
};

const char* const address = "https://service.example/x";

HTTPHeaders headersOf(const std::string& lines) {
  HTTPHeaders headers;
  std::istringstream stream(lines);
  for (std::string line; std::getline(stream, line);) {
    const auto colon = line.find(':');
    if (colon != line.npos) headers[line.substr(0, colon)] = line.substr(colon + 1);
  }
  return headers;
}

Result<URLResponse> outcomeOf(Input& input) {
  URLResponse response;
  response.body = input.text();
  const std::string status = input.text();
  const std::string error = input.text();
  response.headers = headersOf(input.text());
  response.url = URL::parse(address);
  if (!error.empty()) return PlatformError("net", 1, error);
  if (status == "-") response.body.reset();
  if (status != "?") response.statusCode = status.empty() || status == "-" ? 200 : std::atoi(status.c_str());
  return response;
}

// The expected error for an outcome, as far as it does not depend on the body; nothing if the body decides.
std::optional<Case> expectedCase(const Result<URLResponse>& outcome) {
  if (!outcome) return Case::networkError;
  if (!outcome->statusCode) return Case::invalidResponse;
  if (*outcome->statusCode < 200 || *outcome->statusCode > 299) return Case::httpError;
  return std::nullopt;
}

template <class Reply>
void checkTyped(URLSessionHTTPClient& client, const Result<URLResponse>& outcome, const URL& url) {
  int ends = 0;
  spawn<Reply>(nullptr, client.get<Reply>(url, {}), [&](const Result<Reply>& reply) {
    ++ends;
    const auto expected = expectedCase(outcome);
    if (reply) return require(!expected && (recoded(*reply), true), "only a good reply is a success");
    const auto* error = reply.error().template as<HTTPClientError>();
    require(error && error->kind() == expected.value_or(Case::decodingError), "the error fits the outcome");
    if (error->kind() == Case::httpError) {
      require(error->statusCode() == *outcome->statusCode, "the error has the reply's status");
      require(error->message() == outcome->body.value_or("") || error->message() == "Unknown error",
              "the error's message is the body");
    }
  });
  require(ends == 1, "a request ends once");
}

void checkUntyped(URLSessionHTTPClient& client, const Result<URLResponse>& outcome, const URL& url) {
  int ends = 0;
  client.postJSON(url, {{"a", 1}}, {}, [&](const Result<JSONObject>& reply) {
    ++ends;
    if (reply) return require(!expectedCase(outcome), "only a good reply is a success");
    const auto* error = reply.error().as<PlatformError>();
    const bool isMissing = outcome && !outcome->body;
    require((error && error->code() == -2) == isMissing, "a missing body is reported as missing");
    if (!error)
      require(reply.error().as<HTTPClientError>() != nullptr, "every other error is an HTTPClientError");
  });
  require(ends == 1, "a request ends once");
}

void checkCached(const Result<URLResponse>& outcome, const HTTPHeaders& headers) {
  const auto executor = std::make_shared<ManualExecutor>();
  CachingURLSession session(std::make_shared<OneOutcome>(outcome), std::make_shared<MemoryCacheStorage>(),
                            executor);
  int ends = 0, hits = 0;
  for (int request = 0; request < 3; ++request) {
    URLRequest get(*URL::parse(address));
    get.headers = headers;
    session.run(std::move(get), [&](const Result<URLResponse>& reply) {
      ++ends;
      require(reply.has_value() == outcome.has_value(), "the cache keeps no errors");
      if (!reply) return;
      hits += reply->source != ReplySource::network;
      const bool isConfirmed = reply->source == ReplySource::validatedCache;
      require(isConfirmed || reply->body == outcome->body, "the cache changes no body");
      require(isConfirmed || reply->statusCode == outcome->statusCode, "the cache changes no status");
    });
    executor->runAll();
  }
  require(ends == 3, "each request ends once");
  require(hits == 0 || outcome->statusCode == 200, "only replies with status 200 are kept");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Input input(data, size);
  const auto outcome = outcomeOf(input);
  const URL url = *URL::parse(address);
  URLSessionHTTPClient client(std::make_shared<OneOutcome>(outcome));
  checkTyped<BannerCustomization>(client, outcome, url);
  checkTyped<ConsentResponse>(client, outcome, url);
  checkTyped<std::optional<FullConsent>>(client, outcome, url);
  checkTyped<Services>(client, outcome, url);
  checkTyped<SiteConfiguration>(client, outcome, url);
  checkUntyped(client, outcome, url);
  checkCached(outcome, headersOf(input.text()));
  return 0;
}

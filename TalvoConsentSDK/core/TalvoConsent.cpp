#include "TalvoConsentSDK/core/TalvoConsent.h"

#include <mutex>
#include <utility>

#include "TalvoConsentSDK/network/Endpoint.h"
#include "TalvoConsentSDK/network/URLSessionHTTPClient.h"
#include "TalvoConsentSDK/platform/Platform.h"
#include "TalvoConsentSDK/platform/Printer.h"

namespace TalvoConsentSDK {

namespace {

// Never destroyed: threads may still ask for the instance while the process exits.
struct SharedClient {
  std::mutex lock;
  std::shared_ptr<TalvoConsent> client;

  static SharedClient& slot() {
    static SharedClient& shared = *new SharedClient;
    return shared;
  }
};

}  // namespace

std::shared_ptr<TalvoConsent> TalvoConsent::getInstance(const std::string& /*tenantId*/,
                                                        const std::string& collectionPointId,
                                                        const std::optional<std::string>& token,
                                                        const std::optional<std::string>& apiUrl) {
  SharedClient& shared = SharedClient::slot();
  const std::scoped_lock guard(shared.lock);
  if (!shared.client) {
    shared.client.reset(new TalvoConsent(collectionPointId, token, apiUrl.value_or(TALVO_DEFAULT_API_URL)));
  }
  return shared.client;
}

TalvoConsent::TalvoConsent(std::string collectionPointId, std::optional<std::string> token,
                           std::string baseUrl)
    : collectionPointId_(std::move(collectionPointId)),
      token_(std::move(token)),
      baseUrl_(std::move(baseUrl)),
      httpClient_(std::make_shared<URLSessionHTTPClient>(Platform::current().urlSession)) {}

void TalvoConsent::submitConsent(const std::string& userEmail, const std::map<std::int64_t, bool>& topics,
                                 Completion completion) {
  JSONArray topicSelectionDtos;
  for (const auto& [topicId, selected] : topics) {
    topicSelectionDtos.push_back(JSONObject{{"topicId", topicId}, {"selected", selected}});
  }
  JSONObject body{
      {"collectionPointId", collectionPointId_},
      {"requesterId", userEmail},
      {"requesterType", "EMAIL"},
      {"topicSelectionDtos", std::move(topicSelectionDtos)},
  };
  if (token_) body["token"] = *token_;

  const auto url = endpointURL(baseUrl_, "/consent");
  if (!url) {
    return callHost([&] {
      if (completion) completion(HTTPClientError::invalidURL());
    });
  }
  httpClient_->postJSON(*url, body, endpointHeaders(), std::move(completion));
}

}  // namespace TalvoConsentSDK

#include "TalvoConsentSDK/core/TalvoConsent.h"

#include <utility>

#include "TalvoConsentSDK/core/ClientSlot.h"
#include "TalvoConsentSDK/network/Endpoint.h"
#include "TalvoConsentSDK/network/URLSessionHTTPClient.h"
#include "TalvoConsentSDK/platform/Platform.h"
#include "TalvoConsentSDK/platform/Printer.h"

namespace TalvoConsentSDK {

using namespace platform;

std::shared_ptr<TalvoConsent> TalvoConsent::getInstance(const std::string& /*tenantId*/,
                                                        const std::string& collectionPointId,
                                                        const std::optional<std::string>& token,
                                                        const std::optional<std::string>& apiUrl) {
  return ClientSlot<TalvoConsent>::shared().create([&] {
    return std::shared_ptr<TalvoConsent>(
        new TalvoConsent(collectionPointId, token, apiUrl.value_or(TALVO_DEFAULT_API_URL)));
  });
}

TalvoConsent::TalvoConsent(std::string collectionPointId, std::optional<std::string> token,
                           std::string baseUrl)
    : collectionPointId_(std::move(collectionPointId)),
      token_(std::move(token)),
      baseUrl_(std::move(baseUrl)),
      callbacks_(Platform::current().callbacks),
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
  httpClient_->postJSON(
      *url, body, endpointHeaders(),
      [callbacks = callbacks_, completion = std::move(completion)](Result<JSONObject> reply) {
        platform::postOrRun(callbacks, [completion, reply = std::move(reply)] {
          if (completion) completion(reply);
        });
      });
}

}  // namespace TalvoConsentSDK

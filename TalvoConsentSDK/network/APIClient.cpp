#include "TalvoConsentSDK/network/APIClient.h"

#include <utility>

#include "TalvoConsentSDK/network/Endpoint.h"

namespace TalvoConsentSDK {

APIClient::APIClient(std::string baseUrl, std::string siteId, std::shared_ptr<HTTPClient> httpClient)
    : baseUrl_(std::move(baseUrl)), siteId_(std::move(siteId)), httpClient_(std::move(httpClient)) {}

Task<SiteConfiguration> APIClient::fetchConfiguration() const {
  return get<SiteConfiguration>("/cookies/" + siteId_ + "/configurations");
}

Task<BannerCustomization> APIClient::fetchBannerCustomization(std::string language) const {
  return get<BannerCustomization>("/banner-customization/" + siteId_ + "?lng=" + language);
}

Task<Services> APIClient::fetchServices(std::string language) const {
  return get<Services>("/cookies/" + siteId_ + "?lng=" + language);
}

Task<ConsentResponse> APIClient::createConsent(FullConsent payload) const {
  auto reply =
      httpClient_->post<ConsentResponse>(endpoint("/cookie-consent/" + siteId_), payload, endpointHeaders());
  co_return co_await std::move(reply);
}

Task<ConsentResponse> APIClient::updateConsent(FullConsent payload) const {
  auto reply =
      httpClient_->put<ConsentResponse>(endpoint("/cookie-consent/" + siteId_), payload, endpointHeaders());
  co_return co_await std::move(reply);
}

Task<std::optional<FullConsent>> APIClient::fetchIdentifiedConsent(
    std::string userId, std::optional<std::string> consentId) const {
  std::string path = "/cookie-consent/" + siteId_ + "/identified/" + userId;
  if (consentId) path += "?consentId=" + *consentId;
  return get<std::optional<FullConsent>>(std::move(path));
}

template <class Reply>
Task<Reply> APIClient::get(std::string path) const {
  auto reply = httpClient_->get<Reply>(endpoint(path), endpointHeaders());
  co_return co_await std::move(reply);
}

URL APIClient::endpoint(const std::string& path) const {
  auto url = endpointURL(baseUrl_, path);
  if (!url) throw Error(HTTPClientError::invalidURL());
  return *std::move(url);
}

}  // namespace TalvoConsentSDK

#include "TalvoConsentSDK/network/APIClient.h"

#include <utility>

#include "TalvoConsentSDK/network/Endpoint.h"

namespace TalvoConsentSDK {

namespace {

template <class Reply>
Task<Reply> failed(HTTPClientError error) {
  throw Error(std::move(error));
  co_return Reply();
}

}  // namespace

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
  auto url = endpointURL(baseUrl_, "/cookie-consent/" + siteId_);
  if (!url) return failed<ConsentResponse>(HTTPClientError::invalidURL());
  return httpClient_->post<ConsentResponse>(*std::move(url), payload, endpointHeaders());
}

Task<ConsentResponse> APIClient::updateConsent(FullConsent payload) const {
  auto url = endpointURL(baseUrl_, "/cookie-consent/" + siteId_);
  if (!url) return failed<ConsentResponse>(HTTPClientError::invalidURL());
  return httpClient_->put<ConsentResponse>(*std::move(url), payload, endpointHeaders());
}

Task<std::optional<FullConsent>> APIClient::fetchIdentifiedConsent(
    std::string userId, std::optional<std::string> consentId) const {
  if (!isOneSegment(userId)) return failed<std::optional<FullConsent>>(HTTPClientError::invalidURL());
  std::string path = "/cookie-consent/" + siteId_ + "/identified/" + userId;
  if (consentId) path += "?consentId=" + *consentId;
  return get<std::optional<FullConsent>>(path);
}

template <class Reply>
Task<Reply> APIClient::get(const std::string& path) const {
  auto url = endpointURL(baseUrl_, path);
  if (!url) return failed<Reply>(HTTPClientError::invalidURL());
  return httpClient_->get<Reply>(*std::move(url), endpointHeaders());
}

}  // namespace TalvoConsentSDK

#include "TalvoConsentSDK/network/APIClient.h"

#include <utility>

#include "TalvoConsentSDK/network/Endpoint.h"

namespace TalvoConsentSDK {

APIClient::APIClient(std::string baseUrl, std::string siteId, std::shared_ptr<HTTPClient> httpClient)
    : baseUrl_(std::move(baseUrl)), siteId_(std::move(siteId)), httpClient_(std::move(httpClient)) {}

Task<SiteConfiguration> APIClient::fetchConfiguration(const RequestOptions& options) const {
  return get<SiteConfiguration>("/cookies/" + siteId_ + "/configurations", options);
}

Task<BannerCustomization> APIClient::fetchBannerCustomization(std::string language,
                                                              const RequestOptions& options) const {
  return get<BannerCustomization>("/banner-customization/" + siteId_ + "?lng=" + language, options);
}

Task<Services> APIClient::fetchServices(std::string language, const RequestOptions& options) const {
  return get<Services>("/cookies/" + siteId_ + "?lng=" + language, options);
}

Task<ConsentResponse> APIClient::createConsent(FullConsent payload) const {
  return httpClient_->post<ConsentResponse>(consentURL(), payload, endpointHeaders());
}

Task<ConsentResponse> APIClient::updateConsent(FullConsent payload) const {
  return httpClient_->put<ConsentResponse>(consentURL(), payload, endpointHeaders());
}

Task<std::optional<FullConsent>> APIClient::fetchIdentifiedConsent(
    std::string userId, std::optional<std::string> consentId) const {
  std::optional<URL> url;
  if (isOneSegment(userId)) {
    const std::string path = "/cookie-consent/" + siteId_ + "/identified/" + userId;
    url = endpointURL(baseUrl_, consentId ? path + "?consentId=" + *consentId : path);
  }
  return httpClient_->get<std::optional<FullConsent>>(url, endpointHeaders(), {.isPersonal = true});
}

std::optional<URL> APIClient::consentURL() const {
  return endpointURL(baseUrl_, "/cookie-consent/" + siteId_);
}

template <class Reply>
Task<Reply> APIClient::get(const std::string& path, const RequestOptions& options) const {
  return httpClient_->get<Reply>(endpointURL(baseUrl_, path), endpointHeaders(), options);
}

}  // namespace TalvoConsentSDK

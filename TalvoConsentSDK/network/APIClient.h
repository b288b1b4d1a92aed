#pragma once

// The consent service's endpoints.

#include <memory>
#include <optional>
#include <string>

#include "TalvoConsentSDK/models/BannerCustomization.h"
#include "TalvoConsentSDK/models/ConsentResponse.h"
#include "TalvoConsentSDK/models/FullConsent.h"
#include "TalvoConsentSDK/models/Services.h"
#include "TalvoConsentSDK/models/SiteConfiguration.h"
#include "TalvoConsentSDK/network/HTTPClient.h"
#include "TalvoConsentSDK/platform/Task.h"

namespace TalvoConsentSDK {

/// Talks to the consent service about one site. Every failure is thrown as an `HTTPClientError`; nothing is
/// printed or retried. Safe from any thread; it must outlive its tasks.
class APIClient {
 public:
  APIClient(std::string baseUrl, std::string siteId, std::shared_ptr<HTTPClient> httpClient);

  Task<SiteConfiguration> fetchConfiguration(const RequestOptions& options = {}) const;
  Task<BannerCustomization> fetchBannerCustomization(std::string language,
                                                     const RequestOptions& options = {}) const;
  Task<Services> fetchServices(std::string language, const RequestOptions& options = {}) const;

  Task<ConsentResponse> createConsent(FullConsent payload) const;
  Task<ConsentResponse> updateConsent(FullConsent payload) const;

  /// Returns the consent that the service holds for a user; nothing if it holds none. Fails with `invalidURL`
  /// if the user's identifier, as part of the URL, would name another endpoint or another user.
  Task<std::optional<FullConsent>> fetchIdentifiedConsent(std::string userId,
                                                          std::optional<std::string> consentId) const;

 private:
  std::optional<URL> consentURL() const;

  template <class Reply>
  Task<Reply> get(const std::string& path, const RequestOptions& options) const;

  const std::string baseUrl_;
  const std::string siteId_;
  const std::shared_ptr<HTTPClient> httpClient_;
};

}  // namespace TalvoConsentSDK

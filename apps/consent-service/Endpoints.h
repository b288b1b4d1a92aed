#pragma once

// What the service answers at each of its endpoints, whatever carries the requests.

#include <memory>
#include <string>

#include "ConsentStore.h"
#include "Reply.h"
#include "Sites.h"

namespace TalvoConsentSDK::service {

/// A request, taken apart. Parts that an endpoint does not have are empty.
struct Call {
  std::string site;
  std::string rest;      // the path behind the site and the endpoint's own words: a user or a file
  std::string language;  // of the query
  std::string body;
  std::string base;  // URL by which the client reached the service, without a slash at the end
};

/// The endpoints, each named after what it answers. Safe from any thread.
class Endpoints {
 public:
  Endpoints(Sites sites, std::unique_ptr<ConsentStore> store)
      : sites_(std::move(sites)), store_(std::move(store)) {}

  Reply index(const Call& call) const;
  Reply siteFile(const Call& call) const;

  Reply configuration(const Call& call) const;
  Reply customization(const Call& call) const;
  Reply services(const Call& call) const;

  Reply createConsent(const Call& call) const;
  Reply updateConsent(const Call& call) const;
  Reply identifiedConsent(const Call& call) const;
  Reply submitTopics(const Call& call) const;

 private:
  Sites sites_;
  std::unique_ptr<ConsentStore> store_;
};

}  // namespace TalvoConsentSDK::service

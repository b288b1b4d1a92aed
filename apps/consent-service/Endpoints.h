#pragma once

// Answers the requests to each endpoint, independently of the transport.

#include <memory>
#include <string>

#include "ConsentStore.h"
#include "Reply.h"
#include "Sites.h"

namespace TalvoConsentSDK::service {

/// The parts of a request. Parts that the request does not have are empty.
struct Call {
  std::string site;
  std::string rest;      // the end of the path: a user or a file
  std::string language;  // from the query
  std::string body;
  std::string base;  // URL at which the client reached the service, without a trailing slash
};

/// The endpoints, whose paths `Server` lists. Thread-safe.
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
  Reply document(const Call& call, std::string text) const;

  Sites sites_;
  std::unique_ptr<ConsentStore> store_;
};

}  // namespace TalvoConsentSDK::service

#pragma once

// Parses and checks what clients submit. The checks are stricter than the types, so that a client that leaves
// out part of a decision gets an error at once.

#include <cstddef>
#include <string>
#include <string_view>

#include "TalvoConsentSDK/base/Result.h"
#include "TalvoConsentSDK/models/FullConsent.h"

namespace TalvoConsentSDK::service {

/// A user's choices on the topics of a collection point.
struct TopicSubmission {
  std::string collectionPointId;
  std::size_t topics = 0;  // number of topics in the submission
};

/// Parses a consent for `site`. Status, categories and the kind of consent are required; the status and the
/// kind must be known values. The site in the body, if any, must be `site`. Fails with a CodingError.
Result<FullConsent> parseConsent(std::string_view body, std::string_view site);

/// Parses choices on topics. Fails with a CodingError if a required key is missing, a key is unknown, or a
/// value is not of its key's type.
Result<TopicSubmission> parseTopics(std::string_view body);

}  // namespace TalvoConsentSDK::service

#pragma once

// What clients submit, read and checked. The checks are stricter than the records: a client that leaves out
// what every decision has is told so, rather than found out later.

#include <cstddef>
#include <string>
#include <string_view>

#include "TalvoConsentSDK/base/Result.h"
#include "TalvoConsentSDK/models/FullConsent.h"

namespace TalvoConsentSDK::service {

/// A person's choices on the topics of a collection point.
struct TopicSubmission {
  std::string collectionPointId;
  std::size_t topics = 0;  // how many were chosen on
};

/// A consent for `site`: status, categories and kind of consent are required and known, and the site, when
/// named, is this one. Fails with a CodingError.
Result<FullConsent> parseConsent(std::string_view body, std::string_view site);

/// Choices on topics, with every key they need and no other. Fails with a CodingError.
Result<TopicSubmission> parseTopics(std::string_view body);

}  // namespace TalvoConsentSDK::service

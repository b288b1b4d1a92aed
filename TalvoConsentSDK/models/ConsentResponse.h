#pragma once

// The service's answer to a consent that was submitted.

#include <string>
#include <utility>

#include "TalvoConsentSDK/base/Export.h"

namespace TalvoConsentSDK TALVO_EXPORT {

/// Identifies the record in which the service keeps the consent.
struct ConsentResponse {
  ConsentResponse() {}
  explicit ConsentResponse(std::string identifier) : id(std::move(identifier)) {}

  std::string id;
};

}  // namespace TalvoConsentSDK

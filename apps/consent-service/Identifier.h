#pragma once

// Identifiers for the records of the service.

#include <string>

namespace TalvoConsentSDK::service {

/// A new random identifier (a version 4 UUID in lower case). Thread-safe.
std::string newIdentifier();

}  // namespace TalvoConsentSDK::service

#pragma once

// Names for the records that the service keeps.

#include <string>

namespace TalvoConsentSDK::service {

/// A new random identifier (a version 4 UUID in lower case). Safe from any thread.
std::string newIdentifier();

}  // namespace TalvoConsentSDK::service

// Reads and writes the services catalogue.

#include "TalvoConsentSDK/models/json/ServicesFields.h"

namespace TalvoConsentSDK {

template const json::Coding& json::codingOf<Services>();

}  // namespace TalvoConsentSDK

#pragma once

#include "TalvoConsentSDK/TalvoConsentSDK.h"

// A platform with the adapters of this app.
TalvoConsentSDK::Platform chosenPlatform();

#pragma once

#include "TalvoConsentSDK/TalvoConsentSDK.h"

// The adapters of this app's choice.
TalvoConsentSDK::Platform chosenPlatform();

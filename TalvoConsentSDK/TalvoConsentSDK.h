#pragma once

// Includes everything that a host needs: both clients, the records they exchange, and the platform to
// install.

#include "TalvoConsentSDK/base/Version.h"
#include "TalvoConsentSDK/core/BannerHandlers.h"
#include "TalvoConsentSDK/core/BannerOptions.h"
#include "TalvoConsentSDK/core/ConsentEventCallback.h"
#include "TalvoConsentSDK/core/ConsentGate.h"
#include "TalvoConsentSDK/core/CookiesSDK.h"
#include "TalvoConsentSDK/core/Subscription.h"
#include "TalvoConsentSDK/core/TalvoConsent.h"
#include "TalvoConsentSDK/models/BasicConsent.h"
#include "TalvoConsentSDK/models/ConsentEvent.h"
#include "TalvoConsentSDK/models/ConsentResponse.h"
#include "TalvoConsentSDK/models/ConsentValue.h"
#include "TalvoConsentSDK/models/ConsentVocabulary.h"
#include "TalvoConsentSDK/models/JSONValue.h"
#include "TalvoConsentSDK/network/HTTPClientError.h"
#include "TalvoConsentSDK/platform/Platform.h"

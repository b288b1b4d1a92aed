#pragma once

// The output of scripts: one JSON object per line.

#include <string>
#include <string_view>

#include "TalvoConsentSDK/TalvoConsentSDK.h"
#include "TalvoConsentSDK/platform/Printer.h"

namespace TalvoConsentHost {

/// Prints an object. Thread-safe.
void printObject(const TalvoConsentSDK::JSONObject& object);

/// Prints the SDK's lines as objects.
class ObjectPrinter : public TalvoConsentSDK::platform::Printer {
 public:
  void print(std::string_view line) override;
};

/// "main" or "background" for the calling thread. The first call must be on the main thread.
std::string threadName();

/// The JSON that scripts print for a consent (null if there is none) and for an error.
TalvoConsentSDK::JSONValue toJSON(const std::optional<TalvoConsentSDK::BasicConsent>& consent);
TalvoConsentSDK::JSONValue toJSON(const TalvoConsentSDK::Error& error);

}  // namespace TalvoConsentHost

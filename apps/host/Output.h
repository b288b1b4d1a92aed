#pragma once

// What the script form prints: one JSON object a line.

#include <string>
#include <string_view>

#include "TalvoConsentSDK/TalvoConsentSDK.h"
#include "TalvoConsentSDK/platform/Printer.h"

namespace TalvoConsentHost {

/// Prints an object; any thread.
void printObject(const TalvoConsentSDK::JSONObject& object);

/// Prints the SDK's lines as objects.
class ObjectPrinter : public TalvoConsentSDK::platform::Printer {
 public:
  void print(std::string_view line) override;
};

/// "main" or "background", for the calling thread. The first call must come from the main one.
std::string threadName();

/// A record or null, and an error, as the script form shows them.
TalvoConsentSDK::JSONValue toJSON(const std::optional<TalvoConsentSDK::BasicConsent>& consent);
TalvoConsentSDK::JSONValue toJSON(const TalvoConsentSDK::Error& error);

}  // namespace TalvoConsentHost

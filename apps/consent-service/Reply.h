#pragma once

// What the service answers to one request, before it goes on the wire.

#include <optional>
#include <string>
#include <string_view>

#include "TalvoConsentSDK/models/JSONValue.h"

namespace TalvoConsentSDK::service {

/// How much of a reply reaches the client.
enum class Delivery {
  whole,
  truncated,  // the length of the whole body is announced, half of it sent, and the connection closed
  reset,      // the connection is closed without an answer
  stall,      // nothing is answered until the client gives up or the service ends
};

/// The HTTP library compresses content types it knows, as hard as it can: most of a second for a large
/// catalogue, on loopback for nothing. With a parameter it does not know the type.
inline constexpr std::string_view jsonType = "application/json; charset=utf-8";

struct Reply {
  int status = 200;
  std::string body;
  std::string contentType = std::string(jsonType);
  Delivery delivery = Delivery::whole;

  /// The status that the client sees, if it sees one.
  std::optional<int> visibleStatus() const {
    if (delivery == Delivery::reset || delivery == Delivery::stall) return std::nullopt;
    return status;
  }
};

/// A 200 with this JSON text as body.
Reply jsonReply(std::string json);
Reply jsonReply(const JSONObject& object);

/// An error with a JSON object that says why: {"error": reason}.
Reply errorReply(int status, std::string_view reason);

/// Text as a JSON string. Bytes that are not UTF-8 are spelled \xNN, so that it can always be written.
JSONValue textValue(std::string_view text);

}  // namespace TalvoConsentSDK::service

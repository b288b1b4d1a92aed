#pragma once

// A reply to one request, before it is sent.

#include <optional>
#include <string>
#include <string_view>

#include "TalvoConsentSDK/models/JSONValue.h"

namespace TalvoConsentSDK::service {

/// How much of a reply reaches the client.
enum class Delivery {
  whole,
  truncated,  // declares the length of the whole body, sends half of it and closes the connection
  reset,      // closes the connection without an answer
  stall,      // answers nothing until the client gives up or the service ends
};

/// The parameter `charset` keeps the HTTP library from recognising the type. The library would otherwise
/// compress the body at the highest level, which takes most of a second for a large catalogue and gains
/// nothing on loopback.
inline constexpr std::string_view jsonType = "application/json; charset=utf-8";

struct Reply {
  int status = 200;
  std::string body;
  std::string contentType = std::string(jsonType);
  std::string cacheControl;  // the header Cache-Control; empty: none
  std::string entityTag;     // the header ETag; empty: none
  Delivery delivery = Delivery::whole;

  /// The status that the client sees, if any.
  std::optional<int> visibleStatus() const {
    if (delivery == Delivery::reset || delivery == Delivery::stall) return std::nullopt;
    return status;
  }
};

/// A reply with status 200 and this JSON text as its body.
Reply jsonReply(std::string json);
Reply jsonReply(const JSONObject& object);

/// An error reply with the body {"error": reason}.
Reply errorReply(int status, std::string_view reason);

/// Text as a JSON string. Bytes that are not UTF-8 are written as \xNN, so that encoding never fails.
JSONValue textValue(std::string_view text);

}  // namespace TalvoConsentSDK::service

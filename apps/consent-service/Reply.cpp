#include "Reply.h"

#include <utility>

#include "TalvoConsentSDK/models/JSONCoding.h"

namespace TalvoConsentSDK::service {

Reply jsonReply(std::string json) {
  Reply reply;
  reply.body = std::move(json);
  return reply;
}

Reply jsonReply(const JSONObject& object) {
  auto json = JSONEncoder().encode(object);
  return json ? jsonReply(*std::move(json)) : errorReply(500, json.error().what());
}

Reply errorReply(int status, std::string_view reason) {
  Reply reply = jsonReply(JSONEncoder().encode(JSONObject{{"error", textValue(reason)}}).value());
  reply.status = status;
  return reply;
}

JSONValue textValue(std::string_view text) {
  JSONValue value(text);
  if (JSONEncoder().encode(value)) return value;
  constexpr std::string_view hex = "0123456789abcdef";
  std::string spelled;
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte < 0x80) {
      spelled += c;
    } else {
      spelled += {'\\', 'x', hex[byte >> 4], hex[byte & 15]};
    }
  }
  return spelled;
}

}  // namespace TalvoConsentSDK::service

// The JSON form of values without a record type.

#include "TalvoConsentSDK/models/JSONValue.h"
#include "TalvoConsentSDK/models/json/Codec.h"

namespace TalvoConsentSDK {

namespace json {

template <>
struct Codec<JSONValue> {
  // Recurses as deep as the document is nested, which the parser limits.
  static void read(const Node& node, const Path& path, JSONValue& value) {
    switch (node.type()) {
      case Type::null:
        value = JSONValue();
        break;
      case Type::boolean:
        value = node.boolean();
        break;
      case Type::integer:
        value = node.integer();
        break;
      case Type::largeInteger:  // a double would change the number
        throw CodingError(CodingError::Kind::dataCorrupted, path.text(),
                          "The whole number is larger than 9223372036854775807");
      case Type::number:
        value = node.number();
        break;
      case Type::string:
        value = node.string();
        break;
      case Type::array: {
        JSONArray elements;
        Codec<JSONArray>::read(node, path, elements);
        value = std::move(elements);
        break;
      }
      case Type::object: {
        JSONObject members;
        Codec<JSONObject>::read(node, path, members);
        value = std::move(members);
        break;
      }
    }
  }

  static void write(Writer& writer, const JSONValue& value) {
    if (const auto* boolean = value.boolean()) {
      writer.boolean(*boolean);
    } else if (const auto* integer = value.integer()) {
      writer.integer(*integer);
    } else if (const auto* number = value.number()) {
      writer.number(*number);
    } else if (const auto* string = value.string()) {
      writer.string(*string);
    } else if (const auto* array = value.array()) {
      Codec<JSONArray>::write(writer, *array);
    } else if (const auto* object = value.object()) {
      Codec<JSONObject>::write(writer, *object);
    } else {
      writer.null();
    }
  }
};

}  // namespace json

template const json::Coding& json::codingOf<JSONValue>();
template const json::Coding& json::codingOf<JSONObject>();

}  // namespace TalvoConsentSDK

#include "TalvoConsentSDK/models/json/JSONNode.h"

#include <cstring>
#include <string>
#include <type_traits>

#include <simdjson.h>

#include "TalvoConsentSDK/models/CodingError.h"
#include "TalvoConsentSDK/models/json/SyntaxError.h"

namespace TalvoConsentSDK::json {

namespace {

namespace dom = simdjson::dom;

template <class Parsed>
Handle toHandle(const Parsed& value) {
  static_assert(sizeof(Parsed) == sizeof(Handle) && std::is_trivially_copyable_v<Parsed>);
  Handle handle;
  std::memcpy(handle.data(), &value, sizeof handle);
  return handle;
}

template <class Parsed>
Parsed fromHandle(const Handle& handle) {
  static_assert(sizeof(Parsed) == sizeof(Handle) && std::is_trivially_copyable_v<Parsed>);
  Parsed value;
  std::memcpy(static_cast<void*>(&value), handle.data(), sizeof handle);
  return value;
}

dom::element element(const Handle& handle) {
  return fromHandle<dom::element>(handle);
}

Type typeOf(const dom::element& value) {
  switch (value.type()) {
    case dom::element_type::NULL_VALUE:
      return Type::null;
    case dom::element_type::BOOL:
      return Type::boolean;
    case dom::element_type::INT64:
      return Type::integer;
    case dom::element_type::UINT64:
      return Type::largeInteger;
    case dom::element_type::DOUBLE:
      return Type::number;
    case dom::element_type::STRING:
      return Type::string;
    case dom::element_type::ARRAY:
      return Type::array;
    case dom::element_type::OBJECT:
      return Type::object;
  }
  return Type::null;
}

}  // namespace

std::string_view name(Type type) {
  switch (type) {
    case Type::null:
      return "null";
    case Type::boolean:
      return "a boolean";
    case Type::integer:
      return "an integer";
    case Type::largeInteger:
    case Type::number:
      return "a number";
    case Type::string:
      return "a string";
    case Type::array:
      return "an array";
    case Type::object:
      return "an object";
  }
  return "";
}

bool Node::boolean() const {
  return element(handle_).get_bool().value_unsafe();
}

std::int64_t Node::integer() const {
  return element(handle_).get_int64().value_unsafe();
}

double Node::number() const {
  return element(handle_).get_double().value_unsafe();
}

std::string_view Node::string() const {
  return element(handle_).get_string().value_unsafe();
}

Members::Members(const Node& object) {
  const dom::object members = element(object.handle_).get_object().value_unsafe();
  position_ = toHandle(members.begin());
  end_ = toHandle(members.end());
}

bool Members::next(std::string_view& key, Node& value) {
  auto position = fromHandle<dom::object::iterator>(position_);
  if (position == fromHandle<dom::object::iterator>(end_)) return false;
  key = position.key();
  const dom::element element = position.value();
  value = Node(toHandle(element), typeOf(element));
  position_ = toHandle(++position);
  return true;
}

Elements::Elements(const Node& array) {
  const dom::array elements = element(array.handle_).get_array().value_unsafe();
  position_ = toHandle(elements.begin());
  end_ = toHandle(elements.end());
  count_ = elements.size();
  constexpr std::size_t maxCounted = 0xFFFFFF;  // the parser counts no further
  if (count_ == maxCounted)
    count_ = static_cast<std::size_t>(std::distance(elements.begin(), elements.end()));
}

bool Elements::next(Node& value) {
  auto position = fromHandle<dom::array::iterator>(position_);
  if (position == fromHandle<dom::array::iterator>(end_)) return false;
  const dom::element element = *position;
  value = Node(toHandle(element), typeOf(element));
  position_ = toHandle(++position);
  return true;
}

struct Document::Parsed {
  dom::parser parser;
  dom::element root;
};

Document::Document(std::string_view text) : parsed_(std::make_unique<Parsed>()) {
  auto error =
      parsed_->parser.allocate(text.size(), maxDepth + 1);  // the parser counts one level for the root
  if (error == simdjson::SUCCESS) {
    error = parsed_->parser.parse(text.data(), text.size()).get(parsed_->root);
  }
  if (error == simdjson::SUCCESS) return;
  throw CodingError(CodingError::Kind::dataCorrupted, placeOfSyntaxError(text),
                    std::string("The data is not valid JSON (") + simdjson::error_message(error) + ")");
}

Document::~Document() = default;

Node Document::root() const {
  return Node(toHandle(parsed_->root), typeOf(parsed_->root));
}

}  // namespace TalvoConsentSDK::json

#pragma once

// The one place that turns values into JSON and back. A record joins with a table of its fields, a scalar
// with a Codec of its own. Include this in .cpp files only, and instantiate the coders' members there.

#include <algorithm>
#include <cstddef>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

#include "TalvoConsentSDK/models/CodingError.h"
#include "TalvoConsentSDK/models/JSONCoding.h"
#include "TalvoConsentSDK/models/json/JSONNode.h"
#include "TalvoConsentSDK/models/json/JSONWriter.h"
#include "TalvoConsentSDK/platform/RawValue.h"

namespace TalvoConsentSDK::json {

/// The place of a value in its document: a chain through the readers' stack frames, spelled out only when an
/// error needs it.
class Path {
 public:
  Path() = default;
  Path(const Path& parent, std::string_view key) : parent_(&parent), key_(key) {}
  Path(const Path& parent, std::size_t index) : parent_(&parent), index_(index) {}

  std::string text() const {
    if (!parent_) return {};
    std::string text = parent_->text();
    if (key_.data() == nullptr) return text + "[" + std::to_string(index_) + "]";
    if (!text.empty()) text += '.';
    return text.append(key_);
  }

 private:
  const Path* parent_ = nullptr;
  std::string_view key_;
  std::size_t index_ = 0;
};

/// A record's field: its key and its member. A member of type std::optional makes the key optional.
template <class Record, class Member>
struct Field {
  std::string_view key;
  Member Record::* member;
};

template <class Record, class Member>
constexpr Field<Record, Member> field(std::string_view key, Member Record::* member) {
  return {key, member};
}

/// `Fields<Record>::table` is a tuple of the record's fields, in the order of writing.
template <class Record>
struct Fields;

template <class T>
inline constexpr bool isOptional = false;
template <class T>
inline constexpr bool isOptional<std::optional<T>> = true;

[[noreturn]] inline void refuse(Type type, Type found, const Path& path) {
  if (found == Type::null) {
    throw CodingError(CodingError::Kind::valueNotFound, path.text(),
                      "expected " + std::string(name(type)) + ", found null");
  }
  throw CodingError(CodingError::Kind::typeMismatch, path.text(),
                    "expected " + std::string(name(type)) + ", found " + std::string(name(found)));
}

inline void require(Type type, const Node& node, const Path& path) {
  if (node.type() != type) refuse(type, node.type(), path);
}

/// How a `T` is read and written. This general form is that of records.
template <class T>
struct Codec {
  static void read(const Node& node, const Path& path, T& record) {
    require(Type::object, node, path);
    read(node, path, record, indices);
  }

  static void write(Writer& writer, const T& record) {
    writer.beginObject();
    std::apply([&](const auto&... fields) { (writeField(writer, record, fields), ...); }, Fields<T>::table);
    writer.endObject();
  }

 private:
  static constexpr auto fieldCount = std::tuple_size_v<decltype(Fields<T>::table)>;
  static constexpr auto indices = std::make_index_sequence<fieldCount>();

  template <std::size_t... index>
  static void read(const Node& node, const Path& path, T& record, std::index_sequence<index...>) {
    bool found[fieldCount] = {};
    std::string_view key;
    Node value = node;
    for (Members members(node); members.next(key, value);) {
      (void)((key == std::get<index>(Fields<T>::table).key &&
              readField(value, path, record, std::get<index>(Fields<T>::table), found[index])) ||
             ...);
    }
    (requireFound(path, std::get<index>(Fields<T>::table), found[index]), ...);
  }

  template <class Member>
  static bool readField(const Node& value, const Path& path, T& record, const Field<T, Member>& field,
                        bool& found) {
    if (found) record.*field.member = Member();  // the key was given before
    Codec<Member>::read(value, Path(path, field.key), record.*field.member);
    return found = true;
  }

  template <class Member>
  static void requireFound(const Path& path, const Field<T, Member>& field, bool found) {
    if (found || isOptional<Member>) return;
    throw CodingError(CodingError::Kind::keyNotFound, Path(path, field.key).text(), "");
  }

  template <class Member>
  static void writeField(Writer& writer, const T& record, const Field<T, Member>& field) {
    const Member& value = record.*field.member;
    if constexpr (isOptional<Member>) {
      if (!value) return;
    }
    writer.key(field.key);
    Codec<Member>::write(writer, value);
  }
};

template <class T>
struct Codec<std::optional<T>> {
  static void read(const Node& node, const Path& path, std::optional<T>& value) {
    if (node.type() == Type::null) {
      value.reset();
    } else if constexpr (std::is_same_v<T, std::string>) {
      require(Type::string, node, path);
      value.emplace(node.string());  // quicker than to assign to an empty one
    } else {
      Codec<T>::read(node, path, value.emplace());
    }
  }
  static void write(Writer& writer, const std::optional<T>& value) {
    if (value) {
      Codec<T>::write(writer, *value);
    } else {
      writer.null();
    }
  }
};

/// Room made in advance for an array's elements. Beyond it they must have been read to be believed.
inline constexpr std::size_t mostReservedBytes = std::size_t{64} << 20U;

template <>
struct Codec<bool> {
  static void read(const Node& node, const Path& path, bool& value) {
    require(Type::boolean, node, path);
    value = node.boolean();
  }
  static void write(Writer& writer, bool value) { writer.boolean(value); }
};

template <>
struct Codec<std::string> {
  static void read(const Node& node, const Path& path, std::string& value) {
    require(Type::string, node, path);
    value = node.string();
  }
  static void write(Writer& writer, const std::string& value) { writer.string(value); }
};

template <class T>
struct Codec<std::vector<T>> {
  static void read(const Node& node, const Path& path, std::vector<T>& value) {
    require(Type::array, node, path);
    value.clear();
    Node element = node;
    std::size_t index = 0;
    Elements elements(node);
    value.reserve(std::min(elements.count(), mostReservedBytes / sizeof(T)));
    while (elements.next(element)) {
      Codec<T>::read(element, Path(path, index++), value.emplace_back());
    }
  }
  static void write(Writer& writer, const std::vector<T>& value) {
    writer.beginArray();
    for (const T& element : value) Codec<T>::write(writer, element);
    writer.endArray();
  }
};

template <class T>
struct Codec<std::map<std::string, T, std::less<>>> {
  static void read(const Node& node, const Path& path, std::map<std::string, T, std::less<>>& value) {
    require(Type::object, node, path);
    value.clear();
    std::string_view key;
    Node member = node;
    for (Members members(node); members.next(key, member);) {
      Codec<T>::read(member, Path(path, key), value[std::string(key)]);
    }
  }
  static void write(Writer& writer, const std::map<std::string, T, std::less<>>& value) {
    writer.beginObject();
    for (const auto& [key, member] : value) {
      writer.key(key);
      Codec<T>::write(writer, member);
    }
    writer.endObject();
  }
};

/// The form of enumerations with raw values.
template <class T>
  requires requires { RawValues<T>::table; }
struct Codec<T> {
  static void read(const Node& node, const Path& path, T& value) {
    require(Type::string, node, path);
    const auto known = fromRawValue<T>(node.string());
    if (!known) {
      throw CodingError(CodingError::Kind::dataCorrupted, path.text(),
                        "no case is named \"" + std::string(node.string()) + "\"");
    }
    value = *known;
  }
  static void write(Writer& writer, T value) { writer.string(rawValue(value)); }
};

}  // namespace TalvoConsentSDK::json

namespace TalvoConsentSDK {

template <class T>
Result<T> JSONDecoder::decode(std::string_view text) const {
  try {
    const json::Document document(text);
    T value{};
    json::Codec<T>::read(document.root(), json::Path(), value);
    return value;
  } catch (const CodingError& error) {
    return error;
  }
}

template <class T>
Result<std::string> JSONEncoder::encode(const T& value) const {
  try {
    json::Writer writer;
    json::Codec<T>::write(writer, value);
    return std::move(writer).take();
  } catch (const CodingError& error) {
    return error;
  }
}

}  // namespace TalvoConsentSDK

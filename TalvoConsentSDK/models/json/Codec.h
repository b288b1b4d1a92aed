#pragma once

// Turns values into JSON and back. To add a record, write a table of its fields; to add a scalar, specialise
// Codec. Include this only in .cpp files and in headers of tables, and instantiate `codingOf` in a .cpp file.

#include <cstddef>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "TalvoConsentSDK/base/RawValue.h"
#include "TalvoConsentSDK/models/CodingError.h"
#include "TalvoConsentSDK/models/JSONCoding.h"
#include "TalvoConsentSDK/models/json/JSONNode.h"
#include "TalvoConsentSDK/models/json/JSONWriter.h"
#include "TalvoConsentSDK/models/json/Record.h"

namespace TalvoConsentSDK::json {

/// Reads and writes a `T`. This general form is for records: `Fields<T>::table` lists their fields.
template <class T>
struct Codec {
  static void read(const Node& node, const Path& path, T& record) {
    static_assert(std::size(Fields<T>::table) <= maxFields);
    readRecord(node, path, &record, Fields<T>::table);
  }
  static void write(Writer& writer, const T& record) { writeRecord(writer, &record, Fields<T>::table); }
};

template <class T>
struct Codec<std::optional<T>> {
  static void read(const Node& node, const Path& path, std::optional<T>& value) {
    if (node.type() == Type::null) {
      value.reset();
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
  static void read(const Node& node, const Path& path, std::string& value);
  static void write(Writer& writer, const std::string& value) { writer.string(value); }
};

template <>
struct Codec<std::optional<std::string>> {
  static void read(const Node& node, const Path& path, std::optional<std::string>& value);
  static void write(Writer& writer, const std::optional<std::string>& value) {
    if (value) {
      writer.string(*value);
    } else {
      writer.null();
    }
  }
};

template <class T>
struct Codec<std::vector<T>> {
  static void read(const Node& node, const Path& path, std::vector<T>& value) {
    readList(node, path, &value, {sizeof(T), readAs<T>, [](void* list, std::size_t count) -> void* {
                                    auto& made = *static_cast<std::vector<T>*>(list);
                                    made = std::vector<T>(count);
                                    return made.data();
                                  }});
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
    value.clear();
    for (const auto& [key, member] : membersOf(node, path, sizeof(T))) {
      Codec<T>::read(member, Path(path, key), value.try_emplace(value.end(), std::string(key))->second);
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

/// The form for enumerations with raw values.
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

template <class T>
const Coding& codingOf() {
  return coding<T>;
}

}  // namespace TalvoConsentSDK::json

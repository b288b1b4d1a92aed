#pragma once

// Records as tables of their fields, read and written by one piece of code; one per record was a sixth of the
// library.

#include <cstddef>
#include <span>
#include <string_view>

#include "TalvoConsentSDK/models/json/Coding.h"

namespace TalvoConsentSDK::json {

/// A record's field: its key, and where and what its member is. A member of type std::optional makes the key
/// optional.
struct Field {
  std::string_view key;
  const void* (*member)(const void* record);
  const Coding* coding;
};

template <auto member>
struct Member;
template <class Record, class T, T Record::* member>
struct Member<member> {
  static const void* of(const void* record) { return &(static_cast<const Record*>(record)->*member); }
  static constexpr const Coding* coding = &json::coding<T>;
};

template <auto member>
constexpr Field field(std::string_view key) {
  return {key, Member<member>::of, Member<member>::coding};
}

/// `Fields<Record>::table` has a record's fields in the order of writing, `maxFields` at most.
template <class Record>
struct Fields;
inline constexpr std::size_t maxFields = 32;

/// Reads an object into a new record, which must be of the fields' type.
void readRecord(const Node& node, const Path& path, void* record, std::span<const Field> fields);
void writeRecord(Writer& writer, const void* record, std::span<const Field> fields);

}  // namespace TalvoConsentSDK::json

#pragma once

// Describes records as tables of their fields, so that the same code reads and writes all of them. Separate
// code for each record made up a sixth of the library.

#include <cstddef>
#include <span>
#include <string_view>

#include "TalvoConsentSDK/models/json/Coding.h"

namespace TalvoConsentSDK::json {

/// A record's field: its key, how to find the member in the record, and the member's codec. A member of type
/// std::optional makes the key optional.
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

/// `Fields<Record>::table` lists a record's fields in the order in which they are written, at most
/// `maxFields`.
template <class Record>
struct Fields;
inline constexpr std::size_t maxFields = 32;

/// Read an object into a new record, and write a record. `record` must point to the type that `fields`
/// describe.
void readRecord(const Node& node, const Path& path, void* record, std::span<const Field> fields);
void writeRecord(Writer& writer, const void* record, std::span<const Field> fields);

}  // namespace TalvoConsentSDK::json

// Reads records and texts, which make up most of a large catalogue. This file is therefore built for speed.

#include "TalvoConsentSDK/models/json/Record.h"

#include <array>
#include <cstdint>

#include "TalvoConsentSDK/models/json/Codec.h"

namespace TalvoConsentSDK::json {

namespace {

// Returns the index of the field with this key, or the number of fields if there is none. Starts at `first`,
// the field after the last one found, because documents mostly list their fields in the order of the table.
std::size_t indexOf(std::string_view key, std::span<const Field> fields, std::size_t first) {
  for (std::size_t i = first; i < fields.size(); ++i) {
    if (fields[i].key == key) return i;
  }
  for (std::size_t i = 0; i < first; ++i) {
    if (fields[i].key == key) return i;
  }
  return fields.size();
}

}  // namespace

void readList(const Node& array, const Path& path, void* list, const ListCoding& coding) {
  require(Type::array, array, path);
  Elements elements(array);
  path.claim(elements.count(), coding.elementSize);
  auto* element = static_cast<std::byte*>(coding.remake(list, elements.count()));
  Node node = array;
  for (std::size_t index = 0; index < elements.count() && elements.next(node); ++index) {
    coding.readElement(node, Path(path, index), element);
    element += coding.elementSize;
  }
}

void readRecord(const Node& node, const Path& path, void* record, std::span<const Field> fields) {
  require(Type::object, node, path);
  std::array<Node, maxFields> values;
  std::uint32_t found = 0;
  static_assert(maxFields <= 32);

  std::string_view key;
  Node value = node;
  std::size_t next = 0;
  for (Members members(node); members.next(key, value);) {
    const std::size_t index = indexOf(key, fields, next);
    if (index == fields.size()) continue;
    values[index] = value;  // if a key is given twice, the last value counts
    found |= 1U << index;
    next = index + 1;
  }
  for (std::size_t i = 0; i < fields.size(); ++i) {
    const Field& field = fields[i];
    const Path place(path, field.key);
    if (found >> i & 1U) {
      field.coding->read(values[i], place, const_cast<void*>(field.member(record)));
    } else if (!field.coding->isAbsent) {
      throw CodingError(CodingError::Kind::keyNotFound, place.text(), "");
    }
  }
}

void writeRecord(Writer& writer, const void* record, std::span<const Field> fields) {
  writer.beginObject();
  for (const Field& field : fields) {
    const void* const member = field.member(record);
    if (field.coding->isAbsent && field.coding->isAbsent(member)) continue;
    writer.key(field.key);
    field.coding->write(writer, member);
  }
  writer.endObject();
}

void Codec<std::string>::read(const Node& node, const Path& path, std::string& value) {
  require(Type::string, node, path);
  value = std::string(node.string());  // a new string, with no more capacity than it needs
}

void Codec<std::optional<std::string>>::read(const Node& node, const Path& path,
                                             std::optional<std::string>& value) {
  if (node.type() == Type::null) return value.reset();
  require(Type::string, node, path);
  value.emplace(node.string());  // quicker than assigning to an empty string
}

}  // namespace TalvoConsentSDK::json

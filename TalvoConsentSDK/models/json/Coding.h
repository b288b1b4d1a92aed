#pragma once

// Values read and written without their types being known.

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "TalvoConsentSDK/base/Result.h"
#include "TalvoConsentSDK/models/CodingError.h"
#include "TalvoConsentSDK/models/JSONCoding.h"
#include "TalvoConsentSDK/models/json/JSONNode.h"
#include "TalvoConsentSDK/models/json/JSONWriter.h"

namespace TalvoConsentSDK::json {

/// How much memory one document's values may still take.
class MemoryBudget {
 public:
  explicit MemoryBudget(std::size_t documentSize);

  /// False, once and for all, when there is less left.
  bool take(std::uint64_t bytes);

 private:
  std::uint64_t left_;
};

/// The place of a value in its document: a chain through the readers' stack frames, spelled out only when an
/// error needs it.
class Path {
 public:
  explicit Path(MemoryBudget& budget) : budget_(&budget) {}  // the document's root
  Path(const Path& parent, std::string_view key) : parent_(&parent), budget_(parent.budget_), key_(key) {}
  Path(const Path& parent, std::size_t index) : parent_(&parent), budget_(parent.budget_), index_(index) {}

  std::string text() const;

  /// Says that `count` values of `size` bytes each are about to be made here, which a container calls before
  /// it grows. Throws a CodingError (dataCorrupted) when the document must not take so much.
  void claim(std::size_t count, std::size_t size) const;

 private:
  const Path* parent_ = nullptr;
  MemoryBudget* budget_;
  std::string_view key_;
  std::size_t index_ = 0;
};

[[noreturn]] void refuse(Type type, Type found, const Path& path);

inline void require(Type type, const Node& node, const Path& path) {
  if (node.type() != type) refuse(type, node.type(), path);
}

/// The members of an object, by key; of a key given twice the last. Claims the memory for them and for values
/// of `valueSize` bytes.
std::map<std::string_view, Node> membersOf(const Node& object, const Path& path, std::size_t valueSize);

template <class T>
struct Codec;

/// The codec of a type, behind pointers to the values.
struct Coding {
  void (*read)(const Node& node, const Path& path, void* value);
  void (*write)(Writer& writer, const void* value);
  bool (*isAbsent)(const void* value);  // null where there always is a value
};

template <class T>
void readAs(const Node& node, const Path& path, void* value) {
  Codec<T>::read(node, path, *static_cast<T*>(value));
}

/// A list whose element type is not known.
struct ListCoding {
  std::size_t elementSize;
  void (*readElement)(const Node& node, const Path& path, void* element);
  void* (*remake)(void* list, std::size_t count);  // with new elements; returns the first
};

/// Reads an array.
void readList(const Node& array, const Path& path, void* list, const ListCoding& coding);

template <class T>
void writeAs(Writer& writer, const void* value) {
  Codec<T>::write(writer, *static_cast<const T*>(value));
}

template <class T>
bool isAbsentAs(const void* value) {
  return !*static_cast<const T*>(value);
}

template <class T>
inline constexpr Coding coding = {readAs<T>, writeAs<T>, nullptr};
template <class T>
inline constexpr Coding coding<std::optional<T>> = {readAs<std::optional<T>>, writeAs<std::optional<T>>,
                                                    isAbsentAs<std::optional<T>>};

}  // namespace TalvoConsentSDK::json

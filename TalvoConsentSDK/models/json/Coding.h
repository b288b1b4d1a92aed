#pragma once

// Reads and writes values without knowing their types.

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

  /// Deducts `bytes`. Returns false, and deducts nothing, if fewer are left.
  bool take(std::uint64_t bytes);

 private:
  std::uint64_t left_;
};

/// The place of a value in its document: a chain through the stack frames of the readers, turned into text
/// only when an error needs it.
class Path {
 public:
  explicit Path(MemoryBudget& budget) : budget_(&budget) {}  // the document's root
  Path(const Path& parent, std::string_view key) : parent_(&parent), budget_(parent.budget_), key_(key) {}
  Path(const Path& parent, std::size_t index) : parent_(&parent), budget_(parent.budget_), index_(index) {}

  std::string text() const;

  /// Claims memory for `count` values of `size` bytes each. Containers call this before they grow. Throws a
  /// CodingError (dataCorrupted) if the document's values would take more memory than they may.
  void claim(std::size_t count, std::size_t size) const;

 private:
  const Path* parent_ = nullptr;
  MemoryBudget* budget_;
  std::string_view key_;
  std::size_t index_ = 0;
};

/// Throws the CodingError for a value of type `found` where `type` is required.
[[noreturn]] void refuse(Type type, Type found, const Path& path);

inline void require(Type type, const Node& node, const Path& path) {
  if (node.type() != type) refuse(type, node.type(), path);
}

/// Returns the members of an object, by key; if a key is given twice, the last member. Claims memory for them
/// and for one value of `valueSize` bytes each.
std::map<std::string_view, Node> membersOf(const Node& object, const Path& path, std::size_t valueSize);

template <class T>
struct Codec;

/// A type's codec as functions that take untyped pointers to the values.
struct Coding {
  void (*read)(const Node& node, const Path& path, void* value);
  void (*write)(Writer& writer, const void* value);
  bool (*isAbsent)(const void* value);  // null for a type that always has a value
};

template <class T>
void readAs(const Node& node, const Path& path, void* value) {
  Codec<T>::read(node, path, *static_cast<T*>(value));
}

/// How to read a list without knowing the type of its elements.
struct ListCoding {
  std::size_t elementSize;
  void (*readElement)(const Node& node, const Path& path, void* element);
  void* (*remake)(void* list, std::size_t count);  // replaces the elements by new ones; returns the first
};

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

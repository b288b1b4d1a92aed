#pragma once

// A parsed document, read without knowing the parser behind it.

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>

namespace TalvoConsentSDK::json {

// A large integer is one from 2^63 to 2^64 - 1; what is larger still is no JSON to the parser.
enum class Type { null, boolean, integer, largeInteger, number, string, array, object };

/// How deep objects and arrays may be nested. Readers and writers recurse as deep, on threads with stacks of
/// a few hundred kilobytes.
inline constexpr int maxDepth = 256;

/// The type's name in error texts.
std::string_view name(Type type);

// The parser's own handles, as opaque bytes: two words each.
using Handle = std::array<std::uintptr_t, 2>;

/// One value of a document. A plain handle and its type, valid as long as its Document; the readers require
/// the matching `type`.
class Node {
 public:
  Node() = default;
  Node(Handle handle, Type type) : handle_(handle), type_(type) {}

  Type type() const { return type_; }
  bool boolean() const;
  std::int64_t integer() const;
  double number() const;  // also of an integer
  std::string_view string() const;

 private:
  friend class Members;
  friend class Elements;
  Handle handle_;
  Type type_;
};

/// Walks the members of an object, in document order.
class Members {
 public:
  explicit Members(const Node& object);

  /// Moves to the next member; false at the end.
  bool next(std::string_view& key, Node& value);

 private:
  Handle position_;
  Handle end_;
};

/// Walks the elements of an array.
class Elements {
 public:
  explicit Elements(const Node& array);

  bool next(Node& value);

  /// How many there are.
  std::size_t count() const { return count_; }

 private:
  std::size_t count_;
  Handle position_;
  Handle end_;
};

/// A parsed text. Throws a CodingError (dataCorrupted) when the text is no strict JSON.
class Document {
 public:
  explicit Document(std::string_view text);
  ~Document();
  Document(const Document&) = delete;
  Document& operator=(const Document&) = delete;

  Node root() const;

 private:
  struct Parsed;
  std::unique_ptr<Parsed> parsed_;
};

}  // namespace TalvoConsentSDK::json

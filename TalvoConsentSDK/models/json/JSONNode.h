#pragma once

// A parsed document, read without knowing the parser behind it.

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>

namespace TalvoConsentSDK::json {

// A large integer is one from 2^63 to 2^64 - 1. To the parser, anything larger is not JSON.
enum class Type { null, boolean, integer, largeInteger, number, string, array, object };

/// How deep objects and arrays may be nested. Readers and writers recurse to this depth, on threads with
/// stacks of a few hundred kilobytes.
inline constexpr int maxDepth = 256;

/// The type's name in error texts.
std::string_view name(Type type);

// One of the parser's handles, kept as two opaque words.
using Handle = std::array<std::uintptr_t, 2>;

/// One value of a document: a plain handle and its type, valid as long as its Document exists. Each accessor
/// requires the matching `type`.
class Node {
 public:
  Node() = default;
  Node(Handle handle, Type type) : handle_(handle), type_(type) {}

  Type type() const { return type_; }
  bool boolean() const;
  std::int64_t integer() const;
  double number() const;  // also works for an integer
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

  std::size_t count() const { return count_; }

 private:
  std::size_t count_;
  Handle position_;
  Handle end_;
};

/// A parsed text. The constructor throws a CodingError (dataCorrupted) if the text is not strict JSON.
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

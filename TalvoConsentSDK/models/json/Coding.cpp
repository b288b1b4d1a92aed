#include "TalvoConsentSDK/models/json/Coding.h"

namespace TalvoConsentSDK::json {

namespace {

// The most bytes that an allocation and a map's node take in addition to their content.
constexpr std::size_t allocationSize = 16;
constexpr std::size_t mapNodeSize = 32 + allocationSize;

constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";

}  // namespace

// Allows 16 MB plus six times the document's length for what `claim` counts. `claim` does not count texts,
// which take at most twice their length in the document; together, this makes eight times the length.
MemoryBudget::MemoryBudget(std::size_t documentSize) : left_(16'000'000 + std::uint64_t{6} * documentSize) {}

bool MemoryBudget::take(std::uint64_t bytes) {
  if (bytes > left_) return false;
  left_ -= bytes;
  return true;
}

std::string Path::text() const {
  if (!parent_) return {};
  std::string text = parent_->text();
  if (key_.data() == nullptr) return text + "[" + std::to_string(index_) + "]";
  if (!text.empty()) text += '.';
  return text.append(key_);
}

void Path::claim(std::size_t count, std::size_t size) const {
  if (count == 0 || budget_->take(std::uint64_t{count} * size + allocationSize)) return;
  throw CodingError(CodingError::Kind::dataCorrupted, text(),
                    "The document's values take more than 16 MB plus 8 times its length in memory");
}

std::map<std::string_view, Node> membersOf(const Node& object, const Path& path, std::size_t valueSize) {
  require(Type::object, object, path);
  std::map<std::string_view, Node> all;
  constexpr std::size_t memberSize = sizeof(*all.begin()) + sizeof(std::string) + 2 * mapNodeSize;
  std::string_view key;
  Node member = object;
  for (Members members(object); members.next(key, member);) {
    if (all.insert_or_assign(key, member).second) path.claim(1, memberSize + valueSize);
  }
  return all;
}

void refuse(Type type, Type found, const Path& path) {
  const std::string expected = "expected " + std::string(name(type)) + ", found ";
  if (found == Type::null)
    throw CodingError(CodingError::Kind::valueNotFound, path.text(), expected + "null");
  throw CodingError(CodingError::Kind::typeMismatch, path.text(), expected + std::string(name(found)));
}

Result<void> decode(std::string_view text, void* value, const Coding& coding) {
  try {
    if (text.starts_with(byteOrderMark)) text.remove_prefix(byteOrderMark.size());
    const Document document(text);
    MemoryBudget budget(text.size());
    coding.read(document.root(), Path(budget), value);
    return {};
  } catch (const CodingError& error) {
    return error;
  }
}

Result<std::string> encode(const void* value, const Coding& coding) {
  try {
    Writer writer;
    coding.write(writer, value);
    return std::move(writer).take();
  } catch (const CodingError& error) {
    return error;
  }
}

}  // namespace TalvoConsentSDK::json

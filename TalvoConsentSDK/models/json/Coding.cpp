#include "TalvoConsentSDK/models/json/Coding.h"

namespace TalvoConsentSDK::json {

std::string Path::text() const {
  if (!parent_) return {};
  std::string text = parent_->text();
  if (key_.data() == nullptr) return text + "[" + std::to_string(index_) + "]";
  if (!text.empty()) text += '.';
  return text.append(key_);
}

void refuse(Type type, Type found, const Path& path) {
  const std::string expected = "expected " + std::string(name(type)) + ", found ";
  if (found == Type::null)
    throw CodingError(CodingError::Kind::valueNotFound, path.text(), expected + "null");
  throw CodingError(CodingError::Kind::typeMismatch, path.text(), expected + std::string(name(found)));
}

std::optional<CodingError> decode(std::string_view text, void* value, const Coding& coding) {
  try {
    const Document document(text);
    coding.read(document.root(), Path(), value);
    return std::nullopt;
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

#include "TalvoConsentSDK/models/CodingError.h"

#include "TalvoConsentSDK/base/Error.h"

namespace TalvoConsentSDK {

namespace {

const char* headline(CodingError::Kind kind) {
  switch (kind) {
    case CodingError::Kind::keyNotFound:
      return "Missing key";
    case CodingError::Kind::valueNotFound:
      return "Null value";
    case CodingError::Kind::typeMismatch:
      return "Type mismatch";
    case CodingError::Kind::dataCorrupted:
      return "Data corrupted";
    case CodingError::Kind::invalidValue:
      return "Invalid value";
  }
  return "";
}

}  // namespace

CodingError::CodingError(Kind kind, std::string path, std::string detail)
    : kind_(kind), path_(std::move(path)), detail_(std::move(detail)), description_(headline(kind)) {
  if (!path_.empty()) description_ += " at " + path_;
  if (!detail_.empty()) description_ += ": " + detail_;
  description_ = withVisibleNULs(std::move(description_));
}

const char* CodingError::what() const noexcept {
  return description_.c_str();
}

}  // namespace TalvoConsentSDK

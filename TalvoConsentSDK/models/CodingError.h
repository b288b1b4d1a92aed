#pragma once

// Why a document could not be read as a record, or why a record could not be written.

#include <exception>
#include <string>
#include <utility>

#include "TalvoConsentSDK/base/Export.h"

namespace TalvoConsentSDK TALVO_EXPORT {

/// What was wrong and where. `path` names the place in the document, such as
/// "customization.components.mainScreen[2].buttons"; it is empty for the root. For a text that is not JSON,
/// it is where the text stops being JSON, such as "line 12, column 5"; it is empty for an empty text, for
/// numbers that do not fit, and for half of a surrogate pair.
class CodingError : public std::exception {
 public:
  enum class Kind {
    keyNotFound,    // a required key is missing
    valueNotFound,  // null where a value is required
    typeMismatch,   // a JSON type other than the expected one
    dataCorrupted,  // not JSON, a value that its type does not allow, or values that take too much memory
    invalidValue,   // (writing) NaN, infinity, text that is not UTF-8, or more than 256 levels of nesting
  };

  CodingError(Kind kind, std::string path, std::string detail);

  Kind kind() const noexcept { return kind_; }
  const std::string& path() const noexcept { return path_; }

  /// What was expected and found, or what is wrong with the data.
  const std::string& detail() const noexcept { return detail_; }

  /// The kind, path and detail in one sentence, with each NUL written as `\u0000`.
  const char* what() const noexcept override;

 private:
  Kind kind_;
  std::string path_;
  std::string detail_;
  std::string description_;
};

}  // namespace TalvoConsentSDK

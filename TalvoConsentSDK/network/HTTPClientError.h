#pragma once

// The one error type of all networking.

#include <exception>
#include <optional>
#include <string>
#include <utility>

#include "TalvoConsentSDK/base/Error.h"
#include "TalvoConsentSDK/base/Export.h"

namespace TalvoConsentSDK TALVO_EXPORT {

/// Why an exchange with the service failed. Immutable.
class HTTPClientError : public std::exception {
 public:
  enum class Case {
    httpError,        // the service answered with a status outside 200 to 299
    decodingError,    // the reply is not the document that was expected
    networkError,     // no reply arrived, or the request could not be formed
    invalidURL,       // nothing was sent
    invalidResponse,  // the answer was no HTTP response
  };

  static HTTPClientError httpError(int statusCode, std::string message);
  static HTTPClientError decodingError(Error underlying);
  static HTTPClientError networkError(Error underlying);
  static HTTPClientError invalidURL();
  static HTTPClientError invalidResponse();

  Case kind() const noexcept { return kind_; }

  /// Of `httpError`: the status, and the reply's body as it came ("Unknown error" when it is not UTF-8).
  /// Otherwise 0 and empty.
  int statusCode() const noexcept { return statusCode_; }
  const std::string& message() const noexcept { return message_; }

  /// Of `decodingError` and `networkError`: the cause. Otherwise null.
  const Error* underlying() const noexcept { return underlying_ ? &*underlying_ : nullptr; }

  /// A sentence for people, the same as `what()`. A NUL in it is written as `\u0000`.
  const std::string& errorDescription() const noexcept { return description_; }
  const char* what() const noexcept override;

 private:
  HTTPClientError(Case kind, std::string description)
      : kind_(kind), description_(withVisibleNULs(std::move(description))) {}

  Case kind_;
  int statusCode_ = 0;
  std::string message_;
  std::optional<Error> underlying_;
  std::string description_;
};

}  // namespace TalvoConsentSDK

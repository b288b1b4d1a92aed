#pragma once

// The common error type of networking.

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
    invalidURL,       // the URL cannot be used; nothing was sent
    invalidResponse,  // the answer was not an HTTP response
  };

  static HTTPClientError httpError(int statusCode, std::string message);
  static HTTPClientError decodingError(Error underlying);
  static HTTPClientError networkError(Error underlying);
  static HTTPClientError invalidURL();
  static HTTPClientError invalidResponse();

  Case kind() const noexcept { return kind_; }

  /// For `httpError`: the status, and the reply's unchanged body ("Unknown error" if it is not UTF-8).
  /// Otherwise 0 and empty.
  int statusCode() const noexcept { return statusCode_; }
  const std::string& message() const noexcept { return message_; }

  /// For `decodingError` and `networkError`: the cause. Otherwise null.
  const Error* underlying() const noexcept { return underlying_ ? &*underlying_ : nullptr; }

  /// A description for people, the same as `what()`. A NUL in it is written as `\u0000`.
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

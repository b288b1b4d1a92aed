#pragma once

// Errors as values. An Error is cheap to copy and never empty; hosts look at its cause with `as`.

#include <concepts>
#include <exception>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "TalvoConsentSDK/base/Export.h"

namespace TalvoConsentSDK TALVO_EXPORT {

/// Returns the text with each NUL replaced by `\u0000`, so that a C string can hold all of it.
std::string withVisibleNULs(std::string text);

/// A platform error: a domain, a code that is unique within the domain, and a description for people, in
/// which each NUL is written as `\u0000`. Immutable.
class PlatformError : public std::exception {
 public:
  /// Key of `userInfo` that holds the localized description.
  static constexpr std::string_view localizedDescriptionKey = "NSLocalizedDescription";

  PlatformError(std::string domain, int code, std::string localizedDescription);

  const std::string& domain() const noexcept { return domain_; }
  int code() const noexcept { return code_; }
  const std::string& localizedDescription() const noexcept;
  const std::map<std::string, std::string, std::less<>>& userInfo() const noexcept { return userInfo_; }

  /// The localized description.
  const char* what() const noexcept override;

 private:
  std::string domain_;
  int code_;
  std::map<std::string, std::string, std::less<>> userInfo_;
};

/// Why an operation failed. In the errors that hosts receive, the cause is an `HTTPClientError` or a
/// `PlatformError`. The underlying error of an `HTTPClientError` may have another cause, such as a
/// `CodingError`. Copies share the cause, so copying never throws.
class Error : public std::exception {
 public:
  template <std::derived_from<std::exception> Cause>
    requires(!std::derived_from<Cause, Error>)
  Error(Cause cause) : cause_(std::make_shared<const Cause>(std::move(cause))) {}

  Error(const Error&) noexcept = default;
  Error& operator=(const Error&) noexcept = default;

  /// Throws a copy of this error.
  [[noreturn]] void raise() const;

  /// Returns the exception being handled as an Error. Call it inside a `catch` block only.
  static Error current();

  /// Returns the cause if it is a `Cause`, otherwise null. It is valid as long as any copy of this error
  /// exists.
  template <std::derived_from<std::exception> Cause>
  const Cause* as() const noexcept {
    return dynamic_cast<const Cause*>(cause_.get());
  }

  /// The cause's own description.
  const char* what() const noexcept override;

 private:
  std::shared_ptr<const std::exception> cause_;
};

}  // namespace TalvoConsentSDK

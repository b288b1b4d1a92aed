#pragma once

// What can go wrong, as a value. An Error is cheap to copy and never empty; hosts look inside with `as`.

#include <concepts>
#include <exception>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "TalvoConsentSDK/base/Export.h"

namespace TalvoConsentSDK TALVO_EXPORT {

/// The text with each NUL as `\u0000`, so that a C string can tell all of it.
std::string withVisibleNULs(std::string text);

/// A failure in the platform's terms: a domain, a code that is unique within it, and a text for people, in
/// which a NUL is written as `\u0000`. Immutable.
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

/// Why an operation failed. What reaches hosts is an `HTTPClientError` or a `PlatformError`; their causes may
/// be other exceptions, such as a `CodingError`. Copies share the cause, so copying never throws.
class Error : public std::exception {
 public:
  template <std::derived_from<std::exception> Cause>
    requires(!std::derived_from<Cause, Error>)
  Error(Cause cause) : cause_(std::make_shared<const Cause>(std::move(cause))) {}

  Error(const Error&) noexcept = default;
  Error& operator=(const Error&) noexcept = default;

  /// Throws a copy of this error.
  [[noreturn]] void raise() const;

  /// The exception being handled, as an Error. Call it inside a `catch` block only.
  static Error current();

  /// The cause when it is a `Cause`, else null; valid as long as any copy of this error lives.
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

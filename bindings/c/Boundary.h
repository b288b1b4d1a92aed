#pragma once

// What every function of the C interface needs: no exception gets out, and errors are described in C's terms.
// The libraries of the C interface share the text of the last error, so the first one exports what the others
// use.

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstring>
#include <exception>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "TalvoConsentSDK/base/Error.h"
#include "TalvoConsentSDK/base/Export.h"
#include "TalvoConsentSDK/platform/Printer.h"

#include "talvo_consent.h"

namespace TalvoConsentSDK::c {

/// An argument that cannot be used.
class InvalidArgument : public std::exception {
 public:
  explicit InvalidArgument(std::string description) : description_(std::move(description)) {}
  const char* what() const noexcept override { return description_.c_str(); }

 private:
  std::string description_;
};

/// A banner that was not shown: TALVO_NOT_SHOWN or TALVO_NO_SURFACE.
class NotShown : public std::exception {
 public:
  explicit NotShown(talvo_status status) : status_(status) {}
  talvo_status status() const noexcept { return status_; }
  const char* what() const noexcept override;

 private:
  talvo_status status_;
};

/// Returns the error as C sees it. It points to the texts of `error`, which must outlive it.
talvo_error describe(const Error& error);

/// Keeps the text of a failed call for `talvo_last_error`, and returns the status that the call has to
/// return.
TALVO_EXPORT talvo_status remember(const Error& error) noexcept;

/// Clears the text that `remember` has kept.
TALVO_EXPORT void forget() noexcept;

/// Throws an InvalidArgument whose description is the name, a blank and the reason.
[[noreturn]] TALVO_EXPORT void refuse(const char* name, const char* reason);

/// Returns the argument. Throws an InvalidArgument if it is null.
template <class T>
T& required(T* argument, const char* name) {
  if (!argument) refuse(name, "is null");
  return *argument;
}
inline std::string requiredText(const char* argument, const char* name) {
  return &required(argument, name);
}

/// Returns a copy of a structure whose field `size` says how much of it the host knows. A host of an older
/// version knows fewer fields, and the others become 0; the fields that only a newer host knows are left out.
/// `least` is the size in version 1.0.0. Throws an InvalidArgument if the host's is smaller.
template <class T>
T copied(const T* structure, std::size_t least, const char* name) {
  const std::size_t size = required(structure, name).size;
  if (size < least) refuse(name, "has a size that is too small");
  T copy{};
  std::memcpy(&copy, structure, std::min(size, sizeof copy));
  return copy;
}

/// Runs the body of a function, and turns what it throws into a status.
template <class Body>
talvo_status guarded(const Body& body) noexcept {
  try {
    body();
    forget();  // a callback in `body` may have made a call that failed
    return TALVO_OK;
  } catch (...) {
    return remember(Error::current());
  }
}

/// Wraps a host's pointer. `release` is called when the last copy goes; if it throws, the exception is
/// caught.
inline std::shared_ptr<void> owned(void* userData, talvo_callback release) {
  return {userData, [release](void* pointer) {
            platform::callHost([&] {
              if (release) release(pointer);
            });
          }};
}

inline std::function<void()> closure(talvo_callback callback, std::shared_ptr<void> userData) {
  return [callback, userData = std::move(userData)] {
    if (callback) callback(userData.get());
  };
}

/// Returns a host's limit in milliseconds. 0 or less stand for no limit.
inline std::optional<std::chrono::milliseconds> timeLimit(long milliseconds) {
  if (milliseconds <= 0) return std::nullopt;
  return std::chrono::milliseconds(milliseconds);
}

}  // namespace TalvoConsentSDK::c

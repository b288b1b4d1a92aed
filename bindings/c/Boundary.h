#pragma once

// What every function of the C interface needs: no exception gets out, and errors are described in C's terms.

#include <exception>
#include <memory>
#include <string>
#include <utility>

#include "TalvoConsentSDK/base/Error.h"
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

/// The host has no window in the foreground for a banner.
class NotShown : public std::exception {
 public:
  const char* what() const noexcept override { return "The host has no window in the foreground"; }
};

/// Returns the error as C sees it. It points to the texts of `error`, which must outlive it.
talvo_error describe(const Error& error);

/// Keeps the text of a failed call for `talvo_last_error`, and returns the status that the call has to
/// return.
talvo_status remember(const Error& error) noexcept;

/// Clears the text that `remember` has kept.
void forget() noexcept;

/// Returns the argument. Throws an InvalidArgument if it is null.
template <class T>
T& required(T* argument, const char* name) {
  if (!argument) throw Error(InvalidArgument(std::string(name) + " is null"));
  return *argument;
}
inline std::string requiredText(const char* argument, const char* name) {
  return &required(argument, name);
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

}  // namespace TalvoConsentSDK::c

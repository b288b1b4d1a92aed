#pragma once

// What every function of the flat interface needs: nothing thrown gets out, and errors in C's terms.

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

/// The error as C sees it; its texts are those of `error`, which must outlive it.
talvo_error describe(const Error& error);

/// Keeps the text of a failed call for `talvo_last_error`, and answers what the call is to return.
talvo_status remember(const Error& error) noexcept;
void forget() noexcept;

/// Refuses null.
template <class T>
T& required(T* argument, const char* name) {
  if (!argument) throw Error(InvalidArgument(std::string(name) + " is null"));
  return *argument;
}
inline std::string requiredText(const char* argument, const char* name) {
  return &required(argument, name);
}

/// Runs the body of a function.
template <class Body>
talvo_status guarded(const Body& body) noexcept {
  try {
    body();
    forget();  // also what a callback called meanwhile has left
    return TALVO_OK;
  } catch (...) {
    return remember(Error::current());
  }
}

/// A host's pointer, released with the last copy. What `release` throws is contained.
inline std::shared_ptr<void> owned(void* userData, talvo_callback release) {
  return {userData, [release](void* pointer) {
            platform::callHost([&] {
              if (release) release(pointer);
            });
          }};
}

}  // namespace TalvoConsentSDK::c

#pragma once

// What a host implements, or fills with two closures, to hear of consent events.

#include <functional>
#include <utility>

#include "TalvoConsentSDK/base/Export.h"

namespace TalvoConsentSDK TALVO_EXPORT {

/// A listener. Events of a submission come on the platform's executor for callbacks, where it may block;
/// `identificationComplete` comes on the main actor.
class ConsentEventCallback {
 public:
  virtual ~ConsentEventCallback() = default;

  /// The event has happened.
  virtual void onSuccess() = 0;

  /// Kept for symmetry; the library never calls it: what fails raises no event.
  virtual void onFailure() = 0;
};

/// A listener made of two closures, which must both be callable from any thread.
class ConsentEventClosureCallback : public ConsentEventCallback {
 public:
  ConsentEventClosureCallback(std::function<void()> success, std::function<void()> failure)
      : successHandler_(std::move(success)), failureHandler_(std::move(failure)) {}

  void onSuccess() override { successHandler_(); }
  void onFailure() override { failureHandler_(); }

 private:
  const std::function<void()> successHandler_;
  const std::function<void()> failureHandler_;
};

}  // namespace TalvoConsentSDK

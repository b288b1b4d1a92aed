#pragma once

// The interface of listeners for consent events. A host implements it, or uses the class that wraps two
// closures.

#include <functional>
#include <utility>

#include "TalvoConsentSDK/base/Export.h"

namespace TalvoConsentSDK TALVO_EXPORT {

/// A listener. A submission's events arrive on the platform's callback executor, where a listener may block;
/// `identificationComplete` arrives on the main actor.
class ConsentEventCallback {
 public:
  virtual ~ConsentEventCallback() = default;

  /// Called each time the event is raised.
  virtual void onSuccess() = 0;

  /// Exists for symmetry only. The library never calls it, because failures raise no event.
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

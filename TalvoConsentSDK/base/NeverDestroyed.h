#pragma once

// Objects that outlive every thread.

#include <utility>

#include "TalvoConsentSDK/base/Export.h"

namespace TalvoConsentSDK TALVO_EXPORT {

/// Returns a new object that is never destroyed, for a static reference: other threads may still use it while
/// the process exits.
template <class T>
T& neverDestroyed() {
  return *new T;
}
template <class T>
T& neverDestroyed(T value) {
  return *new T(std::move(value));
}

}  // namespace TalvoConsentSDK

#pragma once

// The version of these headers, as macros, and of the library that a program runs with, as a function. A
// program may run with a newer library of the same major version.

#include "TalvoConsentSDK/base/Export.h"

#define TALVO_CONSENT_SDK_VERSION_MAJOR 1
#define TALVO_CONSENT_SDK_VERSION_MINOR 0
#define TALVO_CONSENT_SDK_VERSION_PATCH 0

/// The version as one number that can be compared: 1.2.3 is 10203.
#define TALVO_CONSENT_SDK_VERSION                                                    \
  (TALVO_CONSENT_SDK_VERSION_MAJOR * 10000 + TALVO_CONSENT_SDK_VERSION_MINOR * 100 + \
   TALVO_CONSENT_SDK_VERSION_PATCH)

/// The version as text, such as "1.2.3".
#define TALVO_CONSENT_SDK_VERSION_TEXT                                                       \
  TALVO_CONSENT_SDK_DOTTED(TALVO_CONSENT_SDK_VERSION_MAJOR, TALVO_CONSENT_SDK_VERSION_MINOR, \
                           TALVO_CONSENT_SDK_VERSION_PATCH)
#define TALVO_CONSENT_SDK_DOTTED(major, minor, patch) \
  TALVO_CONSENT_SDK_TEXT(major) "." TALVO_CONSENT_SDK_TEXT(minor) "." TALVO_CONSENT_SDK_TEXT(patch)
#define TALVO_CONSENT_SDK_TEXT(number) #number

namespace TalvoConsentSDK TALVO_EXPORT {

/// Returns the library's version, such as "1.2.3".
TALVO_EXPORT const char* version() noexcept;

}  // namespace TalvoConsentSDK

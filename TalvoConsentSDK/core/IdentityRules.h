#pragma once

// What logging in and logging out make of the values that are kept: rules alone, which read and write
// nothing. What is unknown stays unknown, and a rule that would need it changes nothing that depends on it.

#include <string>

#include "TalvoConsentSDK/storage/ConsentStorage.h"

namespace TalvoConsentSDK {

/// The consent without the identifier of its record on the service, which is another person's.
KeptConsent withoutId(const KeptConsent& kept);

/// An original without a user is owed to nobody in particular: it becomes the consent again.
void restoreOwed(KeptValues& kept);

/// Sets the consent of nobody in particular aside, which the user inherits until there is one of their own.
void logIn(KeptValues& kept, const std::string& userId);

/// Forgets the user at once, and brings back the consent set aside once that is known.
void logOut(KeptValues& kept);

/// Whether what stands as the user's consent is the one set aside for nobody in particular.
bool isInherited(const KeptValues& kept);

}  // namespace TalvoConsentSDK

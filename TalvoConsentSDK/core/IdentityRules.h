#pragma once

// How a login and a logout change the stored values. These functions do not use the store. A login or a
// restore changes nothing while a value that it needs is unknown; a logout always forgets the user.

#include <string>

#include "TalvoConsentSDK/storage/ConsentStorage.h"

namespace TalvoConsentSDK {

/// Returns the consent without the identifier of its record on the service, because that record is another
/// person's.
KeptConsent withoutId(const KeptConsent& kept);

/// Makes the original the current consent again if nobody is identified: an original stored without a user
/// means that an earlier restore failed.
void restoreOriginal(KeptValues& kept);

/// Identifies the user. If nobody was identified, sets the consent aside as the original. The user inherits
/// the current consent, even another user's, until they have one of their own.
void logIn(KeptValues& kept, const std::string& userId);

/// Forgets the user and restores the original. While the original cannot be read, the consent becomes
/// unknown.
void logOut(KeptValues& kept);

/// Whether the user's consent is still the one inherited from the original.
bool isInherited(const KeptValues& kept);

}  // namespace TalvoConsentSDK

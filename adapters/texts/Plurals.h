#pragma once

// The plural forms of languages, for whole numbers: which form a number takes in a language.

#include <cstdint>

namespace TalvoConsentSDK::plurals {

/// The names that the Unicode Common Locale Data Repository (CLDR) gives to plural forms.
enum class Form { zero, one, two, few, many, other };

/// Returns the form of a number.
using Rule = Form (*)(std::uint64_t count);

// The rules of CLDR 42 (common/supplemental/plurals.xml). Each is named after one of the languages that it
// applies to, or after its forms.
Form onlyOther(std::uint64_t count);
Form oneOrOther(std::uint64_t count);
Form upToOneOrOther(std::uint64_t count);
Form arabic(std::uint64_t count);
Form croatian(std::uint64_t count);
Form czech(std::uint64_t count);
Form french(std::uint64_t count);
Form hebrew(std::uint64_t count);
Form irish(std::uint64_t count);
Form latvian(std::uint64_t count);
Form lithuanian(std::uint64_t count);
Form maltese(std::uint64_t count);
Form polish(std::uint64_t count);
Form romanian(std::uint64_t count);
Form slovenian(std::uint64_t count);
Form spanish(std::uint64_t count);
Form ukrainian(std::uint64_t count);

}  // namespace TalvoConsentSDK::plurals

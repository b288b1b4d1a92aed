// Decodes any bytes as JSON and as a customization, and valid JSON also as every other record. It must be
// possible to encode a decoded record, and its JSON must decode to the same record again.

#include <optional>

#include "TalvoConsentSDK/models/BannerCustomization.h"
#include "TalvoConsentSDK/models/CodingError.h"
#include "TalvoConsentSDK/models/ConsentResponse.h"
#include "TalvoConsentSDK/models/FullConsent.h"
#include "TalvoConsentSDK/models/JSONValue.h"
#include "TalvoConsentSDK/models/Services.h"
#include "TalvoConsentSDK/models/SiteConfiguration.h"
#include "TalvoConsentSDK/models/json/SyntaxError.h"

#include "fuzz/Fuzzing.h"

using namespace TalvoConsentSDK;
using namespace TalvoConsentSDK::fuzzing;

namespace {

template <class Record>
void check(std::string_view text, bool isDocument) {
  const auto decoded = JSONDecoder().decode<Record>(text);
  if (!decoded) {
    const auto* error = decoded.error().template as<CodingError>();
    require(error && !std::string_view(error->what()).empty(), "a refused document gives a coding error");
    require(isDocument || error->kind() == CodingError::Kind::dataCorrupted,
            "invalid JSON is reported as corrupt");
    return;
  }
  require(isDocument, "a record is only decoded from valid JSON");
  const std::string written = recoded(*decoded);
  const auto document = JSONDecoder().decode<JSONValue>(written);
  require(document.has_value(), "an encoded record is valid JSON");
  require(recoded(*JSONDecoder().decode<Record>(recoded(*document))) == written,
          "the keys' order is of no matter");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  const auto document = JSONDecoder().decode<JSONValue>(text);
  if (document) {
    recoded(*document);
    require(*JSONDecoder().decode<JSONValue>(*JSONEncoder().encode(*document)) == *document,
            "no value changes");
  }
  // A text with an integer from 2^63 on is a document, although a JSONValue cannot hold the integer: a record
  // that ignores the integer's key can be decoded from the text.
  const auto* error = document ? nullptr : document.error().as<CodingError>();
  const bool isDocument = !error || error->detail().starts_with("The whole number");
  require(!isDocument || text.starts_with("\xEF\xBB\xBF") || !json::syntaxErrorOffset(text),
          "what the parser reads has no syntax error");
  check<BannerCustomization>(text, isDocument);
  if (!isDocument) return 0;
  check<BannerCustomization::CategoryItem>(text, isDocument);
  check<BasicConsent>(text, isDocument);
  check<ConsentDataAnalytics>(text, isDocument);
  check<ConsentResponse>(text, isDocument);
  check<ConsentStatus>(text, isDocument);
  check<ConsentValue>(text, isDocument);
  check<FullConsent>(text, isDocument);
  check<std::optional<FullConsent>>(text, isDocument);
  check<Services>(text, isDocument);
  check<SiteConfiguration>(text, isDocument);
  return 0;
}

#include <algorithm>

#include "TalvoConsentSDK/models/BannerCustomization.h"
#include "TalvoConsentSDK/models/ConsentResponse.h"
#include "TalvoConsentSDK/models/FullConsent.h"
#include "TalvoConsentSDK/models/Services.h"
#include "TalvoConsentSDK/models/SiteConfiguration.h"

#include "tests/support/Testing.h"

// Compares the JSON of records, as sent and stored, with the documents in tests/golden.
namespace TalvoConsentSDK {

namespace {

std::string golden(const std::string& record, const std::string& name) {
  return contentOf(TALVO_TEST_DATA "/golden/" + record + "/" + name + ".json");
}

struct GoldenRecord {
  std::string name;
  std::function<Result<std::string>(const std::string&)> recode;
};

template <class Record>
GoldenRecord record(const char* name) {
  return {name, [](const std::string& json) -> Result<std::string> {
            const auto decoded = JSONDecoder().decode<Record>(json);
            return decoded ? JSONEncoder().encode(*decoded) : decoded.error();
          }};
}

const GoldenRecord records[] = {
    record<BasicConsent>("BasicConsent"),
    record<FullConsent>("FullConsent"),
    record<ConsentResponse>("ConsentResponse"),
    record<SiteConfiguration>("SiteConfiguration"),
    record<BannerCustomization>("BannerCustomization"),
    record<BannerCustomization::CategoryItem>("CategoryItem"),
    record<Services>("Services"),
};

class GoldenRecordsTest : public TestWithParam<GoldenRecord> {};

TEST_P(GoldenRecordsTest, ReadsAndWritesTheFrozenForm) {
  const auto& [name, recode] = GetParam();
  for (const char* document : {"normal", "minimal"}) {
    const std::string json = golden(name, document);
    EXPECT_EQ(canonical(recode(json).value()), canonical(json));
    EXPECT_EQ(recode(recode(json).value()).value(), recode(json).value());
  }
  EXPECT_EQ(recode(golden(name, "unknown-key")).value(), recode(golden(name, "normal")).value());
}

INSTANTIATE_TEST_SUITE_P(Records, GoldenRecordsTest, ValuesIn(records), byName);

Result<std::string> recoded(const std::string& name, const std::string& json) {
  return std::ranges::find(records, name, &GoldenRecord::name)->recode(json);
}

TEST(GoldenFieldsTest, TakeTheLastOfARepeatedKey) {
  for (const auto& [name, json, again] : tableOf<3>("models/twice.txt"))
    EXPECT_EQ(recoded(name, json).value(), again);
}

TEST(GoldenFieldsTest, RefusesWhatARecordCannotHold) {
  for (const auto& [name, text, replacement, error] : tableOf<4>("models/alterations.txt")) {
    std::string json = golden(name, "normal");
    json.replace(json.find(text), text.size(), replacement);
    const auto outcome = recoded(name, json);
    EXPECT_THAT(failure(outcome), StartsWith(error)) << replacement;
    EXPECT_EQ(outcome.has_value(), error.empty());
  }
}

}  // namespace
}  // namespace TalvoConsentSDK

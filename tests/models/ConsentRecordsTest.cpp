#include "TalvoConsentSDK/models/BasicConsent.h"
#include "TalvoConsentSDK/models/ConsentEvent.h"
#include "TalvoConsentSDK/models/FullConsent.h"

#include "tests/support/Testing.h"

namespace TalvoConsentSDK {

namespace {

TEST(ConsentValueTest, IsBuiltFromASelection) {
  for (const auto& [selection, count, json] : tableOf<3>("models/selections.txt")) {
    const Texts selected = words(selection);
    const ConsentValue value = ConsentValue::fromSelection(selected, std::stoi(count));
    EXPECT_EQ(written(value), json);
    EXPECT_EQ(value.isEnabled(), !selected.empty());
  }
  const ConsentValue empty = ConsentValue::partial({});
  EXPECT_FALSE(empty.isEnabled() || empty.isAll() || empty.isNone());
  EXPECT_EQ(written(empty), "[]");
  EXPECT_TRUE(parsed<ConsentValue>("true").isAll() && parsed<ConsentValue>("[]").isNone());
  EXPECT_THAT(parsed<ConsentValue>(R"(["a"])").items(), ElementsAre("a"));
  for (const char* json : {"0", "\"all\"", "null", "{}", "[true]", "[[]]"}) {
    EXPECT_EQ(failure(JSONDecoder().decode<ConsentValue>(json)),
              "Data corrupted: ConsentValue must be either Bool or [String]");
  }
}

TEST(BasicConsentTest, HasAStatusAndRaisesEvents) {
  for (const auto& [json, status, events] : tableOf<3>("models/consents.txt")) {
    const auto consent = parsed<BasicConsent>(json);
    EXPECT_EQ(rawValue(consent.status()), status) << json;
    Texts announced;
    for (const ConsentEvent event : consent.consentEvents()) announced.emplace_back(rawValue(event));
    EXPECT_EQ(joined(announced, " "), events) << json;
  }
  BasicConsent odd;
  odd.statistics = ConsentValue::partial({});
  EXPECT_EQ(odd.status(), ConsentStatus::partial);
  EXPECT_THAT(odd.consentEvents(), ElementsAre(ConsentEvent::rejectAll));
}

TEST(FullConsentTest, ConvertsToTheHostsConsent) {
  for (const auto& [payload, consent] : tableOf<2>("models/payloads.txt"))
    EXPECT_EQ(written(parsed<FullConsent>(payload).toBasicConsent()), consent);
}

// The raw values in the order of declaration.
template <class Enum>
std::string rawValues() {
  Texts texts(RawValues<Enum>::table.size());
  for (const auto& [value, text] : RawValues<Enum>::table) texts.at(static_cast<std::size_t>(value)) = text;
  return joined(texts, " ");
}

TEST(EnumerationsTest, HaveTheirRawValues) {
  EXPECT_EQ(rawValues<ConsentCategory>(),
            "necessary preferences statistics marketing unclassified doNotSell");
  EXPECT_EQ(rawValues<ConsentStatus>(), "accepted rejected partial");
  EXPECT_EQ(rawValues<ConsentEvent>(),
            "AcceptAll RejectAll MarketingAccepted StatisticsAccepted PreferenceAccepted ConsentSent "
            "IdentificationComplete");
  EXPECT_EQ(written(parsed<ConsentCategory>("\"doNotSell\"")), "\"doNotSell\"");
  EXPECT_EQ(failure(JSONDecoder().decode<ConsentStatus>("\"Partial\"")),
            "Data corrupted: no case is named \"Partial\"");
}

}  // namespace
}  // namespace TalvoConsentSDK

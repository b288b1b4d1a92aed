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

template <class Enum>
void expectRawValues(const Texts& texts) {
  EXPECT_EQ(RawValues<Enum>::table.size(), texts.size());
  for (std::size_t index = 0; index < texts.size(); ++index) {
    const std::string& text = texts[index];
    EXPECT_EQ(rawValue(static_cast<Enum>(index)), text) << "in order of declaration";
    EXPECT_EQ(fromRawValue<Enum>(text), static_cast<Enum>(index));
    EXPECT_FALSE(fromRawValue<Enum>(static_cast<char>(text[0] ^ 0x20) + text.substr(1))) << "case matters";
  }
}

TEST(EnumerationsTest, HaveTheirRawValues) {
  expectRawValues<ConsentCategory>(
      {"necessary", "preferences", "statistics", "marketing", "unclassified", "doNotSell"});
  expectRawValues<ConsentStatus>({"accepted", "rejected", "partial"});
  expectRawValues<ConsentEvent>({"AcceptAll", "RejectAll", "MarketingAccepted", "StatisticsAccepted",
                                 "PreferenceAccepted", "ConsentSent", "IdentificationComplete"});
  EXPECT_EQ(written(parsed<ConsentCategory>("\"doNotSell\"")), "\"doNotSell\"");
  EXPECT_EQ(failure(JSONDecoder().decode<ConsentStatus>("\"Partial\"")),
            "Data corrupted: no case is named \"Partial\"");
}

}  // namespace
}  // namespace TalvoConsentSDK

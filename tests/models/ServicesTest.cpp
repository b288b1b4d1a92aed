#include "TalvoConsentSDK/models/Services.h"
#include "TalvoConsentSDK/models/ServicesByCategory.h"

#include "tests/support/Testing.h"

namespace TalvoConsentSDK {
namespace {

const Services catalogue = parsed<Services>(R"({
    "libraries": [
      {"id": "1", "category": "Marketing", "vendor": "beta"},
      {"id": "2", "category": "marketing", "vendor": "Zeta", "domain": "zeta.example"},
      {"id": "3", "category": "MARKETING", "vendor": "alpha"},
      {"id": "4", "category": "marketing", "vendor": ""}, {"id": "5", "category": "marketing"},
      {"id": "6", "category": "marketing", "vendor": "beta"}, {"id": "7", "vendor": "nowhere"},
      {"id": "8", "category": "Preference", "vendor": "Acme"},
      {"id": "9", "category": "preferences", "vendor": "Acme"}, {"id": "10", "category": "statistics"},
      {"id": "11", "category": "", "vendor": "uncategorized"},
      {"id": "12", "category": "x", "vendor": "\uD83D\uDE00"}, {"id": "13", "category": "x", "vendor": "\uFFFD"},
      {"id": "14", "category": "x", "vendor": "Z"}, {"id": "15", "category": "x", "vendor": "a"}],
    "services": [
      {"id": "beta", "legalBasis": "first"}, {"id": "beta", "legalBasis": "second"},
      {"id": "Alpha", "legalBasis": "another's"}, {"id": "", "legalBasis": "nobody's"},
      {"id": "z", "domain": "zeta.example", "legalBasis": "domain's"}, {"legalBasis": "without identifier"}]})");

// "vendor: services (legal basis)" of each group.
Texts groups(const Services& services, const std::string& category) {
  Texts texts;
  for (const auto& [vendor, ofVendor, details] : services.groupedByVendor(category)) {
    std::string text = vendor + ":";
    for (const auto& service : ofVendor) text += " " + *service.id;
    texts.push_back(text + " (" + details.legalBasis.value_or("-") + ")");
  }
  return texts;
}

TEST(ServicesTest, GroupsACategoryByVendor) {
  for (const char* category : {"marketing", "MARKeting"}) {
    EXPECT_THAT(groups(catalogue, category),
                ElementsAre("Zeta: 2 (-)", "alpha: 3 (-)", "beta: 1 6 (second)"));
  }
  EXPECT_THAT(groups(catalogue, "Preferences"), ElementsAre("Acme: 8 9 (-)"));
  EXPECT_THAT(groups(catalogue, "x"),
              ElementsAre("Z: 14 (-)", "a: 15 (-)", "\xEF\xBF\xBD: 13 (-)", "\xF0\x9F\x98\x80: 12 (-)"));
  for (const char* category : {"preference", "Preference", "statistics", "necessary", "", " marketing"}) {
    EXPECT_THAT(groups(catalogue, category), IsEmpty()) << category;
  }
  EXPECT_THAT(groups(Services(), "marketing"), IsEmpty());
}

TEST(ServicesByCategoryTest, ListsVendorsInOrderOfAppearance) {
  EXPECT_THAT(ServicesByCategory(catalogue).servicesByCategory(),
              ElementsAre(Pair("", ElementsAre("uncategorized")),
                          Pair("marketing", ElementsAre("beta", "Zeta", "alpha", "")),
                          Pair("preferences", ElementsAre("Acme")),
                          Pair("x", ElementsAre("\xF0\x9F\x98\x80", "\xEF\xBF\xBD", "Z", "a"))));
  EXPECT_THAT(ServicesByCategory(Services()).servicesByCategory(), IsEmpty());
  EXPECT_EQ(normalizedCategoryKey("PREFERENCE") + normalizedCategoryKey("Preference "),
            "preferencespreference ");
}

}  // namespace
}  // namespace TalvoConsentSDK

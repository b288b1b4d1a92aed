#include "TalvoConsentSDK/models/Services.h"
#include "TalvoConsentSDK/models/ServicesByCategory.h"

#include "tests/support/Testing.h"

namespace TalvoConsentSDK {

namespace {

const Services catalogue = parsed<Services>(contentOf(TALVO_TEST_DATA "/golden/models/catalogue.json"));

// "vendor: services (legal basis)" for each group.
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
  for (const auto& [category, expected] : tableOf<2>("models/groups.txt"))
    EXPECT_EQ(joined(groups(catalogue, unescaped(category))), unescaped(expected)) << category;
  EXPECT_THAT(groups(Services(), "marketing"), IsEmpty());
}

TEST(ServicesByCategoryTest, ListsVendorsInOrderOfAppearance) {
  EXPECT_THAT(ServicesByCategory(catalogue).servicesByCategory(),
              ElementsAre(Pair("", ElementsAre("uncategorized")),
                          Pair("marketing", ElementsAre("beta", "Zeta", "alpha", "")),
                          Pair("preferences", ElementsAre("Acme")),
                          Pair("x", ElementsAre("\xF0\x9F\x98\x80", "\xEF\xBF\xBD", "Z", "a"))));
  EXPECT_THAT(ServicesByCategory(Services()).servicesByCategory(), IsEmpty());
  EXPECT_EQ(normalizedCategoryKey("PREFERENCE"), "preferences");
  EXPECT_EQ(normalizedCategoryKey("Preference "), "preference ");
}

}  // namespace
}  // namespace TalvoConsentSDK

// The library's own texts: complete in every language, with the right plural forms, and asked for by the
// banner.

#include <map>
#include <set>

#include "TalvoConsentSDK/view/TextDirection.h"

#include "adapters/texts/TranslatedTexts.h"
#include "adapters/texts/Translations.h"

#include "tests/core/ClientTest.h"
#include "tests/ui/BannerTesting.h"

namespace TalvoConsentSDK {
namespace {

std::string translated(const std::string& language, const std::string& key) {
  TranslatedTexts texts;
  texts.setLanguage(language);
  return texts.text(key);
}

TEST(TranslatedTexts, HavePluralFormsByTheRulesOfEachLanguage) {
  const std::map<std::string, std::string_view Translation::Counted::*> members{
      {"zero", &Translation::Counted::zero}, {"one", &Translation::Counted::one},
      {"two", &Translation::Counted::two},   {"few", &Translation::Counted::few},
      {"many", &Translation::Counted::many}, {"other", &Translation::Counted::other}};
  std::map<std::string, std::set<std::string>> expected;
  for (const auto& [languages, form, numbers] : tableOf<3>("texts/plurals.txt")) {
    for (const std::string& language : words(languages)) {
      SCOPED_TRACE(language + " " + form);
      expected[language].insert(form);
      const Translation* translation = translationInto(language);
      ASSERT_TRUE(translation && translation->language == language);
      const std::string text(translation->vendors.*members.at(form));
      const std::size_t place = text.find("{n}");
      EXPECT_TRUE(place != text.npos || words(numbers).size() == 1) << "says how many";
      for (const std::string& number : words(numbers)) {
        std::string filled = text;
        if (place != text.npos) filled.replace(place, 3, number);
        EXPECT_EQ(translated(language, number + " vendors"), filled);
        EXPECT_EQ(filled.find_first_of("{}"), filled.npos);
      }
    }
  }
  std::map<std::string, std::set<std::string>> found;
  for (const Translation& each : translations()) {
    for (const auto& [form, member] : members) {
      if (!(each.vendors.*member).empty()) found[std::string(each.language)].insert(form);
    }
  }
  EXPECT_EQ(found, expected);
}

// Shows a banner and opens all of its screens. Returns the keys of the texts that the banner asked for.
class Recorder : public Localization {
 public:
  std::string text(std::string_view key) override { return keys.emplace(key), std::string(key); }
  void setLanguage(const std::string& code) override { language = code; }

  std::set<std::string> keys{"collapsed", "expanded"};  // the Qt adapter asks for these
  std::string language;
};

class BannerTextsTest : public ClientTest {
 protected:
  void show(const std::shared_ptr<Localization>& localization) {
    replaceSeam(&Platform::localization, localization);
    const Customization site =
        customization("buttons:managePreferences closeButton", "tabs:marketing,statistics closeButton");
    Services services = catalogue("marketing:A,B statistics:A");
    services.libraries->front().version = "1";
    auto& details = services.services.emplace().emplace_back();
    details.id = "A";
    for (auto* each : {&details.processingCompanyName, &details.processingCompanyLocation,
                       &details.DTOProbableEmails, &details.privacyPolicyURL, &details.description}) {
      *each = "value";
    }
    answer("GET", "banner-customization/s?lng=de", 200, bannerDocument(site));
    answer("GET", "cookies/s?lng=de", 200, written(services));
    const auto client = created();
    client->setLanguage("de");
    client->showBanner({}, {}, {}, {});
    platform.settle();
  }
  HostingController& banner() { return *platform.scene->windows().at(0)->controller; }
};

TEST_F(BannerTextsTest, AreCompleteAndWrittenInTheDirectionOfEachLanguage) {
  const auto recorder = std::make_shared<Recorder>();
  show(recorder);
  EXPECT_EQ(recorder->language, "de");
  for (const char* each : {"button Manage", "expander Marketing", "expander Statistics", "button A"}) {
    EXPECT_TRUE(tap(banner(), each)) << each;
    banner().frame({});
  }
  recorder->keys.insert({"No preferences available", "No vendor details available"});
  EXPECT_EQ(recorder->keys.erase("en"), 1u) << "the language of the texts";
  EXPECT_GE(recorder->keys.size(), 14u);
  const std::set<std::string> sameAsInEnglish{"da Version", "de Version", "fr Version", "sv Version",
                                              "fr Description"};
  const std::set<std::string_view> rightToLeft{"ar", "he", "ur"};
  for (const Translation& each : translations()) {
    const auto direction =
        rightToLeft.contains(each.language) ? LayoutDirection::rightToLeft : LayoutDirection::leftToRight;
    EXPECT_EQ(translated(std::string(each.language), "en"), each.language);
    for (const std::string& key : recorder->keys) {
      const std::string text = translated(std::string(each.language), key);
      const bool isSame =
          each.language == "en" || sameAsInEnglish.contains(std::string(each.language) + " " + key);
      EXPECT_EQ(text == key, isSame) << each.language << ": " << key;
      EXPECT_EQ(dominantDirection(text), direction) << text;
      EXPECT_EQ(split(text, '|'), Texts{text}) << "no blanks around it";
    }
  }
}

TEST_F(BannerTextsTest, AreReplacedByTheHosts) {
  struct Own : Localization {
    std::string text(std::string_view key) override { return key == "Back" ? "Nach vorn" : std::string(key); }
  };
  show(std::make_shared<TranslatedTexts>(std::make_shared<Own>()));
  EXPECT_TRUE(tap(banner(), "button Manage"));
  EXPECT_EQ(find(banner(), "expander Marketing").description.substr(0, 10), "2 Anbieter");
  EXPECT_TRUE(tap(banner(), "expander Marketing"));
  banner().frame({});
  EXPECT_TRUE(tap(banner(), "button A"));
  EXPECT_NO_THROW(find(banner(), "button Nach vorn"));
  EXPECT_NO_THROW(find(banner(), "button Schließen"));
}

TEST(TranslatedTexts, FindTheLanguage) {
  for (const auto& [language, text] : tableOf<2>("texts/languages.txt")) {
    EXPECT_EQ(translated(language, "Close"), text) << language;
  }
  EXPECT_EQ(translated("", "Close"), "Close");
  for (const char* key : {"3 vendorses", "3", "-1 vendors", "vendors", "99999999999999999999 vendors", ""}) {
    EXPECT_EQ(translated("de", key), key);
  }
}

}  // namespace
}  // namespace TalvoConsentSDK

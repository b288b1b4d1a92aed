// The banner of a host in C, on a platform with windows.

#include "bindings/c/talvo_consent.h"
#include "tests/core/ClientTest.h"
#include "tests/ui/BannerTesting.h"

namespace TalvoConsentSDK {
namespace {

using ::testing::Contains;

template <const char* const& text>
void add(void* ends) {
  static_cast<Texts*>(ends)->push_back(text);
}
const char* const accepted = "accepted";
const char* const rejected = "rejected";
const char* const saved = "saved";
const char* const closed = "closed";
const char* const replaced = "replaced";
const char* const managed = "managed";
const char* const released = "released";

TEST_F(ClientTest, ReportsInCHowABannerEnds) {
  BannerCustomization document;
  document.customization = customization("buttons:acceptAll,rejectAll,managePreferences closeButton",
                                         "buttons:savePreferences,managePreferences",
                                         R"(,"savePreference":"Save","preferencesButton":"Manage")");
  answer("GET", "banner-customization/s?lng=en", 200, written(document));
  answer("GET", "cookies/s?lng=en", 200, "{}");
  for (const char* method : {"POST", "PUT"}) answer(method, "cookie-consent/s", 200, R"({"id":"c"})");
  created();
  talvo_cookies* const sdk = talvo_cookies_create("", "");
  Texts ends;
  talvo_banner_callbacks banner{};
  banner.size = sizeof banner;
  banner.on_accept_all = add<accepted>;
  banner.on_reject_all = add<rejected>;
  banner.on_saved = add<saved>;
  banner.on_closed = add<closed>;
  banner.on_replaced = add<replaced>;
  banner.on_manage_preferences = add<managed>;
  banner.on_error = [](const talvo_error* error, void* other) {
    static_cast<Texts*>(other)->push_back(std::to_string(error->status));
  };
  banner.release = add<released>;
  banner.user_data = &ends;
  const struct {
    std::string taps;
    Texts ends;
  } ways[] = {
      {"button Accept", {"accepted", "released"}},
      {"button Reject", {"rejected", "released"}},
      {"button Manage; button Manage; button Save", {"managed", "saved", "released"}},
      {"button Close", {"closed", "released"}},
      {"another", {"replaced", "released"}},
      {"background", {std::to_string(TALVO_NOT_SHOWN), "released"}},
      {"nowhere", {std::to_string(TALVO_NO_SURFACE), "released"}},
  };
  for (const auto& way : ways) {
    const auto scenes = platform.application->scenes;
    if (way.taps == "nowhere") platform.application->scenes.clear();
    platform.scene->state =
        way.taps == "background" ? ActivationState::background : ActivationState::foregroundActive;
    ASSERT_EQ(talvo_cookies_show_banner(sdk, &banner), TALVO_OK);
    platform.settle();
    platform.application->scenes = scenes;
    for (const std::string& each : split(way.taps, ';')) {
      if (each == "another") CookiesSDK::getInstance()->showBanner({}, {}, {}, {});
      const bool isTapped =
          !each.starts_with("button") || tap(*platform.scene->windows().at(0)->controller, each);
      EXPECT_TRUE(isTapped) << each;
      platform.settle();
    }
    for (const auto& window : platform.scene->windows()) window->finishAnimations();
    platform.settle();
    EXPECT_EQ(std::exchange(ends, {}), way.ends) << way.taps;
  }
}

TEST_F(ClientTest, TranslatesTheBannersTextsInC) {
  BannerCustomization document;
  document.customization = customization("closeButton", "closeButton");
  answer("GET", "banner-customization/s?lng=de", 200, written(document));
  answer("GET", "cookies/s?lng=de", 200, "{}");
  created();
  talvo_cookies* const sdk = talvo_cookies_create("", "");
  ASSERT_EQ(talvo_cookies_set_language(sdk, "de"), TALVO_OK);
  talvo_banner_callbacks banner{};
  banner.size = sizeof banner;
  const auto own = [](const char* key, void*) { return key == "Close"s ? "Weg damit" : nullptr; };
  int releases = 0;
  const struct {
    talvo_text_callback own;
    std::string name;
  } hosts[] = {{own, "Weg damit"}, {nullptr, "Schließen"}};
  for (const auto& host : hosts) {
    ASSERT_EQ(talvo_translate_texts(host.own, &releases, [](void* count) { ++*static_cast<int*>(count); }),
              TALVO_OK);
    ASSERT_EQ(talvo_cookies_show_banner(sdk, &banner), TALVO_OK);
    platform.settle();
    EXPECT_NO_THROW(find(*platform.scene->windows().back()->controller, "button " + host.name));
  }
  EXPECT_EQ(releases, 1) << "of the table that was replaced";
}

TEST_F(ClientTest, ReportsFailuresOfTheBackgroundInC) {
  created();
  talvo_cookies* const sdk = talvo_cookies_create("", "");
  char* json = nullptr;
  EXPECT_EQ(talvo_cookies_get_consent(sdk, &json), TALVO_OK) << "there is no consent";
  platform.userDefaults->failsToRead = true;
  EXPECT_EQ(talvo_cookies_get_consent(sdk, &json), TALVO_PLATFORM_ERROR);
  platform.userDefaults->failsToRead = false;

  const auto note = [](const char* line, void* lines) { static_cast<Texts*>(lines)->push_back(line); };
  Texts lines;
  ASSERT_EQ(talvo_set_printer(note, &lines, add<released>), TALVO_OK);
  answer("GET", "cookie-consent/s/identified/user", 500, "");
  talvo_cookies_identify(sdk, "user");
  platform.settle();
  EXPECT_THAT(lines, Contains(StartsWith("Error fetching identified consent")));
  lines.clear();
  EXPECT_EQ(talvo_set_printer(nullptr, nullptr, nullptr), TALVO_OK);
  EXPECT_THAT(lines, ElementsAre("released"));
}

}  // namespace
}  // namespace TalvoConsentSDK

// The banner of a host in C, on a platform with windows.

#include "bindings/c/talvo_consent.h"
#include "tests/core/ClientTest.h"
#include "tests/ui/BannerTesting.h"

namespace TalvoConsentSDK {
namespace {

using ::testing::Contains;

void add(void* ends, const char* text) {
  static_cast<Texts*>(ends)->push_back(text);
}

TEST_F(ClientTest, ReportsInCHowABannerEnds) {
  const Customization site = customization("buttons:acceptAll,rejectAll,managePreferences closeButton",
                                           "buttons:savePreferences,managePreferences",
                                           R"(,"savePreference":"Save","preferencesButton":"Manage")");
  answer("GET", "banner-customization/s?lng=en", 500, "500");
  answer("GET", "banner-customization/s?lng=en", 200, bannerDocument(site));
  answer("GET", "cookies/s?lng=en", 200, "{}");
  answer("POST", "cookie-consent/s", 422, R"({"id":"c"})");
  for (const char* method : {"POST", "PUT"}) answer(method, "cookie-consent/s", 200, R"({"id":"c"})");
  created();
  talvo_cookies* const sdk = talvo_cookies_create("", "");
  Texts ends;
  talvo_banner_callbacks banner{};
  banner.size = sizeof banner;
  banner.on_accept_all = [](void* to) { add(to, "accepted"); };
  banner.on_reject_all = [](void* to) { add(to, "rejected"); };
  banner.on_saved = [](void* to) { add(to, "saved"); };
  banner.on_closed = [](void* to) { add(to, "closed"); };
  banner.on_replaced = [](void* to) { add(to, "replaced"); };
  banner.on_manage_preferences = [](void* to) { add(to, "managed"); };
  banner.on_shown = [](void* to) { add(to, "shown"); };
  banner.on_error = [](const talvo_error* error, void* to) {
    add(to, error->status == TALVO_NOT_SHOWN    ? "not shown"
            : error->status == TALVO_NO_SURFACE ? "no surface"
                                                : error->description);
  };
  banner.release = [](void* to) { add(to, "released"); };
  banner.user_data = &ends;
  for (const auto& [taps, called] : tableOf<2>("banner/ends.txt")) {
    banner.time_limit = taps == "nowhere" ? 60'000 : 0;
    endBanner(taps, [&] { EXPECT_EQ(talvo_cookies_show_banner(sdk, &banner), TALVO_OK); });
    EXPECT_EQ(joined(std::exchange(ends, {})), called + "; released");
    EXPECT_EQ(platform.session->requests().back().totalTimeout,
              taps == "nowhere" ? std::optional(60'000ms) : std::nullopt);
  }
}

TEST_F(ClientTest, TranslatesTheBannersTextsInC) {
  answer("GET", "banner-customization/s?lng=de", 200, bannerDocument(customization("closeButton")));
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
  ASSERT_EQ(talvo_set_printer(note, &lines, [](void* to) { add(to, "released"); }), TALVO_OK);
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

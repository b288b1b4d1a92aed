// Surfaces in C: refused arguments, and surfaces that are destroyed while a banner is on them.

#include <cmath>

#include "bindings/c/surface/talvo_surface.h"
#include "bindings/c/surface/talvo_surface_elements.h"
#include "bindings/c/surface/talvo_surface_input.h"
#include "tests/core/ClientTest.h"
#include "tests/ui/BannerTesting.h"

namespace TalvoConsentSDK {
namespace {

struct CSurfaceTest : ClientTest {
  CSurfaceTest() {
    settings.size = sizeof settings;
    options.size = sizeof options;
    options.settings = &settings;
    options.width = options.height = 1000;
    options.user_data = &calls;
    options.release = [](void* to) { static_cast<Texts*>(to)->push_back("released"); };
    options.open_url = [](const char* url, void* to) { static_cast<Texts*>(to)->push_back(url); };
    platform.application->scenes.clear();
  }

  talvo_surface_settings settings{};
  talvo_surface_options options{};
  Texts calls;
};

TEST_F(CSurfaceTest, RefusesWhatItCannotUse) {
  const std::pair<const char*, std::function<void()>> mistakes[] = {
      {"options has a size", [&] { --options.size; }},
      {"width", [&] { options.width = -1; }},
      {"scale", [&] { options.scale = std::nan(""); }},
      {"max_texture_size", [&] { options.max_texture_size = 511; }},
      {"fonts", [&] { options.font_count = 1; }},
      {"settings has a size", [&] { settings.size = 0; }},
      {"text_scale", [&] { settings.text_scale = HUGE_VAL; }},
      {"safe_area_top", [&] { settings.safe_area_top = -1; }},
      {"direction", [&] { settings.direction = 9; }},
  };
  for (const auto& [named, make] : mistakes) {
    const auto good = std::pair(options, settings);
    make();
    EXPECT_EQ(talvo_surface_create(&options), nullptr) << named;
    EXPECT_THAT(talvo_last_error(), HasSubstr(named));
    std::tie(options, settings) = good;
  }
  EXPECT_THAT(calls, IsEmpty()) << "a surface that was not created calls nothing";

  const struct Newer {
    talvo_surface_options known;
    std::uint64_t unknown = ~0ULL;
  } newer{options};
  options.size = sizeof newer;
  talvo_surface* const surface = talvo_surface_create(&newer.known);
  ASSERT_TRUE(surface) << talvo_last_error();
  size_t count = 1;
  EXPECT_FALSE(talvo_surface_frame(nullptr));
  EXPECT_EQ(talvo_surface_elements(surface, nullptr, &count), TALVO_INVALID_ARGUMENT);
  EXPECT_EQ(talvo_surface_resize(surface, 20000, 1, 1), TALVO_INVALID_ARGUMENT);
  EXPECT_FALSE(talvo_surface_touch_began(surface, 0, std::nan(""), 1));
  EXPECT_THAT(talvo_last_error(), StartsWith("x"));
  EXPECT_FALSE(talvo_surface_stick_moved(surface, 7, 0, 0));
  EXPECT_FALSE(talvo_surface_key_pressed(surface, -5));
  talvo_surface_destroy(surface);
}

TEST_F(CSurfaceTest, EndsWhatItShowsWhenItIsDestroyed) {
  BannerCustomization document;
  document.customization = customization("title links:doNotSell", "", R"(,"doNotSellURLText":"Link")");
  document.customization->urls.emplace()["doNotSell"] = "https://elsewhere.example";
  answer("GET", "banner-customization/s?lng=en", 200, written(document));
  answer("GET", "cookies/s?lng=en", 200, "{}");
  created();
  talvo_banner_callbacks banner{};
  banner.size = sizeof banner;
  banner.user_data = &calls;
  banner.on_closed = [](void* to) { static_cast<Texts*>(to)->push_back("closed"); };
  const auto show = [&] {
    ASSERT_EQ(talvo_cookies_show_banner(talvo_cookies_create("", ""), &banner), TALVO_OK);
    platform.settle();
  };

  talvo_surface* surface = talvo_surface_create(&options);
  show();
  const talvo_element* const* elements = nullptr;
  size_t count = 0;
  ASSERT_EQ(talvo_surface_elements(surface, &elements, &count), TALVO_OK);
  const talvo_element* const* const link =
      std::find_if(elements, elements + count, [](auto* each) { return each->role == TALVO_ROLE_LINK; });
  ASSERT_LT(link, elements + count);
  EXPECT_TRUE(talvo_surface_perform(surface, (*link)->id, TALVO_ACTION_ACTIVATE));
  talvo_surface_destroy(surface);  // before the link is opened
  platform.settle();
  EXPECT_THAT(calls, ElementsAre("released", "closed"));

  // The surface is destroyed by a callback during the call that resizes it.
  options.on_needs_frame = [](void* own) {
    talvo_surface_destroy(std::exchange(*static_cast<talvo_surface**>(own), nullptr));
  };
  options.user_data = &(surface = nullptr);
  options.release = nullptr;
  surface = talvo_surface_create(&options);
  show();
  ASSERT_TRUE(talvo_surface_frame(surface));
  EXPECT_EQ(talvo_surface_resize(surface, 100, 100, 1), TALVO_OK);
  EXPECT_EQ(surface, nullptr);
  platform.settle();
  EXPECT_THAT(calls, ElementsAre("released", "closed", "closed"));
}

}  // namespace
}  // namespace TalvoConsentSDK

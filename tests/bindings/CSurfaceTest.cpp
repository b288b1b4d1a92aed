// Surfaces in C: refused arguments, and surfaces that are destroyed while a banner is on them.

#include <cmath>
#include <limits>

#include "bindings/c/surface/talvo_surface.h"
#include "bindings/c/surface/talvo_surface_elements.h"
#include "bindings/c/surface/talvo_surface_input.h"
#include "tests/core/ClientTest.h"
#include "tests/ui/BannerTesting.h"

namespace TalvoConsentSDK {
namespace {

using ::testing::Contains;

const double notANumber = std::numeric_limits<double>::quiet_NaN();

struct CSurfaceTest : ClientTest {
  CSurfaceTest() {
    settings.size = sizeof settings;
    settings.reduces_motion = 1;
    options.size = sizeof options;
    options.settings = &settings;
    options.width = 780;
    options.height = 1688;
    options.scale = 2;
    banner.size = sizeof banner;
    options.user_data = &calls;
    options.release = [](void* to) { static_cast<Texts*>(to)->push_back("released"); };
    options.open_url = [](const char* url, void* to) { static_cast<Texts*>(to)->push_back(url); };
    banner.user_data = &ends;
    banner.on_replaced = [](void* to) { static_cast<Texts*>(to)->push_back("replaced"); };
    banner.on_error = [](const talvo_error* error, void* to) {
      static_cast<Texts*>(to)->push_back(std::to_string(error->status));
    };
  }

  /// Shows the banner as far as the platform can.
  void show() {
    ASSERT_EQ(talvo_cookies_show_banner(talvo_cookies_create("", ""), &banner), TALVO_OK);
    platform.settle();
  }

  talvo_surface_settings settings{};
  talvo_surface_options options{};
  talvo_banner_callbacks banner{};
  Texts calls, ends;
};

TEST_F(CSurfaceTest, RefusesWhatItCannotUse) {
  const talvo_font font{};
  const struct {
    std::string named;  // in the error
    std::function<void(talvo_surface_options&, talvo_surface_settings&)> spoil;
  } mistakes[] = {
      {"options->size", [](auto& o, auto&) { o.size = sizeof o - 1; }},
      {"width", [](auto& o, auto&) { o.width = -1; }},
      {"height", [](auto& o, auto&) { o.height = std::numeric_limits<int32_t>::max(); }},
      {"scale", [](auto& o, auto&) { o.scale = notANumber; }},
      {"max_texture_size", [](auto& o, auto&) { o.max_texture_size = 511; }},
      {"fonts", [](auto& o, auto&) { o.font_count = 1; }},
      {"path", [&](auto& o, auto&) { o.fonts = &font, o.font_count = 1; }},
      {"settings->size", [](auto&, auto& s) { s.size = 0; }},
      {"text_scale", [](auto&, auto& s) { s.text_scale = HUGE_VAL; }},
      {"safe_area_top", [](auto&, auto& s) { s.safe_area_top = -1; }},
      {"direction 9", [](auto&, auto& s) { s.direction = 9; }},
  };
  for (const auto& mistake : mistakes) {
    talvo_surface_options bad = options;
    talvo_surface_settings badSettings = settings;
    bad.settings = &badSettings;
    mistake.spoil(bad, badSettings);
    EXPECT_EQ(talvo_surface_create(&bad), nullptr) << mistake.named;
    EXPECT_THAT(talvo_last_error(), HasSubstr(mistake.named));
  }
  EXPECT_EQ(talvo_surface_create(nullptr), nullptr);
  EXPECT_THAT(calls, IsEmpty()) << "a surface that was not created calls nothing";

  struct {
    talvo_surface_options known{};
    std::uint64_t unknown[4] = {~0U, ~0U, ~0U, ~0U};
  } newer{options};
  newer.known.size = sizeof newer;
  talvo_surface* const surface = talvo_surface_create(&newer.known);
  ASSERT_TRUE(surface) << talvo_last_error();
  const talvo_element* const* elements = nullptr;
  size_t count = 1;
  const std::pair<const char*, bool> refusals[] = {
      {"surface", talvo_surface_frame(nullptr)},
      {"surface", talvo_surface_needs_frame(nullptr)},
      {"surface", talvo_surface_touch_began(nullptr, 0, 1, 1)},
      {"surface", talvo_surface_elements(nullptr, &elements, &count) == TALVO_OK},
      {"elements", talvo_surface_elements(surface, nullptr, &count) == TALVO_OK},
      {"width", talvo_surface_resize(surface, 20000, 1, 1) == TALVO_OK},
      {"settings", talvo_surface_set_settings(surface, nullptr) == TALVO_OK},
      {"x", talvo_surface_touch_moved(surface, 0, notANumber, 1)},
      {"notches", talvo_surface_wheel_turned(surface, 1, 1, HUGE_VAL)},
      {"stick 7", talvo_surface_stick_moved(surface, 7, 0, 0)},
      {"", talvo_surface_key_pressed(surface, -5)},
      {"", talvo_surface_perform(surface, 1, ~0U)},
  };
  for (const auto& [named, isDone] : refusals) EXPECT_FALSE(isDone) << named;
  EXPECT_EQ(talvo_surface_resize(surface, 20000, 1, 1), TALVO_INVALID_ARGUMENT);
  EXPECT_THAT(talvo_last_error(), StartsWith("width"));
  talvo_surface_destroy(surface);
  talvo_surface_destroy(nullptr);
  EXPECT_THAT(calls, ElementsAre("released"));
}

TEST_F(CSurfaceTest, EndsWhatItShowsWhenItIsDestroyed) {
  BannerCustomization document;
  document.customization = customization("title links:doNotSell", "", R"(,"doNotSellURLText":"Link")");
  document.customization->urls.emplace()["doNotSell"] = "https://elsewhere.example";
  answer("GET", "banner-customization/s?lng=en", 200, written(document));
  answer("GET", "cookies/s?lng=en", 200, "{}");
  created();
  platform.application->scenes.clear();
  show();
  EXPECT_THAT(std::exchange(ends, {}), ElementsAre(std::to_string(TALVO_NO_SURFACE)));

  talvo_surface* surface = talvo_surface_create(&options);
  show();
  EXPECT_TRUE(talvo_surface_is_showing(surface));
  const talvo_element* const* elements = nullptr;
  size_t count = 0;
  ASSERT_EQ(talvo_surface_elements(surface, &elements, &count), TALVO_OK);
  int links = 0;
  for (size_t i = 0; i < count; ++i) {
    if (elements[i]->role == TALVO_ROLE_LINK) {
      links += talvo_surface_perform(surface, elements[i]->id, TALVO_ACTION_ACTIVATE);
    }
  }
  EXPECT_EQ(links, 1);
  talvo_surface_destroy(surface);  // before the link is opened
  platform.settle();
  EXPECT_THAT(std::exchange(calls, {}), ElementsAre("released"));
  EXPECT_THAT(platform.printer->take(), Contains(HasSubstr("elsewhere.example")));
  EXPECT_THAT(ends, IsEmpty());

  // A callback destroys the surface while the surface is calling it.
  options.on_needs_frame = [](void* pointer) {
    talvo_surface*& other = *static_cast<talvo_surface**>(pointer);
    talvo_surface_destroy(std::exchange(other, nullptr));
  };
  options.user_data = &surface;
  options.release = nullptr;
  surface = nullptr;
  surface = talvo_surface_create(&options);
  show();
  EXPECT_THAT(std::exchange(ends, {}), ElementsAre("replaced"));
  ASSERT_TRUE(talvo_surface_frame(surface));
  EXPECT_EQ(talvo_surface_resize(surface, 100, 100, 1), TALVO_OK);
  EXPECT_EQ(surface, nullptr);
  show();
  EXPECT_THAT(ends, ElementsAre(std::to_string(TALVO_NO_SURFACE)));
}

}  // namespace
}  // namespace TalvoConsentSDK

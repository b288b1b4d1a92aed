// The banner on a surface: what it draws, what it costs, and how it takes input.

#include <fstream>

#include "TalvoConsentSDK/view/HostingController.h"
#include "TalvoConsentSDK/view/Views.h"

#include "tests/draw/ShownSurface.h"

namespace TalvoConsentSDK {

namespace {

// The pictures are in the tests' temporary folder, so that they can be looked at.
class ScreensTest : public TestWithParam<std::array<std::string, 5>> {};
INSTANTIATE_TEST_SUITE_P(All, ScreensTest, ValuesIn(tableOf<5>("draw/screens.txt")),
                         [](const auto& each) { return each.param[0]; });

TEST_P(ScreensTest, TakeFewCallsAndNothingWhileStill) {
  const auto& [name, language, pressed, scale, contrast] = GetParam();
  const SurfaceSettings settings{.textScale = std::stod(scale), .highContrast = contrast == "high"};
  ShownSurface shown({.settings = settings}, language);
  shown.settle();
  EXPECT_TRUE(pressed.empty() || shown.tap(Role::button, pressed));
  if (settings.highContrast) shown.surface.keyPressed(SurfaceKey::tab);
  shown.settle();
  shown.screen.draw(shown.list);
  EXPECT_TRUE(shown.screen.save(::testing::TempDir() + "draw_" + name + ".png"));
  EXPECT_GT(shown.list.vertices.size(), 500U);
  constexpr std::size_t maxCommands = 4;  // and two for a picture
  EXPECT_LE(shown.list.commands.size(), maxCommands + 2);
  EXPECT_TRUE(shown.list.commands.size() <= maxCommands || shown.screen.textureCount() == 2);

  const std::uint64_t revision = shown.list.revision;
  for (int i = 0; i < 3; ++i) {
    EXPECT_FALSE(shown.surface.needsFrame());
    shown.frame();
    EXPECT_EQ(shown.list.revision, revision);
    EXPECT_THAT(shown.list.uploads, IsEmpty());
  }

  if (!settings.highContrast) return;
  const Point middle = shown.find(Role::toggle, "Statistics")->frame.center();
  const int top = static_cast<int>(middle.y) - 35;  // of the switch's outline
  for (int x = static_cast<int>(middle.x) - 60; x < middle.x + 60; ++x) {
    EXPECT_NEAR(shown.screen.at(x, top)[0], shown.screen.at(x + 1, top)[0], 0.2) << "a step at " << x;
  }
}

// How much of the fonts' files the process has in memory, in kB.
int memoryOfFonts() {
  std::ifstream mappings("/proc/self/smaps");
  int sum = 0;
  bool isFont = false;
  for (std::string line; std::getline(mappings, line);) {
    const bool isAttribute = line.substr(0, line.find(' ')).ends_with(':');
    if (!isAttribute) isFont = line.ends_with(".otf") || line.ends_with(".ttf");
    if (isFont && line.starts_with("Rss:")) sum += std::stoi(line.substr(4));
  }
  return sum;
}

TEST(FontMemoryTest, IsGivenBackByAStillBanner) {
  ShownSurface shown;
  shown.frame();
  EXPECT_GT(memoryOfFonts(), 0);
  shown.settle();
  EXPECT_EQ(memoryOfFonts(), 0);
}

int unlikePixels(const Rasterizer& a, const Rasterizer& b) {
  int unlike = 0;
  for (int y = 0; y < 1688; ++y) {
    for (int x = 0; x < 780; ++x) unlike += a.at(x, y) != b.at(x, y);
  }
  return unlike;
}

// The preferences with an open category. `disturb` is called while the category opens. Expects the same
// picture from a renderer that begins with the last frame.
Rasterizer openCategory(const std::function<void(ShownSurface&)>& disturb) {
  ShownSurface shown;
  shown.settle();
  EXPECT_TRUE(shown.tap(Role::button, "Manage preferences"));
  shown.settle();
  EXPECT_TRUE(shown.tap(Role::expander, "Statistics"));
  for (int i = 0; i < 3; ++i) shown.frame();
  disturb(shown);
  shown.settle();
  shown.screen.draw(shown.list);
  Rasterizer fresh(780, 1688, {0.8F, 0.82F, 0.84F});
  shown.surface.forgetTextures();
  const DrawList list = shown.surface.frame();
  fresh.apply(list);
  fresh.draw(list);
  EXPECT_EQ(unlikePixels(shown.screen, fresh), 0);
  ConsentBannerPresenter::shared()->dismiss();
  return shown.screen;
}

const struct Disturbance {
  const char* name;
  std::function<void(ShownSurface&)> happen;
  bool changesLayout = false;  // a card on another screen has another height
} disturbances[] = {
    {"Resizing",
     [](ShownSurface& shown) {
       shown.surface.resize({1688, 780, 2});
       shown.frame();
       shown.surface.resize({780, 1688, 2});
     },
     true},
    {"AnotherSurface",
     [](ShownSurface& shown) {
       ConsentSurface other({.size = {400, 400, 1}});
       Platform platform;
       platform.printer = shown.fakes.printer;
       other.addTo(platform);
       EXPECT_THAT(shown.fakes.printer->take(), ElementsAre(HasSubstr("No logo")));
       const auto window = platform.application->connectedScenes().front()->makeWindow();
       window->setRootViewController(std::make_shared<HostingController>(text("Another surface", {})));
       window->makeKeyAndVisible();
       shown.screen.apply(other.frame());
       shown.frame();
     }},
    {"LostTextures",
     [](ShownSurface& shown) {
       shown.surface.forgetTextures();
       shown.screen = Rasterizer(780, 1688, shown.screen.at(0, 0));
     }},
};

class DisturbanceTest : public TestWithParam<Disturbance> {};
INSTANTIATE_TEST_SUITE_P(All, DisturbanceTest, ValuesIn(disturbances), byName);

TEST_P(DisturbanceTest, ChangesNoLaterPicture) {
  const auto& [name, happen, changesLayout] = GetParam();
  const Rasterizer disturbed = openCategory(happen);
  EXPECT_TRUE(changesLayout || unlikePixels(disturbed, openCategory([](ShownSurface&) {})) == 0);
}

TEST(ConsentSurfaceTest, FadesByTheClock) {
  ShownSurface shown;
  const auto opacity = [&] {
    int most = 0;
    for (const DrawVertex& each : shown.list.vertices) most = std::max<int>(most, each.color[3]);
    return most;
  };
  shown.frame();
  EXPECT_LT(opacity(), 40);
  EXPECT_GT(shown.settle(), 15) << "0.3 seconds";
  EXPECT_EQ(opacity(), 255);
  shown.presenter->dismiss();
  EXPECT_TRUE(shown.surface.needsFrame());
  shown.settle();
  EXPECT_FALSE(shown.surface.isShowing());
  EXPECT_THAT(shown.list.commands, IsEmpty());
}

TEST(ConsentSurfaceTest, PassesOnWhatIsOutsideTheCard) {
  std::string document = siteFile("demo/customization.en.json");
  const std::string backdrop = "\"showBlurBackground\": true";
  ASSERT_NE(document.find(backdrop), std::string::npos);
  document.replace(document.find(backdrop), backdrop.size(), "\"showBlurBackground\": false");
  ShownSurface shown({}, "en", document);
  shown.settle();
  const auto* const button = shown.find(Role::button, "Manage preferences");
  ASSERT_TRUE(button);
  const Point inside = button->frame.center();
  ConsentSurface& surface = shown.surface;
  EXPECT_FALSE(surface.isModal());
  EXPECT_FALSE(surface.touchBegan(1, 390, 20));
  EXPECT_FALSE(surface.touchMoved(1, inside.x, inside.y)) << "a touch stays where it began";
  EXPECT_FALSE(surface.touchEnded(1, inside.x, inside.y));
  EXPECT_FALSE(surface.mousePressed(MouseButton::left, 390, 20));
  EXPECT_FALSE(surface.mouseMoved(inside.x, inside.y));
  EXPECT_FALSE(surface.mouseReleased(MouseButton::left, inside.x, inside.y));
  EXPECT_FALSE(surface.wheelTurned(390, 20, 1));
  EXPECT_FALSE(surface.keyPressed(SurfaceKey::other));
  EXPECT_FALSE(surface.keyReleased(SurfaceKey::other));
  EXPECT_TRUE(surface.mouseMoved(inside.x, inside.y));
  EXPECT_TRUE(surface.touchBegan(1, inside.x, inside.y));
  EXPECT_TRUE(surface.touchBegan(2, inside.x, inside.y)) << "a second finger does not reach the host either";
  EXPECT_TRUE(surface.touchEnded(2, inside.x, inside.y));
  EXPECT_TRUE(surface.touchCancelled(1));
  EXPECT_TRUE(shown.find(Role::button, "Manage preferences")) << "a cancelled touch presses nothing";
  EXPECT_TRUE(surface.touchBegan(-1, inside.x, inside.y));
  EXPECT_FALSE(surface.mouseReleased(MouseButton::left, inside.x, inside.y)) << "the mouse is no finger";
  EXPECT_TRUE(surface.touchMoved(-1, 1e308, -1e308));
  EXPECT_TRUE(surface.touchCancelled(-1));
  EXPECT_TRUE(surface.mousePressed(MouseButton::left, inside.x, inside.y));
  EXPECT_TRUE(surface.mouseReleased(MouseButton::left, inside.x, inside.y));
  EXPECT_FALSE(shown.find(Role::button, "Manage preferences")) << "the preferences are open";
  for (const SurfaceElement& each : surface.accessibleElements()) EXPECT_TRUE(std::isfinite(each.frame.y));
}

std::string focusedName(ConsentSurface& surface) {
  for (const SurfaceElement& each : surface.accessibleElements()) {
    if (each.isFocused) return each.name;
  }
  return {};
}

TEST(ConsentSurfaceTest, LeavesToTheHostWhatItHolds) {
  ShownSurface shown;
  ConsentSurface& surface = shown.surface;
  shown.presenter->dismiss();
  shown.settle();
  EXPECT_FALSE(surface.keyPressed(SurfaceKey::enter));
  EXPECT_FALSE(surface.keyPressed(SurfaceKey::other));
  EXPECT_FALSE(surface.stickMoved(ControllerStick::left, 0, 1));
  showSite(*shown.presenter, "en");
  shown.settle();
  const auto* const manage = shown.find(Role::button, "Manage preferences");
  ASSERT_TRUE(manage);
  EXPECT_TRUE(surface.perform(manage->id, SurfaceAction::focus));
  for (int i = 0; i < 3; ++i) {
    shown.time += std::chrono::milliseconds(600);
    EXPECT_TRUE(surface.keyPressed(SurfaceKey::enter)) << "a repetition, which the host does not need";
  }
  EXPECT_TRUE(surface.keyPressed(SurfaceKey::other));
  EXPECT_FALSE(surface.stickMoved(ControllerStick::left, 0, -1));
  EXPECT_EQ(focusedName(surface), "Manage preferences") << "what is held does not operate the banner";
  EXPECT_FALSE(surface.keyReleased(SurfaceKey::other));
  EXPECT_FALSE(surface.keyReleased(SurfaceKey::enter));
  EXPECT_FALSE(surface.stickMoved(ControllerStick::left, 0, 0));
  EXPECT_TRUE(surface.stickMoved(ControllerStick::left, 0, -1));
  EXPECT_NE(focusedName(surface), "Manage preferences");
  EXPECT_TRUE(surface.keyPressed(SurfaceKey::enter));
  EXPECT_TRUE(surface.keyReleased(SurfaceKey::enter));
}

TEST(ConsentSurfaceTest, FollowsAControllerAndAssistiveTechnology) {
  ShownSurface shown({.settings = {.language = "en-GB"}});
  shown.settle();
  ConsentSurface& surface = shown.surface;
  const auto* const accept = shown.find(Role::button, "Accept all");
  ASSERT_TRUE(accept);
  EXPECT_EQ(accept->language, "en-GB");
  EXPECT_TRUE(surface.perform(accept->id, SurfaceAction::focus));
  const auto* const reject = shown.find(Role::button, "Reject all");
  ASSERT_TRUE(reject);
  const bool isBeside = std::abs(reject->frame.y - shown.find(Role::button, "Accept all")->frame.y) < 1;
  EXPECT_TRUE(surface.keyPressed(isBeside ? SurfaceKey::padRight : SurfaceKey::padDown));
  EXPECT_EQ(focusedName(surface), "Reject all");
  // A stick that is held repeats its direction; the first repetition comes later than the others.
  EXPECT_TRUE(surface.stickMoved(ControllerStick::left, 0, 1));
  EXPECT_EQ(focusedName(surface), "Manage preferences");
  EXPECT_TRUE(surface.stickMoved(ControllerStick::left, 0, 0));
  EXPECT_TRUE(surface.stickMoved(ControllerStick::left, 0, -1));
  const std::string above = focusedName(surface);
  shown.time += std::chrono::milliseconds(390);
  shown.frame();
  EXPECT_NE(focusedName(surface), "Manage preferences");
  EXPECT_TRUE(surface.stickMoved(ControllerStick::left, 0, 0));
  EXPECT_TRUE(surface.perform(shown.find(Role::button, "Manage preferences")->id, SurfaceAction::focus));
  EXPECT_TRUE(surface.keyPressed(SurfaceKey::padAccept));
  EXPECT_TRUE(surface.keyReleased(SurfaceKey::padAccept));
  EXPECT_FALSE(shown.find(Role::button, "Manage preferences")) << "the preferences are open";
  const std::uint64_t revision = surface.accessibleRevision();
  EXPECT_FALSE(surface.perform(shown.find(Role::toggle, "Necessary")->id, SurfaceAction::activate))
      << "required";
  EXPECT_TRUE(surface.perform(shown.find(Role::toggle, "Statistics")->id, SurfaceAction::activate));
  EXPECT_EQ(shown.find(Role::toggle, "Statistics")->value, "on");
  EXPECT_GT(surface.accessibleRevision(), revision);
  EXPECT_FALSE(surface.perform(0xFFFF'FFFF'FFFFU, SurfaceAction::activate)) << "there is no such element";
}

TEST(ConsentSurfaceTest, ReportsOnceThatATextureIsTooSmall) {
  for (const int most : {2048, 512}) {
    ShownSurface shown({.size = {1170, 2532, 3}, .settings = {.textScale = 2}, .maxTextureSize = most}, "ja");
    shown.settle();
    shown.tap(Role::button, "設定を管理");
    shown.settle();
    const auto printed = shown.fakes.printer->take();
    EXPECT_EQ(std::ranges::count_if(printed, [](auto& line) { return line.find("missing") != line.npos; }),
              most == 2048 ? 0 : 1);
    ConsentBannerPresenter::shared()->dismiss();
  }
}

TEST(ConsentSurfaceTest, OutlivesNothing) {
  auto shown = std::make_unique<ShownSurface>();
  shown->frame();
  int ended = 0;
  const auto window = Platform::current().application->connectedScenes().front()->makeWindow();
  window->animateAlpha(0, std::chrono::milliseconds(300), [&] { ++ended; });
  const auto mainActor = shown->fakes.mainActor;
  shown.reset();
  mainActor->runAll();
  EXPECT_EQ(ended, 1) << "the completion of a fade is called once, even if the surface goes first";
  EXPECT_THAT(Platform::current().application->connectedScenes(), IsEmpty());
}

}  // namespace
}  // namespace TalvoConsentSDK

#include "tests/support/Repetitions.h"
#include "tests/support/ResidentMemory.h"
#include "tests/ui/BannerTesting.h"

namespace TalvoConsentSDK {

namespace {

class ConsentBannerPresenterTest : public BannerTest {
 protected:
  ~ConsentBannerPresenterTest() override {
    for (const auto& window : platform.scene->windows()) window->finishAnimations();
  }

  std::shared_ptr<FakeWindow> show() {
    presenter->show(banner(), site);
    const auto windows = platform.scene->windows();
    return windows.empty() ? nullptr : windows.back();
  }

  std::shared_ptr<ConsentBannerPresenter> presenter = std::make_shared<ConsentBannerPresenter>();
};

TEST_F(ConsentBannerPresenterTest, ShowsOnTheFirstSceneInTheForeground) {
  using enum ActivationState;
  const auto second = std::make_shared<FakeScene>();
  auto& scenes = platform.application->scenes;
  scenes = {std::make_shared<FakeScene>(background), std::make_shared<FakeScene>(foregroundInactive),
            std::make_shared<FakeScene>(unattached), std::make_shared<FakeScene>(foregroundActive, false)};
  EXPECT_FALSE(show());
  presenter->dismiss();  // no banner is shown
  scenes.insert(scenes.end(), {platform.scene, second});
  const auto window = show();
  ASSERT_TRUE(window && second->windows().empty());
  EXPECT_TRUE(window->isVisible && window->alpha == 0 && window->level == WindowLevel::alert);
  EXPECT_THAT((std::vector{window->backgroundColor, window->controller->backgroundColor()}),
              Each(Color::clear()));
  EXPECT_THAT(window->fades, ElementsAre(300ms));
  window->finishAnimations();
  EXPECT_EQ(window->alpha, 1);
}

TEST_F(ConsentBannerPresenterTest, ReportsThenDismisses) {
  const auto table = tableOf<3>("banner/reports.txt");
  for (const auto& [buttons, called, fades] : table) {
    auto window = show();
    for (const std::string& name : split(buttons, ';')) {
      if (name == "-") window->controller->loseWindow();
      EXPECT_TRUE(name == "-" || window->tap(Role::button, name));
    }
    EXPECT_EQ(joined(std::exchange(trace, {})), called) << buttons;
    EXPECT_EQ(std::to_string(window->fades.size()), fades) << buttons;
    presenter->dismiss();  // again, or for the first time if the buttons did not dismiss it
    EXPECT_THAT(window->fades, Each(300ms));
    window->finishAnimations();
    EXPECT_FALSE(window->isVisible);
    window.reset();
    EXPECT_THAT(platform.scene->windows(), IsEmpty()) << "the presenter released it";
  }
}

TEST_F(ConsentBannerPresenterTest, KeepsABannerShownWhileAnotherFadesOut) {
  const auto first = show();
  presenter->dismiss();
  const auto second = show();
  EXPECT_TRUE(first->tap(Role::button, "Accept") && trace.empty())
      << "a dismissed banner is still visible, but reports nothing";
  first->finishAnimations();
  EXPECT_TRUE(second->isVisible && !first->isVisible);
  presenter->dismiss();
  EXPECT_EQ(second->fades.size(), 2u) << "the end of the first fade does not release the second banner";
  const auto replaced = show();
  const auto last = show();
  EXPECT_EQ(replaced.use_count(), 1) << "the presenter releases a replaced banner at once";
  EXPECT_TRUE(replaced->tap(Role::button, "Accept") && trace.empty() && last->fades.size() == 1u);
}

// A host's callback for a decision may show the next banner, for example if it runs an event loop.
TEST_F(ConsentBannerPresenterTest, KeepsABannerShownWhileAnotherReports) {
  std::shared_ptr<FakeWindow> next;
  BannerCallbacks callbacks = banner().callbacks();
  callbacks.onAcceptAll = [&] { next = show(); };
  presenter->show(banner().withCallbacks(callbacks), site);
  EXPECT_TRUE(platform.scene->windows().at(0)->tap(Role::button, "Accept"));
  EXPECT_THAT(platform.scene->windows(), ElementsAre(next));
  EXPECT_EQ(next->fades.size(), 1u) << "it fades in only";
}

TEST_F(ConsentBannerPresenterTest, LeaksNoMemoryWhenShownOften) {
  const int banners = repetitions("TALVO_TEST_BANNERS", 50);
  HostingController::Clock::time_point now;
  const auto visit = [&](const std::shared_ptr<FakeWindow>& window) {
    EXPECT_TRUE(window->tap(Role::button, "Manage Preferences"));
    for (int frame = 0; frame < 3; ++frame) window->controller->frame(now += 100ms);
  };
  long before = 0;
  for (int shown = 0; shown < banners; ++shown) {
    if (shown == banners / 10) before = residentMemory();
    const std::weak_ptr<FakeWindow> replaced = show();
    visit(replaced.lock());
    auto window = show();
    EXPECT_TRUE(replaced.expired());
    visit(window);
    presenter->dismiss();
    window->finishAnimations();
    window.reset();
    EXPECT_THAT(platform.scene->windows(), IsEmpty());
  }
  const long after = residentMemory();
  std::cout << 2 * banners << " banners, resident before " << before << " KiB, after " << after << " KiB\n";
  // Fewer banners would only measure how the allocator warms up.
  if (banners >= 1000) {
    EXPECT_LT(after - before, 512);
  }
}

TEST_F(ConsentBannerPresenterTest, ReportsBeforeItDismissesAlsoWithReducedMotion) {
  platform.application->hasReducedMotion = true;
  const auto window = [this] { return platform.scene->windows().back(); };
  const auto checkNotFading = [&] { EXPECT_EQ(window()->fades.size(), 1u) << "it does not fade out yet"; };
  presenter->show(banner().withCallbacks({checkNotFading, {}, {}, {}, {}}), site);
  EXPECT_TRUE(window()->tap(Role::button, "Accept"));
  EXPECT_THAT(window()->fades, ElementsAre(0ms, 0ms));
  window()->finishAnimations();
  const auto alone = show();
  presenter.reset();
  EXPECT_TRUE(alone->tap(Role::button, "Accept"));
  EXPECT_EQ(alone->fades.size(), 1u);
}

TEST_F(ConsentBannerPresenterTest, DrawsTextThatCanBeSeen) {
  const auto table = tableOf<6>("banner/colors.txt");
  for (const auto& [background, button, label, font, drawn, replaced] : table) {
    site.colors.background = background;
    site.colors.buttonBackground = button;
    site.colors.buttonFontColor = label;
    site.colors.font = font;
    const auto window = show();
    Texts found;
    for (const Visual& each : window->controller->frame({})) {
      const auto* text = std::get_if<visual::Text>(&each.content);
      if (!text || text->text == "Reject" || text->text == "Manage Preferences") continue;
      const bool isWhite = text->color == Color{1, 1, 1, 1};
      found.push_back(text->color == Color::black() ? "black" : isWhite ? "white" : "own");
    }
    EXPECT_EQ(joined(found, " "), drawn) << background;
    const std::string line = "⚠️ Text that could not be seen is drawn in black or white: " + replaced;
    EXPECT_EQ(joined(platform.printer->take()), replaced.empty() ? "" : line) << background;
  }
}

TEST_F(ConsentBannerPresenterTest, PlacesTheBanner) {
  const auto table = tableOf<5>("banner/places.txt");
  site.messages.bannerMessages.mainMessage = "A";
  for (const auto& [placement, direction, title, card, heading] : table) {
    site.settings.positioning = words(placement).front();
    site.settings.isShowBlurBackground = placement.ends_with("dimmed");
    site.messages.bannerMessages.title = title;
    platform.application->direction.reset();
    if (!direction.empty())
      platform.application->direction =
          direction == "rtl" ? LayoutDirection::rightToLeft : LayoutDirection::leftToRight;
    const auto window = show();
    const auto& elements = window->controller->accessibleElements();
    EXPECT_EQ(rectText(elements.at(0).frame), card) << placement;
    EXPECT_EQ(rectText(elements.at(1).frame), heading) << placement << direction << title;
    EXPECT_EQ(window->controller->covers({200, 420}), site.settings.isShowBlurBackground);
  }
}

}  // namespace
}  // namespace TalvoConsentSDK

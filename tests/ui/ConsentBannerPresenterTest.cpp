#include "tests/support/Repetitions.h"
#include "tests/support/ResidentMemory.h"
#include "tests/ui/BannerTesting.h"

namespace TalvoConsentSDK {

using namespace platform;
using namespace view;

namespace {

class ConsentBannerPresenterTest : public BannerTest {
 protected:
  ~ConsentBannerPresenterTest() override {
    for (const auto& window : platform.scene->windows()) window->finishAnimations();
  }

  std::shared_ptr<FakeWindow> show() {
    presenter->show(banner(), made);
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
  presenter->dismiss();  // nothing is on show
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
    for (const std::string& name : split(buttons, ';')) EXPECT_TRUE(window->tap(Role::button, name));
    EXPECT_EQ(joined(std::exchange(trace, {})), called) << buttons;
    EXPECT_EQ(std::to_string(window->fades.size()), fades) << buttons;
    presenter->dismiss();  // once more, or at last
    EXPECT_THAT(window->fades, Each(300ms));
    window->finishAnimations();
    EXPECT_FALSE(window->isVisible);
    window.reset();
    EXPECT_THAT(platform.scene->windows(), IsEmpty()) << "nobody holds it any more";
  }
}

TEST_F(ConsentBannerPresenterTest, KeepsABannerShownWhileAnotherGoes) {
  const auto first = show();
  presenter->dismiss();
  const auto second = show();
  EXPECT_TRUE(first->tap(Role::button, "Accept") && trace.empty()) << "it is still seen, though dismissed";
  first->finishAnimations();
  EXPECT_TRUE(second->isVisible && !first->isVisible);
  presenter->dismiss();
  EXPECT_EQ(second->fades.size(), 2u) << "it is still the one on show";
  const auto replaced = show();
  const auto last = show();
  EXPECT_EQ(replaced.use_count(), 1) << "a banner on show is replaced at once";
  EXPECT_TRUE(replaced->tap(Role::button, "Accept") && trace.empty() && last->fades.size() == 1u);
}

// What the host does at a decision, such as running an event loop, may show the next banner.
TEST_F(ConsentBannerPresenterTest, LeavesABannerShownWhileAnotherReports) {
  std::shared_ptr<FakeWindow> next;
  BannerCallbacks callbacks = banner().callbacks();
  callbacks.onAcceptAll = [&] { next = show(); };
  presenter->show(banner().withCallbacks(callbacks), made);
  EXPECT_TRUE(platform.scene->windows().at(0)->tap(Role::button, "Accept"));
  EXPECT_THAT(platform.scene->windows(), ElementsAre(next));
  EXPECT_EQ(next->fades.size(), 1u) << "only in";
}

TEST_F(ConsentBannerPresenterTest, TakesNoMemoryByBeingShownOften) {
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
  // Fewer would measure how an allocator warms up.
  if (banners >= 1000) {
    EXPECT_LT(after - before, 512);
  }
}

TEST_F(ConsentBannerPresenterTest, CallsFirstAndDoesWithoutMotionAndWithoutItself) {
  platform.application->hasReducedMotion = true;
  const auto window = [this] { return platform.scene->windows().back(); };
  const auto note = [&] { EXPECT_EQ(window()->fades.size(), 1u) << "it is not fading yet"; };
  presenter->show(banner().withCallbacks({note, {}, {}, {}, {}}), made);
  EXPECT_TRUE(window()->tap(Role::button, "Accept"));
  EXPECT_THAT(window()->fades, ElementsAre(0ms, 0ms));
  window()->finishAnimations();
  const auto alone = show();
  presenter.reset();
  EXPECT_TRUE(alone->tap(Role::button, "Accept"));
  EXPECT_EQ(alone->fades.size(), 1u);
}

TEST_F(ConsentBannerPresenterTest, PlacesTheBanner) {
  const auto table = tableOf<5>("banner/places.txt");
  made.messages.bannerMessages.mainMessage = "A";
  for (const auto& [placement, direction, title, card, heading] : table) {
    made.settings.positioning = words(placement).front();
    made.settings.isShowBlurBackground = placement.ends_with("dimmed");
    made.messages.bannerMessages.title = title;
    platform.application->direction.reset();
    if (!direction.empty()) platform.application->direction = LayoutDirection(direction == "rtl");
    const auto window = show();
    const auto& elements = window->controller->accessibleElements();
    EXPECT_EQ(rectText(elements.at(0).frame), card) << placement;
    EXPECT_EQ(rectText(elements.at(1).frame), heading) << placement << direction << title;
    EXPECT_EQ(window->controller->covers({200, 420}), made.settings.isShowBlurBackground);
  }
}

}  // namespace
}  // namespace TalvoConsentSDK

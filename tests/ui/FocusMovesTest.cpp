// The focus, moved by the arrow keys of a remote, in a window without a toolkit.

#include "tests/support/Golden.h"
#include "tests/ui/BannerTesting.h"

namespace TalvoConsentSDK {

namespace {

class FocusMovesTest : public BannerTest {
 protected:
  static std::string focusedName(TestScreen& screen) {
    for (const auto& each : screen.accessibleElements()) {
      if (each.id == screen.focused()) return words(each.name).front();
    }
    return "nothing";
  }

  static std::string places(TestScreen& screen) {
    std::string all;
    for (const auto& each : screen.accessibleElements()) all += rectText(each.frame) + ";";
    return all;
  }

  // Presses keys and describes, for each, where the focus is then.
  static std::string press(TestScreen& screen, const std::string& keys) {
    static const std::map<std::string, Key> named{{"up", Key::up},     {"down", Key::down},
                                                  {"left", Key::left}, {"right", Key::right},
                                                  {"tab", Key::tab},   {"select", Key::enter}};
    std::string all;
    for (const std::string& key : words(keys)) {
      const std::string before = places(screen);
      const std::string focusedBefore = focusedName(screen);
      const bool isHandled = screen.press(named.at(key));
      const std::string focused = focusedName(screen);
      const bool hasScrolled = focused == focusedBefore && places(screen) != before && key != "select";
      all += (hasScrolled ? " ~" : " ") + focused + (isHandled ? "" : "!");
    }
    return all.substr(1);
  }
};

TEST_F(FocusMovesTest, FollowTheEye) {
  const std::string file = TALVO_TEST_DATA "/golden/banner/focus.txt";
  std::string actual;
  for (const std::string& row : split(contentOf(file), '\n')) {
    if (row.starts_with('#')) {
      actual += row + '\n';
      continue;
    }
    const Texts cells = split(row, '|');
    const Texts window = words(cells.at(0));
    const Size size{std::stod(window.at(0)), std::stod(split(window.at(0), 'x').at(1))};
    site = customization(cells.at(1));
    site.urls = URLs{{"privacyPolicy", "a"}, {"cookiePolicy", "b"}};
    site.components->secondaryScreen = site.components->mainScreen;
    if (size.height < 844) {
      for (int i = 0; i < 200; ++i) site.messages.bannerMessages.mainMessage += " word";
    }
    const ConsentBannerView view = banner({}, catalogue("marketing:A,B,C,D,E statistics:F"));
    view.handleMainAction("preferences");
    TestScreen screen(view.view(), size,
                      window.at(1) == "rtl" ? LayoutDirection::rightToLeft : LayoutDirection::leftToRight);
    actual += cells.at(0) + "|" + cells.at(1) + "|" + cells.at(2) + "| " + press(screen, cells.at(2)) + '\n';
  }
  expectGolden(file, actual);
}

TEST_F(FocusMovesTest, KeepTheFocusVisible) {
  const AnyView text = box(100, 2900);
  const auto pressed = [this](const char* name) { return [this, name] { trace.push_back(name); }; };
  TestScreen screen(scrollView(verticalStack({}, {button(box(100, 50), pressed("first")), text,
                                                  button(box(100, 50), pressed("last"))})),
                    {100, 300});
  const auto ring = [&] { return screen.frame({}).back(); };
  screen.press(Key::down);
  const Rect around = ring().frame;
  EXPECT_EQ(around.center(), (Point{50, 25}));
  screen.press(Key::down);
  EXPECT_TRUE(std::holds_alternative<visual::FocusRing>(ring().content));
  EXPECT_EQ(ring().frame.center(), (Point{50, 150})) << "surrounds the text if the control is out of sight";
  screen.press(Key::enter);
  EXPECT_EQ(joined(trace), "") << "a control that is out of sight must not act";
  screen.press(Key::end);
  screen.press(Key::up);
  EXPECT_EQ(joined(trace), "");
  screen.press(Key::home);
  EXPECT_EQ(ring().frame, around);
  screen.press(Key::enter);
  EXPECT_EQ(joined(trace), "first");
}

}  // namespace
}  // namespace TalvoConsentSDK

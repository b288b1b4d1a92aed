// The cost of a document grows in proportion to its length: ten times as much of anything takes at most
// fifteen times the processor time.

#include <set>

#include "tests/support/Cost.h"
#include "tests/ui/BannerTesting.h"

namespace TalvoConsentSDK {

namespace {

// Repeats the part of a text in brackets `count` times. A "#" at the end of the part is replaced by the
// number of the repetition.
std::string repeated(const std::string& text, std::size_t count) {
  const auto from = text.find('['), to = text.find(']');
  if (from == text.npos) return text;
  std::string all = text.substr(0, from);
  for (std::size_t number = 1; number <= count; ++number) {
    all += text.substr(from + 1, to - from - 1);
    if (all.back() == '#') all.replace(all.size() - 1, 1, std::to_string(number));
  }
  return all;
}

class CostTest : public TestWithParam<std::array<std::string, 5>> {
 protected:
  CostTest() { platform.install(); }

  MemoryPlatform platform;
};
INSTANTIATE_TEST_SUITE_P(All, CostTest, ValuesIn(tableOf<5>("banner/costs.txt")), byFirstCell);

TEST_P(CostTest, GrowsWithTheDocument) {
  const auto& [name, count, parts, vendors, title] = GetParam();
  const auto cost = [&](std::size_t times) {
    Customization site = customization("", repeated(parts, times), R"(,"marketingTitle":"M")");
    site.messages.bannerMessages.title = repeated(title, times);
    auto& tabs = site.components->secondaryScreen->front().tabs;
    if (name == "tabs") tabs->resize(times, tabs->front());
    const Services services = catalogue(repeated(vendors, times));
    return bestCost([&] {
      const ConsentBannerView view(site, services, {}, {}, {});
      view.handleMainAction("preferences");
      if (name == "services") view.showVendorDetail(services.groupedByVendor("marketing").front());
      TestScreen screen(bannerComposition(view.view(), site));
      const bool hasCategory = screen.list().find("expander M") != std::string::npos;
      if (hasCategory) tap(screen, "expander M");
      screen.scroll({195, 600}, 100);
      screen.frame({});
      if (hasCategory) tap(screen, "switch M");
      screen.frame({});
      screen.press(Key::tab);
      screen.accessibleElements(Layout::Rows::all);
    });
  };
  EXPECT_LE(growth(cost, std::stoul(count), 15), 15);
}

struct CountingMeasurer : FixedWidthMeasurer {
  Size measure(std::string_view text, const Font& font, double width) override {
    asked.push_back(std::string(text) + " in " + std::to_string(width));
    return FixedWidthMeasurer::measure(text, font, width);
  }
  double widestWord(std::string_view text, const Font& font) override {
    asked.push_back("word of " + std::string(text));
    return FixedWidthMeasurer::widestWord(text, font);
  }
  Texts asked;
};

TEST_F(BannerTest, MeasuresATextOncePerWidthAndNotWhileScrolling) {
  site = customization("title description buttons:acceptAll,rejectAll links:doNotSellMyData");
  site.messages.bannerMessages.mainMessage = std::string(5000, 'x');
  TestScreen screen(bannerComposition(banner().view(), site));
  const auto measurer = std::make_shared<CountingMeasurer>();
  screen.set(&ViewEnvironment::textMeasurer, measurer);
  EXPECT_EQ(std::set(measurer->asked.begin(), measurer->asked.end()).size(), measurer->asked.size())
      << joined(measurer->asked);
  measurer->asked.clear();
  screen.scroll({195, 400}, 100);
  screen.frame({});
  EXPECT_THAT(measurer->asked, IsEmpty());
}

}  // namespace
}  // namespace TalvoConsentSDK

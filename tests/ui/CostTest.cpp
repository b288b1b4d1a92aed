// What a document costs grows no faster than its length: ten times of anything cost at most fifteen times the
// processor time.

#include <set>

#include "tests/support/Cost.h"
#include "tests/ui/BannerTesting.h"

namespace TalvoConsentSDK {
namespace {

using Count = std::size_t;

std::string repeated(const std::string& part, Count count) {
  std::string all;
  for (Count i = 0; i < count; ++i) all += part;
  return all;
}

// A banner of so many parts, on the screen that shows them.
struct Site {
  Customization customization;
  Services services = {};
  bool isVendorPage = false;
};

Customization secondary(const std::string& components) {
  return customization("", components, R"(,"marketingTitle":"M")");
}

std::string manyVendors(Count count) {
  std::string all = "marketing:0";
  for (Count i = 1; i < count; ++i) all += "," + std::to_string(i);
  return all;
}

const struct Case {
  const char* name;
  Count count;  // and ten times as many
  Site (*make)(Count count);
} cases[] = {
    {"components", 300, [](Count n) { return Site{secondary(repeated("title description x ", n / 3))}; }},
    {"tabs", 30,
     [](Count n) {
       Site site{secondary("tabs:statistics,marketing"), vendors};
       auto& tabs = *site.customization.components->secondaryScreen->front().tabs;
       tabs.resize(n, tabs.front());
       return site;
     }},
    {"buttons", 300, [](Count n) { return Site{secondary("buttons:a" + repeated(",a", n))}; }},
    {"links", 1'000, [](Count n) { return Site{secondary("links:a" + repeated(",doNotSellMyData", n))}; }},
    {"vendors", 500, [](Count n) { return Site{secondary("tabs:marketing"), catalogue(manyVendors(n))}; }},
    {"services", 200,
     [](Count n) {
       return Site{secondary("tabs:marketing"), catalogue("marketing:A" + repeated(",A", n)), true};
     }},
    {"text", 10'000,
     [](Count n) {
       Site site{secondary("title")};
       site.customization.messages.bannerMessages.title = std::string(n, 'x');
       return site;
     }},
};

class CostTest : public TestWithParam<Case> {
 protected:
  CostTest() { platform.install(); }

  MemoryPlatform platform;
};
INSTANTIATE_TEST_SUITE_P(All, CostTest, ValuesIn(cases), byName);

TEST_P(CostTest, GrowsWithTheDocument) {
  const auto cost = [](Count count) {
    const Site site = GetParam().make(count);
    return bestCost([&] {
      const ConsentBannerView view(site.customization, site.services, {}, {}, {});
      view.handleMainAction("preferences");
      if (site.isVendorPage) view.showVendorDetail(site.services.groupedByVendor("marketing").front());
      TestScreen screen(bannerComposition(view.view(), site.customization));
      const bool hasCategory = !site.isVendorPage && screen.list().find("expander M") != std::string::npos;
      if (hasCategory) tap(screen, "expander M");
      screen.scroll({195, 600}, 100);
      screen.frame({});
      if (hasCategory) tap(screen, "switch M");
      screen.frame({});
      screen.press(Key::tab);
      screen.accessibleElements(true);
    });
  };
  const double tenth = cost(GetParam().count), whole = cost(10 * GetParam().count);
  EXPECT_LE(whole / tenth, 15) << whole << " s and " << tenth << " s";
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

TEST_F(BannerTest, MeasuresATextOnceForAWidthAndNotWhileItScrolls) {
  made = customization("title description buttons:acceptAll,rejectAll links:doNotSellMyData");
  made.messages.bannerMessages.mainMessage = std::string(5000, 'x');
  TestScreen screen(bannerComposition(banner().view(), made));
  ViewEnvironment environment = screen.environment();
  const auto measurer = std::make_shared<CountingMeasurer>();
  environment.textMeasurer = measurer;
  screen.setEnvironment(environment);
  screen.frame({});
  EXPECT_EQ(std::set(measurer->asked.begin(), measurer->asked.end()).size(), measurer->asked.size())
      << joined(measurer->asked);
  measurer->asked.clear();
  screen.scroll({195, 400}, 100);
  screen.frame({});
  EXPECT_THAT(measurer->asked, IsEmpty());
}

}  // namespace
}  // namespace TalvoConsentSDK

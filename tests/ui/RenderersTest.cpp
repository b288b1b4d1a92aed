#include "TalvoConsentSDK/ui/ComponentRenderer.h"
#include "TalvoConsentSDK/ui/Labels.h"

#include "tests/ui/BannerTesting.h"

namespace TalvoConsentSDK {

namespace {

class RenderersTest : public BannerTest {
 protected:
  AnyView render(const BannerCustomization::ComponentItem& item) {
    const auto button = [this](const std::string& id) { trace.push_back("button " + id); };
    const auto link = [this](const std::string& id) { trace.push_back("link " + id); };
    return ComponentRendererFactory().render(item, site, texts, button, link);
  }
  AnyView render(const std::string& component) { return render(components(component).front()); }

  BannerCustomization::BannerMessages& texts = site.messages.bannerMessages;
};

TEST_F(RenderersTest, AreChosenByTheComponent) {
  site.urls = URLs{{"dsrForm", "x"}};
  site.resources.emplace().mainLogoUrl = "https://site.example/logo.png";
  const auto table = tableOf<3>("banner/components.txt");
  for (const auto& [component, shown, reported] : table) {
    TestScreen screen(render(component));
    EXPECT_EQ(screen.list(), shown);
    if (!reported.empty()) tap(screen, shown);
    EXPECT_EQ(joined(std::exchange(trace, {})), reported);
    EXPECT_THAT(platform.printer->take(), IsEmpty()) << component;
  }
  for (const std::string& component : words("Title backButton buttons buttons: links links: tabs")) {
    EXPECT_TRUE(render(component).isEmpty());
    EXPECT_THAT(platform.printer->take(),
                ElementsAre("⚠️ Unknown component type: " + split(component, ':').front()));
  }
  platform.application->version = {14, 9};
  EXPECT_TRUE(render("bannerLogo").isEmpty());
  platform.application->version = {15, 0};
  EXPECT_FALSE(render("bannerLogo").isEmpty());
  site.resources->mainLogoUrl = "no URL";
  EXPECT_TRUE(render("bannerLogo").isEmpty());
  EXPECT_TRUE(render(BannerCustomization::ComponentItem()).isEmpty());
  EXPECT_THAT(platform.printer->take(), IsEmpty());
  TestScreen unbound(render("tabs:necessary,marketing"));  // shows the defaults
  EXPECT_EQ(find(unbound, "switch N").value + find(unbound, "switch M").value, "onoff");
  EXPECT_FALSE(find(unbound, "switch M").isEnabled);
}

// The golden pictures check the default texts.
TEST_F(RenderersTest, UseTheSitesTexts) {
  site = customization("", "", R"(,"preferencesButton":"m","savePreference":"s","privacyPolicyURLText":"p",
      "cookiePolicyURLText":"c","TACURLText":"t","doNotSellURLText":"n","dsrURLText":"d",
      "necessaryTitle":"N","necessary":"n","statisticsTitle":"S","statistics":"s","preferencesTitle":"P",
      "preferences":"p","preferenceTitle":"x","marketingTitle":"M","marketing":"m","doNotSellLabelText":"D",
      "doNotSellDescription":"d")");
  site.urls = URLs{{"privacyPolicy", "x"},
                   {"cookiePolicy", "x"},
                   {"termsAndConditions", "x"},
                   {"dsrForm", "x"},
                   {"empty", ""}};
  const auto table = tableOf<2>("banner/texts.txt");
  for (const auto& [component, shown] : table) {
    auto item = components(component).front();
    if (item.tabs) item.tabs->front().showCategoryDescription = true;
    EXPECT_EQ(TestScreen(render(item)).list(), shown);
  }
  EXPECT_EQ(linkLabel("seeALL of-it", texts), "Seeall Of-it");
  site.urls.reset();
  EXPECT_EQ(TestScreen(render("links:privacyPolicy,doNotSellMyData")).list(), "link n");
  EXPECT_TRUE(render("links:privacyPolicy").isEmpty());
}

}  // namespace
}  // namespace TalvoConsentSDK

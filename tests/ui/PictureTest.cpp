// Compares whole screens, as text, with the files in tests/golden/pictures.

#include "testing/fakes/TextPicture.h"
#include "tests/support/Golden.h"
#include "tests/ui/BannerTesting.h"

namespace TalvoConsentSDK {
namespace {

const Services services = parsed<Services>(R"({"libraries":[
    {"category":"marketing","vendor":"Zeta"},
    {"category":"Marketing","vendor":"Acme","name":"short","fullName":"Acme pixel","domain":"acme.example",
     "description":"Counts","version":"2"},
    {"category":"marketing","vendor":"Acme","name":"Acme tag"}],
  "services":[{"id":"Acme","processingCompanyName":"Acme Ltd","processingCompanyLocation":"",
     "DTOProbableEmails":"dpo@acme.example","privacyPolicyURL":"acme.example/privacy"}]})");

ConsentBannerView banner(const Customization& site) {
  return {site, services, std::nullopt, parsed<BasicConsent>(R"({"marketing":["Acme"]})"), {}};
}

void expectPicture(const std::string& name, const std::string& drawn) {
  expectGolden(TALVO_TEST_DATA "/golden/pictures/" + name + ".txt", drawn);
}

TEST(PictureTest, ShowsEveryScreen) {
  const std::string links = "privacyPolicy,cookiePolicy,termsAndConditions,doNotSell,doNotSellMyData,dsr,x,y";
  const std::string buttons = "acceptAll,rejectAll,managePreferences,-,preferences,savePreferences,showALL";
  Customization site =
      customization("bannerLogo closeButton title description links:" + links + " buttons:" + buttons,
                    "title tabs: buttons:savePreferences closeButton");
  site.urls = URLs{{"privacyPolicy", "x"}, {"cookiePolicy", "x"}, {"termsAndConditions", "x"},
                   {"doNotSell", "x"},     {"dsrForm", "x"},      {"x", "x"}};
  site.components->mainScreen->back().buttons->at(3).id.reset();
  site.resources.emplace().mainLogoUrl = "https://site.example/logo.png";
  site.components->secondaryScreen->at(1).tabs->front().showCategoryDescription = true;
  const ConsentBannerView view = banner(site);
  expectPicture("main-bottom", textPicture(bannerComposition(view.view(), site)));
  view.handleMainAction("preferences");
  expectPicture("preferences", textPicture(view.body()));
  view.showVendorDetail(services.groupedByVendor("marketing").front());
  expectPicture("vendor", textPicture(view.body()));

  site.settings.positioning = "tOp";
  site.settings.isShowBlurBackground = true;
  site.components->mainScreen = components("title closeButton buttons:rejectAll");
  expectPicture("main-top-backdrop", textPicture(bannerComposition(banner(site).view(), site)));

  site.components.reset();
  const ConsentBannerView bare = banner(site);
  std::string all = textPicture(bare.body());
  bare.handleMainAction("preferences");
  all += textPicture(bare.body());
  bare.showVendorDetail(services.groupedByVendor("marketing").back());
  expectPicture("without-components", all + textPicture(bare.body()));
}

TEST(PictureTest, LeavesNoHoles) {
  Customization site =
      customization("", "title description tabs:statistics,marketing tabs:necessary buttons:-,-,-,a",
                    R"(,"statisticsTitle":" ","marketingTitle":"","marketing":" ","necessary":"")");
  site.messages.bannerMessages.title = site.messages.bannerMessages.mainMessage = " ";
  auto& items = *site.components->secondaryScreen;
  for (const std::size_t absent : {0U, 1U, 2U}) items.back().buttons->at(absent).id.reset();
  items[2].tabs->front().showCategoryDescription = true;
  items[3].tabs->front().services = false;
  std::string all;
  for (const std::optional<Services>& shown : {std::optional(services), std::optional<Services>()}) {
    const ConsentBannerView view(site, shown, {}, {}, {});
    view.handleMainAction("preferences");
    all += textPicture(view.body());
  }
  expectPicture("odd-rows", all);
}

}  // namespace
}  // namespace TalvoConsentSDK

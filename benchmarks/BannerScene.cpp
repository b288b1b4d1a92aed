#include "benchmarks/BannerScene.h"

#include <algorithm>
#include <cstdlib>

#include "TalvoConsentSDK/ui/ConsentBannerPresenter.h"

namespace TalvoConsentBenchmarks {

using namespace TalvoConsentSDK;

namespace {

BannerCustomization::ComponentItem component(const char* id) {
  BannerCustomization::ComponentItem item;
  item.id = id;
  return item;
}

BannerCustomization::Customization customization() {
  BannerCustomization::Customization result;
  result.colors.background = "#101B36";
  result.colors.buttonBackground = "#2F6BEB";
  result.colors.buttonFontColor = "#FFFFFF";
  result.colors.font = "#E9EEF9";
  result.settings.positioning = "bottom";
  result.settings.isShowBlurBackground = true;
  auto& messages = result.messages.bannerMessages;
  messages.title = "Your privacy, your choice";
  messages.mainMessage = "We and our partners use cookies and similar technologies to run this app.";
  messages.acceptButton = "Accept all";
  messages.rejectButton = "Reject all";

  auto buttons = component("buttons");
  for (const char* id : {"acceptAll", "rejectAll", "savePreferences"}) {
    buttons.buttons.emplace(buttons.buttons.value_or(std::vector<BannerCustomization::ButtonItem>()))
        .emplace_back()
        .id = id;
  }
  BannerCustomization::TabItem tab;
  tab.services = true;
  tab.showCategoryDescription = true;
  auto tabs = component("tabs");
  tabs.tabs = {tab};
  auto& components = result.components.emplace();
  components.mainScreen = {component("title"), component("description"), buttons};
  components.secondaryScreen = {component("closeButton"), component("title"), tabs, buttons};
  return result;
}

Services catalogue(std::size_t vendorCount) {
  Services services;
  auto& libraries = services.libraries.emplace();
  for (std::size_t i = 0; i < vendorCount; ++i) {
    auto& service = libraries.emplace_back();
    std::string number = std::to_string(i);
    number.insert(0, 6 - number.size(), '0');
    service.id = "service-" + number;
    service.name = "Advertising " + number;
    service.category = "marketing";
    service.vendor = "Vendor " + number;
  }
  return services;
}

}  // namespace

ConsentBannerView makeBanner(std::size_t vendorCount) {
  const ConsentBannerView banner(customization(), catalogue(vendorCount), std::nullopt, std::nullopt, {});
  banner.handleMainAction("preferences");
  return banner;
}

BannerScene::BannerScene(std::size_t vendorCount) : window_(TextSettings()) {
  const ConsentBannerView banner = makeBanner(vendorCount);
  controller_ = std::make_shared<HostingController>(bannerComposition(banner.view(), banner.customization()));
  QObject::connect(
      &window_, &QQuickWindow::frameSwapped, &window_, [this] { ++framesPresented_; }, Qt::DirectConnection);
  window_.resize(390, 844);
  ViewEnvironment environment;
  environment.textMeasurer = std::make_shared<QtTextMeasurer>(TextSettings());
  environment.reducesMotion = true;  // what is measured is over with its first frame
  window_.setController(controller_, environment);
  window_.show();
  presentFrame();
  settle();
}

void BannerScene::presentFrame() {
  const int before = framesPresented_;
  while (framesPresented_ == before) QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
}

void BannerScene::settle() {
  do {
    QCoreApplication::processEvents();
  } while (window_.isBusy());
}

void BannerScene::use(Role role, const std::string& name) {
  const auto& elements = controller_->accessibleElements();
  const auto control = std::ranges::find_if(elements, [&](const AccessibleElement& each) {
    return each.isControl() && each.role == role && each.name == name;
  });
  if (control == elements.end() || !controller_->activate(control->id)) std::abort();
}

void BannerScene::scroll(double distance) {
  controller_->scroll({195, 300}, distance);
}

}  // namespace TalvoConsentBenchmarks

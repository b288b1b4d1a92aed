#include "benchmarks/BannerScene.h"

#include <algorithm>
#include <cstdlib>

#include "TalvoConsentSDK/ui/ConsentBannerPresenter.h"

#include "benchmarks/Documents.h"

namespace TalvoConsentBenchmarks {

using namespace TalvoConsentSDK;
using namespace TalvoConsentSDK::platform;
using namespace TalvoConsentSDK::view;

BannerScene::BannerScene(std::size_t vendorCount, bool reducesMotion) {
  const ConsentBannerView banner = makeBanner(vendorCount);
  controller_ = std::make_shared<HostingController>(bannerComposition(banner.view(), banner.customization()));
  QObject::connect(
      &window_, &QQuickWindow::frameSwapped, &window_, [this] { ++framesPresented_; }, Qt::DirectConnection);
  window_.resize(390, 844);
  ViewEnvironment environment;
  environment.textMeasurer = std::make_shared<QtTextMeasurer>(TextSettings());
  environment.reducesMotion = reducesMotion;
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

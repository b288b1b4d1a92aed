// Shows a banner from a site's documents, uses its controls, and makes gestures and presses keys. Parts: the
// customization, the catalogue, the stored consent, the configuration, and the choice of window, gestures and
// keys.

#include <chrono>
#include <cmath>
#include <set>

#include "TalvoConsentSDK/ui/ConsentBannerPresenter.h"
#include "TalvoConsentSDK/view/HostingController.h"

#include "fuzz/Fuzzing.h"
#include "testing/fakes/FixedWidthMeasurer.h"
#include "testing/fakes/MemoryPlatform.h"

using namespace TalvoConsentSDK;
using namespace TalvoConsentSDK::platform;
using namespace TalvoConsentSDK::view;
using namespace TalvoConsentSDK::fuzzing;

namespace {

using Clock = HostingController::Clock;

Services defaultCatalogue() {
  Services services;
  auto& libraries = services.libraries.emplace();
  for (const char* vendor : {"A", "B", "C"}) {
    for (const char* category : {"necessary", "Preference", "marketing"}) {
      libraries.emplace_back().vendor = vendor;
      libraries.back().category = category;
    }
  }
  return services;
}

bool isFinite(const Rect& rect) {
  return std::isfinite(rect.x) && std::isfinite(rect.y) && std::isfinite(rect.width) &&
         std::isfinite(rect.height) && rect.width >= 0 && rect.height >= 0;
}

void setEnvironment(HostingController& controller, Choices& choices) {
  constexpr Size sizes[] = {{390, 844}, {320, 568}, {844, 390}, {1, 1}, {0, 0}, {1366, 1024}};
  constexpr double scales[] = {1, 2, 3.1, 0.5};
  ViewEnvironment environment;
  environment.textScale = scales[choices.below(std::size(scales))];
  environment.textMeasurer = std::make_shared<FixedWidthMeasurer>(environment.textScale);
  environment.size = sizes[choices.below(std::size(sizes))];
  environment.safeArea = choices.below(2) == 0 ? SafeArea() : SafeArea{59, 20, 34, 0};
  environment.reducesMotion = choices.below(2) == 1;
  controller.setEnvironment(environment);
}

void checkFrame(HostingController& controller, Clock::time_point now) {
  std::set<std::pair<ElementId, int>> drawn;
  for (const Visual& each : controller.frame(now)) {
    require(isFinite(each.frame) && each.opacity >= 0 && each.opacity <= 1,
            "every drawn shape has a finite frame");
    require(drawn.emplace(each.element, each.part).second, "every drawn shape has a unique identity");
  }
  for (const AccessibleElement& each : controller.accessibleElements()) {
    require(isFinite(each.frame), "every accessible element has a finite frame");
  }
}

class Visit {
 public:
  Visit(std::shared_ptr<FakeWindow> window, Choices& choices)
      : window_(std::move(window)), controller_(*window_->controller), choices_(choices) {}

  // Tries to use up to 40 elements of the screen, one after another. If one leads to another screen, goes on
  // there.
  void useAll() {
    for (std::size_t index = 0; index < 40; ++index) {
      const auto& elements =
          controller_.accessibleElements(index % 8 == 7 ? Layout::Rows::all : Layout::Rows::nearby);
      if (index >= elements.size()) return;
      const AccessibleElement element = elements[index];
      controller_.reveal(element);
      const bool isUsed = controller_.activate(element.id);
      require(!isUsed || element.isControl(), "only controls can be used");
      show();
    }
  }

  void gesture() {
    const Point point{static_cast<double>(choices_.below(64)) * 8,
                      static_cast<double>(choices_.below(64)) * 16};
    switch (choices_.below(5)) {
      case 0:
        controller_.press(static_cast<Key>(choices_.below(11)));
        break;
      case 1:
        controller_.scroll(point, static_cast<double>(choices_.below(256)) * 40 - 5000);
        break;
      case 2:
        controller_.touchBegan(point, now_);
        break;
      case 3:
        controller_.touchMoved(point, now_);
        break;
      default:
        controller_.touchEnded(point, now_);
    }
    controller_.covers(point);
    show();
  }

 private:
  void show() {
    checkFrame(controller_, now_);
    now_ += std::chrono::milliseconds(16);
  }

  const std::shared_ptr<FakeWindow> window_;
  HostingController& controller_;
  Choices& choices_;
  Clock::time_point now_;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Input input(data, size);
  const auto document = JSONDecoder().decode<BannerCustomization>(input.text());
  if (!document || !document->customization) return 0;
  const auto& customization = *document->customization;

  MemoryPlatform platform;
  platform.install();
  const auto services = input.record<std::optional<Services>, Services>(defaultCatalogue());
  const auto consent = input.record<std::optional<BasicConsent>, BasicConsent>();
  const auto configuration = input.record<std::optional<SiteConfiguration>, SiteConfiguration>();
  Choices choices(input.text());

  const auto save = [](const BasicConsent& saved) {
    recoded(saved);
    require(saved.preferences && saved.statistics && saved.marketing && saved.optedIn,
            "a choice covers all categories");
    const bool refusesAll =
        saved.preferences->isNone() && saved.statistics->isNone() && saved.marketing->isNone();
    require(*saved.optedIn || refusesAll, "opting out refuses everything");
  };
  const ConsentBannerView banner(customization, services, configuration, consent,
                                 {[] {}, [] {}, [] {}, save, [] {}});
  const auto presenter = std::make_shared<ConsentBannerPresenter>();
  presenter->show(banner, customization);
  const auto window = platform.scene->windows().at(0);
  setEnvironment(*window->controller, choices);
  Visit visit(window, choices);
  visit.useAll();
  while (!choices.isAtEnd()) visit.gesture();
  banner.handleMainAction("preferences");
  visit.useAll();
  banner.handlePreferencesAction("savePreferences");
  presenter->dismiss();
  window->finishAnimations();
  platform.settle();
  return 0;
}

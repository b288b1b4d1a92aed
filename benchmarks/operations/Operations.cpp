// Ten operations whose instructions are counted. Each is prepared first; the profiler only counts during the
// call of `talvoMeasured`. They use no clock, thread or disk, so the count is always the same.

#include <algorithm>
#include <cstdio>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <utility>

#include "TalvoConsentSDK/TalvoConsentSDK.h"
#include "TalvoConsentSDK/core/ConsentEventManager.h"
#include "TalvoConsentSDK/models/JSONCoding.h"
#include "TalvoConsentSDK/models/ServicesByCategory.h"
#include "TalvoConsentSDK/ui/ConsentBannerPresenter.h"
#include "TalvoConsentSDK/view/HostingController.h"

#include "benchmarks/Documents.h"
#include "testing/fakes/FixedWidthMeasurer.h"
#include "testing/fakes/MemoryPlatform.h"

extern "C" __attribute__((noinline)) void talvoMeasured(const std::function<void()>& operation) {
  operation();
}

namespace TalvoConsentBenchmarks {
namespace {

using namespace TalvoConsentSDK;
using namespace TalvoConsentSDK::platform;
using namespace TalvoConsentSDK::view;
using Operation = std::function<void()>;

constexpr std::size_t vendorCount = 1'000;

void require(bool holds) {
  if (!holds) std::abort();
}

/// A banner on its preferences screen, whose frames are all drawn at one fixed time.
struct Screen {
  Screen() {
    const ConsentBannerView banner = makeBanner(vendorCount);
    controller =
        std::make_shared<HostingController>(bannerComposition(banner.view(), banner.customization()));
    ViewEnvironment environment;
    environment.textMeasurer = std::make_shared<FixedWidthMeasurer>();
    environment.size = {390, 844};
    environment.reducesMotion = true;
    controller->setEnvironment(environment);
  }

  void frame() { require(!controller->frame(HostingController::Clock::time_point()).empty()); }

  void use(Role role, const std::string& name) {
    const auto& elements = controller->accessibleElements();
    const auto control = std::ranges::find_if(elements, [&](const AccessibleElement& each) {
      return each.isControl() && each.role == role && each.name == name;
    });
    require(control != elements.end() && controller->activate(control->id));
    frame();
  }

  std::shared_ptr<HostingController> controller;
};

// Returns a screen with the marketing category open.
std::shared_ptr<Screen> openScreen() {
  auto screen = std::make_shared<Screen>();
  screen->frame();
  screen->use(Role::expander, "Marketing");
  return screen;
}

std::string customizationText() {
  BannerCustomization document;
  document.bannerType = "native";
  document.customization = makeBanner(1).customization();
  return JSONEncoder().encode(document).value();
}

Operation decodeServices() {
  return [text = JSONEncoder().encode(fullCatalogue(vendorCount)).value()] {
    require(JSONDecoder().decode<Services>(text).has_value());
  };
}

Operation encodeServices() {
  return [services = fullCatalogue(vendorCount)] { require(JSONEncoder().encode(services).has_value()); };
}

Operation submitConsent() {
  const auto platform = std::make_shared<MemoryPlatform>();
  platform->install();
  platform->session->answer("GET", "https://service.example/public/cookies/site/configurations", 200, "{}");
  platform->session->answer("POST", "https://service.example/public/cookie-consent/site", 200,
                            R"({"id":"1"})");
  const auto client = CookiesSDK::createInstance("https://service.example", "site");
  platform->settle();
  return [platform, client] {
    bool isDone = false;
    client->submitConsent(BasicConsent::acceptAll(),
                          [&](const Result<ConsentResponse>& r) { isDone = r.has_value(); });
    platform->settle();
    require(isDone && client->getConsent());
  };
}

Operation triggerEvents() {
  const auto manager = std::make_shared<ConsentEventManager>();
  for (int i = 0; i < 100; ++i) {
    manager->addListener(ConsentEvent::consentSent,
                         std::make_shared<ConsentEventClosureCallback>([] {}, [] {}));
  }
  return [manager] { manager->trigger(ConsentEvent::consentSent); };
}

const std::map<std::string, Operation (*)()>& operations() {
  static const std::map<std::string, Operation (*)()> all{
      {"decode-customization",
       []() -> Operation {
         return [text = customizationText()] {
           require(JSONDecoder().decode<BannerCustomization>(text).has_value());
         };
       }},
      {"decode-services", &decodeServices},
      {"encode-services", &encodeServices},
      {"index-categories",
       []() -> Operation {
         return [services = fullCatalogue(vendorCount)] {
           require(ServicesByCategory(services).servicesByCategory().size() == 4);
         };
       }},
      {"group-vendors",
       []() -> Operation {
         return [services = fullCatalogue(vendorCount)] {
           require(services.groupedByVendor("marketing").size() == vendorCount / 4);
         };
       }},
      {"trigger-events", &triggerEvents},
      {"submit-consent", &submitConsent},
      {"show-preferences", []() -> Operation { return [] { Screen().frame(); }; }},
      {"switch-vendor",
       []() -> Operation { return [screen = openScreen()] { screen->use(Role::toggle, "Vendor 000000"); }; }},
      {"scroll-vendors",
       []() -> Operation {
         return [screen = openScreen()] {
           for (int i = 0; i < 10; ++i) {
             screen->controller->scroll({195, 300}, 100);
             screen->frame();
           }
         };
       }},
  };
  return all;
}

}  // namespace
}  // namespace TalvoConsentBenchmarks

/// Runs the operation named by the argument; lists the operations if there is none.
int main(int argc, char* argv[]) {
  const auto& all = TalvoConsentBenchmarks::operations();
  if (argc < 2) {
    for (const auto& [name, make] : all) std::puts(name.c_str());
    return 0;
  }
  const auto entry = all.find(argv[1]);
  if (entry == all.end()) {
    std::fprintf(stderr, "No operation is called %s\n", argv[1]);
    return 2;
  }
  const auto operation = entry->second();
  operation();  // work done on first use does not count
  talvoMeasured(operation);
  return 0;
}

#pragma once

// The banner of a shipped site on a surface of a phone's size.

#include <chrono>
#include <memory>
#include <string>

#include "TalvoConsentSDK/models/BannerCustomization.h"
#include "TalvoConsentSDK/models/Services.h"
#include "TalvoConsentSDK/ui/ConsentBannerPresenter.h"

#include "adapters/draw/ConsentSurface.h"

#include "testing/draw/Rasterizer.h"
#include "tests/support/Testing.h"

namespace TalvoConsentSDK {

inline std::string siteFile(const std::string& name) {
  const std::string text = contentOf(TALVO_SHIPPED_SITES "/" + name);
  EXPECT_FALSE(text.empty()) << name;
  return filled(text, {{"{{base}}", "https://service.example"}});
}

/// Shows the banner of the demo site on the installed platform.
inline void showSite(ConsentBannerPresenter& presenter, const std::string& language,
                     const std::string& customization = {}) {
  const auto document = parsed<BannerCustomization>(
      customization.empty() ? siteFile("demo/customization." + language + ".json") : customization);
  const ConsentBannerView banner(
      *document.customization, parsed<Services>(siteFile("demo/services." + language + ".json")), {}, {}, {});
  presenter.show(banner, *document.customization);
}

class ShownSurface {
 public:
  explicit ShownSurface(SurfaceOptions options = {}, const std::string& language = "en",
                        const std::string& customization = {})
      : time(std::chrono::hours(1)),
        surface(completed(std::move(options))),
        screen(780, 1688, {0.8F, 0.82F, 0.84F}) {
    fakes.session->answer("GET", "https://service.example/sites/demo/logo.png", 200,
                          siteFile("demo/logo.png"));
    Platform platform;
    platform.urlSession = fakes.session;
    platform.mainActor = fakes.mainActor;
    platform.background = fakes.background;
    platform.printer = fakes.printer;
    surface.addTo(platform);
    Platform::install(platform);
    showSite(*presenter, language, customization);
  }

  /// Draws frames until nothing moves, for at most two seconds of the surface's clock. Returns the number of
  /// frames.
  int settle() {
    int frames = 0;
    for (; surface.needsFrame() && frames < 125; ++frames) frame();
    return frames;
  }

  void frame() {
    fakes.settle();
    time += std::chrono::milliseconds(16);
    list = surface.frame();
    screen.apply(list);
  }

  const SurfaceElement* find(view::Role role, const std::string& name) {
    for (const SurfaceElement& each : surface.accessibleElements()) {
      if (each.role == role && each.name == name) return &each;
    }
    return nullptr;
  }

  /// Taps the middle of a control.
  bool tap(view::Role role, const std::string& name) {
    const SurfaceElement* const element = find(role, name);
    if (!element) return false;
    const Point place = element->frame.center();
    const bool isTaken = surface.touchBegan(7, place.x, place.y);
    frame();
    return surface.touchEnded(7, place.x, place.y) && isTaken;
  }

  MemoryPlatform fakes;
  const std::shared_ptr<ConsentBannerPresenter> presenter = std::make_shared<ConsentBannerPresenter>();
  std::chrono::steady_clock::time_point time;
  ConsentSurface surface;
  Rasterizer screen;
  DrawList list;  // the last one

 private:
  SurfaceOptions completed(SurfaceOptions options) {
    options.size = {780, 1688, 2};
    options.now = [this] { return time; };
    return options;
  }
};

}  // namespace TalvoConsentSDK

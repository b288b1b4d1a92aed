#pragma once

// The banner of a shipped site over a window of a phone's size.

#include <QFile>

#include "TalvoConsentSDK/models/BannerCustomization.h"
#include "TalvoConsentSDK/models/Services.h"
#include "TalvoConsentSDK/ui/ConsentBannerPresenter.h"

#include "adapters/qt/QtMainActor.h"
#include "adapters/qt/QtPlatform.h"

#include "tests/qt/QtTesting.h"

namespace TalvoConsentSDK {

inline std::string siteFile(const std::string& name) {
  QFile file(QString::fromStdString(TALVO_SHIPPED_SITES "/" + name));
  EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << name;
  return file.readAll().replace("{{base}}", "https://service.example").toStdString();
}

class ShownBanner {
 public:
  ShownBanner(const std::string& customization, const std::string& services, const QtOptions& options = {},
              const std::string& language = "en") {
    host.setColor(QColor(0xF4, 0xF5, 0xF6));
    host.resize(390, 844);
    host.show();
    Platform platform;
    platform.mainActor = std::make_shared<QtMainActor>();
    platform.background = platform.mainActor;
    session = std::make_shared<FakeURLSession>(platform.mainActor);
    session->answer("GET", "https://service.example/sites/demo/logo.png", 200, siteFile("demo/logo.png"));
    platform.urlSession = session;
    addQtWindows(platform, options);
    Platform::install(platform);
    const auto document = parsed<BannerCustomization>(customization);
    const ConsentBannerView banner(*document.customization, parsed<Services>(services), {}, {}, {}, language);
    ConsentBannerPresenter::shared()->show(banner, *document.customization);
    EXPECT_TRUE(isStill());
  }

  /// Waits until nothing moves. Returns false if something still moves after five seconds.
  bool isStill() {
    return spinUntil([&] { return surface().stage().opacity() == 1 && !surface().isBusy(); });
  }

  OverlaySurface& surface() { return *overlays().front(); }

  QQuickWindow host;
  std::shared_ptr<FakeURLSession> session;
};

}  // namespace TalvoConsentSDK

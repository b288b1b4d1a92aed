// The banner as it is painted, compared with the files in tests/golden/images. After an intended change run
// with TALVO_UPDATE_GOLDEN=1, which rewrites the files and fails, and look at the pictures before keeping
// them.

#include <QFile>
#include <cstdlib>

#include "TalvoConsentSDK/models/BannerCustomization.h"
#include "TalvoConsentSDK/models/Services.h"
#include "TalvoConsentSDK/ui/ConsentBannerPresenter.h"

#include "adapters/qt/QtMainActor.h"
#include "adapters/qt/QtPlatform.h"

#include "tests/qt/QtTesting.h"

namespace TalvoConsentSDK {
namespace {

constexpr QSize imageSize(195, 422);  // half a pixel a point, which keeps the files small

std::string siteFile(const std::string& name) {
  QFile file(QString::fromStdString(TALVO_SHIPPED_SITES "/" + name));
  EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << name;
  return file.readAll().replace("{{base}}", "https://service.example").toStdString();
}

const struct {
  const char* name;
  std::string site;
  std::string language;
  std::string tapped;  // a control to tap first, if any
} cases[] = {
    {"main_en", "demo", ".en.json", ""},
    {"main_ar", "demo", ".ar.json", ""},
    {"preferences_en", "demo", ".en.json", "Manage preferences"},
    {"minimal", "minimal", ".en.json", ""},
};

class BannerImagesTest : public TestWithParam<std::decay_t<decltype(cases[0])>> {};
INSTANTIATE_TEST_SUITE_P(All, BannerImagesTest, ValuesIn(cases), byName);

TEST_P(BannerImagesTest, AreAsKept) {
  const auto& [name, site, language, tapped] = GetParam();
  QQuickWindow host;
  host.setColor(QColor(0xF4, 0xF5, 0xF6));
  host.resize(390, 844);
  host.show();
  Platform platform;
  platform.mainActor = std::make_shared<QtMainActor>();
  platform.background = platform.mainActor;
  const auto session = std::make_shared<FakeURLSession>(platform.mainActor);
  session->answer("GET", "https://service.example/sites/demo/logo.png", 200, siteFile("demo/logo.png"));
  platform.urlSession = session;
  addQtWindows(platform, {});
  Platform::install(platform);

  const auto document = parsed<BannerCustomization>(siteFile(site + "/customization" + language));
  const auto services = parsed<Services>(site == "demo" ? siteFile("demo/services" + language) : "{}");
  const ConsentBannerView banner(*document.customization, services, {}, {}, {});
  ConsentBannerPresenter::shared()->show(banner, *document.customization);
  OverlaySurface& surface = *overlays().front();
  const auto isAtRest = [&] { return surface.stage().opacity() == 1 && !surface.isBusy(); };
  EXPECT_TRUE(spinUntil(isAtRest));
  for (const auto& each : std::vector(surface.controller()->accessibleElements())) {
    if (each.name == tapped) surface.controller()->activate(each.id);
  }
  EXPECT_TRUE(spinUntil(isAtRest));
  EXPECT_THAT(session->unexpected(), IsEmpty());
  const QImage image =
      surface.grabWindow().scaled(imageSize, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);

  const QString file = QStringLiteral(TALVO_TEST_DATA "/golden/images/%1.png").arg(QLatin1String(name));
  if (std::getenv("TALVO_UPDATE_GOLDEN")) {
    EXPECT_TRUE(image.save(file));
    FAIL() << "rewritten: " << file.toStdString();
  }
  const QImage expected(file);
  ASSERT_EQ(expected.size(), imageSize);
  double difference = 0;  // the mean of a channel, of 255
  double unlike = 0;      // the share of pixels that nobody would call equal
  constexpr int pixels = imageSize.width() * imageSize.height();
  for (int i = 0; i < pixels; ++i) {
    const QColor p = image.pixelColor(i % imageSize.width(), i / imageSize.width());
    const QColor q = expected.pixelColor(i % imageSize.width(), i / imageSize.width());
    const int apart =
        std::abs(p.red() - q.red()) + std::abs(p.green() - q.green()) + std::abs(p.blue() - q.blue());
    difference += apart / 3.0 / pixels;
    unlike += apart > 72 ? 1.0 / pixels : 0;
  }
  const std::string actual = ::testing::TempDir() + name + ".png";
  if (difference > 1 || unlike > 0.005) image.save(QString::fromStdString(actual));
  EXPECT_LE(difference, 1) << "see " << actual;
  EXPECT_LE(unlike, 0.005) << "see " << actual;
}

}  // namespace
}  // namespace TalvoConsentSDK

// Compares the painted banner with the files in tests/golden/images. After an intended change, run this with
// TALVO_UPDATE_GOLDEN=1, which rewrites the files and fails, and check the pictures before you commit them.

#include <cstdlib>

#include "tests/qt/ShownBanner.h"

namespace TalvoConsentSDK {
namespace {

constexpr QSize imageSize(195, 422);  // half a pixel per point, to keep the files small

// Compares what is on screen with the picture of this name.
void expectImage(OverlaySurface& surface, const std::string& name) {
  const QImage image =
      surface.grabWindow().scaled(imageSize, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);

  const QString file =
      QStringLiteral(TALVO_TEST_DATA "/golden/images/%1.png").arg(QString::fromStdString(name));
  if (std::getenv("TALVO_UPDATE_GOLDEN")) {
    EXPECT_TRUE(image.save(file));
    FAIL() << "rewritten: " << file.toStdString();
  }
  const QImage expected(file);
  ASSERT_EQ(expected.size(), imageSize);
  double difference = 0;  // mean difference of a colour channel, from 0 to 255
  double unlike = 0;      // share of pixels that are visibly different
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

class BannerImagesTest : public TestWithParam<std::array<std::string, 7>> {};
INSTANTIATE_TEST_SUITE_P(All, BannerImagesTest, ValuesIn(tableOf<7>("images/banners.txt")), byFirstCell);

TEST_P(BannerImagesTest, MatchesTheGoldenImages) {
  const auto& [name, site, language, tapped, tabs, scale, contrast] = GetParam();
  QtOptions options;
  options.textScale = std::stod(scale);
  options.highContrast = contrast == "high";
  ShownBanner banner(siteFile(site + "/customization." + language + ".json"),
                     site == "demo" ? siteFile("demo/services." + language + ".json") : "{}", options);
  OverlaySurface& surface = banner.surface();
  for (const auto& each : std::vector(surface.controller()->accessibleElements())) {
    if (each.name == tapped) surface.controller()->activate(each.id);
  }
  for (int i = 0; i < std::stoi(tabs); ++i) surface.controller()->press(Key::tab);
  EXPECT_TRUE(banner.isStill());
  EXPECT_THAT(banner.session->unexpected(), IsEmpty());
  expectImage(surface, name);
}

class ScriptImagesTest : public TestWithParam<std::array<std::string, 9>> {};
INSTANTIATE_TEST_SUITE_P(All, ScriptImagesTest, ValuesIn(tableOf<9>("texts/banners.txt")), byFirstCell);

TEST_P(ScriptImagesTest, MatchesTheGoldenImages) {
  const auto& [name, title, message, accept, reject, manage, privacy, cookies, rights] = GetParam();
  auto document = parsed<BannerCustomization>(siteFile("demo/customization.en.json"));
  auto& messages = document.customization->messages.bannerMessages;
  messages.title = title;
  messages.mainMessage = message;
  messages.acceptButton = accept;
  messages.rejectButton = reject;
  messages.preferencesButton = manage;
  messages.privacyPolicyURLText = privacy;
  messages.cookiePolicyURLText = cookies;
  messages.dsrURLText = rights;
  ShownBanner banner(written(document), "{}");
  expectImage(banner.surface(), "main_" + name);
}

}  // namespace
}  // namespace TalvoConsentSDK

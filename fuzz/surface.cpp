// Shows a banner from a site's documents on a surface with a damaged font, and uses it. The parts are those
// of the target `banner`: the customization, the catalogue, the stored consent, the configuration, and
// choices, which here damage the font, too.

#include <chrono>
#include <fstream>
#include <iterator>

#include "TalvoConsentSDK/ui/ConsentBannerPresenter.h"

#include "adapters/draw/ConsentSurface.h"
#include "adapters/draw/SystemFonts.h"

#include "fuzz/Fuzzing.h"
#include "testing/draw/Rasterizer.h"
#include "testing/fakes/MemoryPlatform.h"

using namespace TalvoConsentSDK;
using namespace TalvoConsentSDK::fuzzing;

namespace {

constexpr SurfaceSize sizes[] = {{780, 1688, 2}, {320, 568, 1}, {1688, 780, 2},
                                 {1, 1, 1},      {0, 0, 1},     {999, 333, 1.5}};

const std::string& wholeFont() {
  static const std::string bytes = [] {
    const auto files = SystemFonts().family("Inter");
    require(!files.empty(), "the font Inter is installed");
    std::ifstream stream(files.front().path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(stream), {});
  }();
  return bytes;
}

FontSource damagedFont(Choices& choices) {
  std::string bytes = wholeFont();
  const std::size_t count = choices.below(16);
  for (std::size_t i = 0; i < count && !choices.isAtEnd(); ++i) {
    // Most tables are found through the first bytes.
    const std::size_t place = (choices.below(256) * 256 + choices.below(256)) * choices.below(8);
    bytes[(place + choices.below(256)) % bytes.size()] = static_cast<char>(choices.below(256));
  }
  return {"damaged", std::make_shared<const std::string>(std::move(bytes))};
}

class Visit {
 public:
  explicit Visit(Choices& choices)
      : choices_(choices),
        surface_({.size = sizes[choices.below(std::size(sizes))],
                  .settings = {.textScale = choices.below(2) == 0 ? 1 : 3.1},
                  .fonts = {damagedFont(choices)},
                  .usesSystemFonts = choices.below(4) == 0,
                  .maxTextureSize = choices.below(2) == 0 ? 512 : 2048,
                  .now = [this] { return now_; }}) {}

  ConsentSurface& surface() { return surface_; }

  void step() {
    const double x = static_cast<double>(choices_.below(64)) * 16;
    const double y = static_cast<double>(choices_.below(64)) * 32;
    switch (choices_.below(10)) {
      case 0:
        surface_.keyPressed(static_cast<SurfaceKey>(choices_.below(20)));
        break;
      case 1:
        surface_.scrolled(x, y, static_cast<double>(choices_.below(256)) * 40 - 5000);
        break;
      case 2:
        surface_.touchBegan(1, x, y);
        break;
      case 3:
        surface_.touchMoved(1, x, y);
        break;
      case 4:
        surface_.touchEnded(1, x, y);
        break;
      case 5:
        surface_.resize(sizes[choices_.below(std::size(sizes))]);
        break;
      case 6:
        surface_.forgetTextures();
        screen_ = Rasterizer(1, 1, {});
        break;
      case 7:
        surface_.stickMoved(ControllerStick::left, x / 512 - 1, y / 1024 - 1);
        break;
      default: {
        const auto& elements = surface_.accessibleElements();
        if (elements.empty()) break;
        surface_.perform(elements[choices_.below(elements.size())].id, SurfaceAction::activate);
      }
    }
    frame();
  }

  void frame() {
    now_ += std::chrono::milliseconds(40);
    screen_.apply(surface_.frame());
  }

 private:
  Choices& choices_;
  std::chrono::steady_clock::time_point now_;
  ConsentSurface surface_;
  Rasterizer screen_{1, 1, {}};
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Input input(data, size);
  const auto document = JSONDecoder().decode<BannerCustomization>(input.text());
  if (!document || !document->customization) return 0;
  MemoryPlatform fakes;
  const auto services = input.record<std::optional<Services>, Services>();
  const auto consent = input.record<std::optional<BasicConsent>, BasicConsent>();
  const auto configuration = input.record<std::optional<SiteConfiguration>, SiteConfiguration>();
  Choices choices(input.text());

  Visit visit(choices);
  Platform platform;
  platform.urlSession = fakes.session;
  platform.mainActor = fakes.mainActor;
  platform.background = fakes.background;
  platform.printer = fakes.printer;
  visit.surface().addTo(platform);
  Platform::install(platform);
  const auto presenter = std::make_shared<ConsentBannerPresenter>();
  const ConsentBannerView banner(*document->customization, services, configuration, consent,
                                 {[] {}, [] {}, [] {}, [](const BasicConsent&) {}, [] {}});
  presenter->show(banner, *document->customization);
  visit.frame();
  while (!choices.isAtEnd()) visit.step();
  presenter->dismiss();
  for (int i = 0; i < 10; ++i) visit.frame();
  fakes.settle();
  return 0;
}

// Measures the list after a switch on the preferences screen of a surface, for growing numbers of vendors.

#include <algorithm>
#include <chrono>
#include <memory>
#include <string>

#include <benchmark/benchmark.h>

#include "TalvoConsentSDK/ui/ConsentBannerPresenter.h"

#include "adapters/draw/ConsentSurface.h"

#include "benchmarks/Documents.h"
#include "testing/fakes/FakeURLSession.h"
#include "testing/fakes/ManualExecutor.h"

namespace TalvoConsentBenchmarks {
namespace {

using namespace TalvoConsentSDK;

/// A banner with its marketing category open, on a clock of its own.
class SurfaceScene {
 public:
  explicit SurfaceScene(std::size_t vendors)
      : surface_(
            {.size = {780, 1688, 2}, .settings = {.reducesMotion = true}, .now = [this] { return time_; }}) {
    Platform platform;
    // A surface without a session prints a line, which the results must not contain.
    platform.urlSession = std::make_shared<FakeURLSession>(std::make_shared<ManualExecutor>());
    surface_.addTo(platform);
    Platform::install(platform);
    const ConsentBannerView banner = makeBanner(vendors);
    ConsentBannerPresenter::shared()->show(banner, banner.customization());
    settle();
    surface_.perform(find(view::Role::expander, "Marketing").id, SurfaceAction::activate);
    settle();
    const auto& elements = surface_.accessibleElements();
    const auto category = std::ranges::find_if(elements, [](const auto& each) {
      return each.role == view::Role::toggle && each.name == "Marketing";
    });
    const auto vendor = std::find_if(std::next(category), elements.end(),
                                     [](const auto& each) { return each.role == view::Role::toggle; });
    surface_.perform(vendor->id, SurfaceAction::reveal);
    settle();
    place_ = find(view::Role::toggle, vendor->name).frame.center();
  }
  ~SurfaceScene() {
    ConsentBannerPresenter::shared()->dismiss();
    settle();
  }

  std::size_t switchVendor() {
    surface_.touchBegan(1, place_.x, place_.y);
    surface_.touchEnded(1, place_.x, place_.y);
    time_ += std::chrono::milliseconds(16);
    return surface_.frame().vertices.size();
  }

  void settle() {
    while (surface_.needsFrame()) {
      time_ += std::chrono::milliseconds(16);
      surface_.frame();
    }
  }

 private:
  SurfaceElement find(view::Role role, const std::string& name) {
    for (const SurfaceElement& each : surface_.accessibleElements()) {
      if (each.role == role && each.name == name) return each;
    }
    throw std::runtime_error("There is no element " + name);
  }

  std::chrono::steady_clock::time_point time_;
  ConsentSurface surface_;
  platform::Point place_;
};

void listAfterSwitch(benchmark::State& state) {
  SurfaceScene scene(static_cast<std::size_t>(state.range(0)));
  for (auto _ : state) {
    benchmark::DoNotOptimize(scene.switchVendor());
    state.PauseTiming();
    scene.settle();
    state.ResumeTiming();
  }
}
BENCHMARK(listAfterSwitch)->Name("listAfterSwitch")->Arg(10)->Arg(1'000);

}  // namespace
}  // namespace TalvoConsentBenchmarks

BENCHMARK_MAIN();

// What the banner's preferences cost as their vendors grow: from a person's action to the frame that shows
// it.

#include <QGuiApplication>

#include <benchmark/benchmark.h>

#include "benchmarks/BannerScene.h"

namespace TalvoConsentBenchmarks {
namespace {

using TalvoConsentSDK::Role;

std::size_t vendorCount(const benchmark::State& state) {
  return static_cast<std::size_t>(state.range(0));
}

void openCategory(benchmark::State& state) {
  BannerScene scene(vendorCount(state));
  for (auto _ : state) {
    scene.use(Role::expander, "Marketing");
    scene.presentFrame();
    state.PauseTiming();
    scene.settle();
    scene.use(Role::expander, "Marketing");
    scene.settle();
    state.ResumeTiming();
  }
}

void switchVendor(benchmark::State& state) {
  BannerScene scene(vendorCount(state));
  scene.use(Role::expander, "Marketing");
  scene.settle();
  for (auto _ : state) {
    scene.use(Role::toggle, "Vendor 000000");
    scene.presentFrame();
    state.PauseTiming();
    scene.settle();
    state.ResumeTiming();
  }
}

void switchCategory(benchmark::State& state) {
  BannerScene scene(vendorCount(state));
  scene.use(Role::expander, "Marketing");
  scene.settle();
  for (auto _ : state) {
    scene.use(Role::toggle, "Marketing");
    scene.presentFrame();
    state.PauseTiming();
    scene.settle();
    state.ResumeTiming();
  }
}

void scrollHundredFrames(benchmark::State& state) {
  BannerScene scene(vendorCount(state));
  scene.use(Role::expander, "Marketing");
  scene.settle();
  double direction = 1;
  for (auto _ : state) {
    for (int frame = 0; frame < 100; ++frame) {
      scene.scroll(direction * 3);
      scene.presentFrame();
    }
    direction = -direction;
  }
}

BENCHMARK(openCategory)->Arg(10)->Arg(1'000)->Arg(10'000)->Unit(benchmark::kMillisecond);
BENCHMARK(switchVendor)->Arg(10)->Arg(1'000)->Arg(10'000)->Unit(benchmark::kMillisecond);
BENCHMARK(switchCategory)->Arg(10)->Arg(1'000)->Arg(10'000)->Unit(benchmark::kMillisecond);
BENCHMARK(scrollHundredFrames)->Arg(10)->Arg(1'000)->Arg(10'000)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace TalvoConsentBenchmarks

int main(int argc, char* argv[]) {
  const QGuiApplication application(argc, argv);
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}

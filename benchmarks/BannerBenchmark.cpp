// Measures the preferences screen for growing numbers of vendors, from a user's action to the frame that
// shows its effect.

#include <QGuiApplication>
#include <QQuickWindow>
#include <memory>
#include <vector>

#include <benchmark/benchmark.h>

#include "TalvoConsentSDK/ui/ConsentBannerPresenter.h"
#include "TalvoConsentSDK/view/Animations.h"
#include "TalvoConsentSDK/view/Layout.h"
#include "TalvoConsentSDK/view/Visual.h"

#include "adapters/qt/QtText.h"
#include "adapters/qt/VisualMount.h"

#include "benchmarks/BannerScene.h"
#include "benchmarks/Documents.h"

namespace TalvoConsentBenchmarks {
namespace {

using namespace TalvoConsentSDK;
using namespace TalvoConsentSDK::platform;
using namespace TalvoConsentSDK::view;

std::size_t vendorCount(const benchmark::State& state) {
  return static_cast<std::size_t>(state.range(0));
}

// The preferences without a window, with the marketing category open, so that each stage can be measured
// alone.
struct Stages {
  explicit Stages(std::size_t vendors)
      : banner(makeBanner(vendors)),
        root(bannerComposition(banner.view(), banner.customization())),
        layout(tree, environment, animations) {
    environment.textMeasurer = std::make_shared<QtTextMeasurer>(TextSettings());
    environment.size = {390, 844};
    environment.reducesMotion = true;
    tree.render(root);
    layout.run({});
    for (const AccessibleElement& each : collectAccessibleElements(tree, environment.controlScale())) {
      if (each.role == Role::expander && each.name == "Marketing") performAction(*each.control);
    }
    tree.render(root);
    layout.run({});
  }

  std::vector<Visual> flatten() {
    animations.setHasMotion(false);
    animations.beginFrame({});
    return visuals(tree, environment, {{}, {}, layout.scrollRegions()}, animations);
  }

  const ConsentBannerView banner;
  const AnyView root;
  ViewEnvironment environment;
  ElementTree tree{[] {}};
  Animations animations{tree.memory()};
  Layout layout;
};

// Renders the views of the screen, including rows near the visible ones, into a new tree.
void render(benchmark::State& state) {
  const ConsentBannerView banner = makeBanner(vendorCount(state));
  const AnyView root = bannerComposition(banner.view(), banner.customization());
  for (auto _ : state) {
    ElementTree tree([] {});
    tree.render(root);
    benchmark::DoNotOptimize(tree.root().children.size());
  }
}

void compare(benchmark::State& state) {
  Stages stages(vendorCount(state));
  for (auto _ : state) stages.tree.render(stages.root);
}

void layOut(benchmark::State& state) {
  Stages stages(vendorCount(state));
  for (auto _ : state) {
    forgetAllSizes(stages.tree.root());
    stages.layout.run({});
  }
}

// Makes the items for everything on the screen, in a hidden window.
void mount(benchmark::State& state) {
  Stages stages(vendorCount(state));
  const std::vector<Visual> all = stages.flatten();
  QQuickWindow window;
  for (auto _ : state) {
    VisualMount visualMount(*window.contentItem());
    visualMount.update(all);
  }
}

// From the records to the first frame of the preferences.
void firstFrame(benchmark::State& state) {
  for (auto _ : state) {
    const auto scene = std::make_unique<BannerScene>(vendorCount(state));
    benchmark::DoNotOptimize(scene.get());
  }
}

// Opens a category and measures some frames after others that are not measured.
void openFrames(benchmark::State& state, bool reducesMotion, int before, int measured) {
  BannerScene scene(vendorCount(state), reducesMotion);
  for (auto _ : state) {
    if (before > 0) state.PauseTiming();
    scene.use(Role::expander, "Marketing");
    for (int i = 0; i < before; ++i) scene.presentFrame();
    if (before > 0) state.ResumeTiming();
    for (int i = 0; i < measured; ++i) scene.presentFrame();
    state.PauseTiming();
    scene.settle();
    scene.use(Role::expander, "Marketing");
    scene.settle();
    state.ResumeTiming();
  }
}

// Opens a category at once, up to the first frame.
void openCategory(benchmark::State& state) {
  openFrames(state, true, 0, 1);
}

// The first frame of the motion.
void beginToOpen(benchmark::State& state) {
  openFrames(state, false, 0, 1);
}

// The next five frames.
void goOnOpening(benchmark::State& state) {
  openFrames(state, false, 1, 5);
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
  scene.scroll(10'000);  // afterwards the card has its full height, and only the list moves
  scene.settle();
  // At an end nothing would move, and no frame would be presented. So leave it, and scroll up and down.
  scene.scroll(-100);
  scene.settle();
  constexpr int turn = 20;
  for (auto _ : state) {
    for (int frame = 0; frame < 100; ++frame) {
      scene.scroll(frame / turn % 2 == 0 ? 3 : -3);
      scene.presentFrame();
    }
    state.PauseTiming();
    scene.scroll(-3.0 * turn);
    scene.presentFrame();
    scene.settle();
    state.ResumeTiming();
  }
}

void vendorCounts(benchmark::internal::Benchmark* entry) {
  entry->Arg(10)
      ->Arg(200)
      ->Arg(1'000)
      ->Arg(10'000)
      ->Unit(benchmark::kMillisecond)
      ->MeasureProcessCPUTime()
      ->UseRealTime();
}

BENCHMARK(render)->Apply(&vendorCounts);
BENCHMARK(compare)->Apply(&vendorCounts);
BENCHMARK(layOut)->Name("layout")->Apply(&vendorCounts);
BENCHMARK(mount)->Apply(&vendorCounts);
BENCHMARK(firstFrame)->Apply(&vendorCounts);
BENCHMARK(openCategory)->Apply(&vendorCounts);
BENCHMARK(beginToOpen)->Apply(&vendorCounts);
BENCHMARK(goOnOpening)->Apply(&vendorCounts);
BENCHMARK(switchVendor)->Apply(&vendorCounts);
BENCHMARK(switchCategory)->Apply(&vendorCounts);
BENCHMARK(scrollHundredFrames)->Apply(&vendorCounts);

}  // namespace
}  // namespace TalvoConsentBenchmarks

int main(int argc, char* argv[]) {
  const QGuiApplication application(argc, argv);
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}

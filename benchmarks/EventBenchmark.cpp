// Measures an event with no, one and many listeners, compared with calling the listeners directly.

#include <memory>
#include <vector>

#include <benchmark/benchmark.h>

#include "TalvoConsentSDK/core/ConsentEventManager.h"

namespace TalvoConsentBenchmarks {
namespace {

using namespace TalvoConsentSDK;
using benchmark::State;

std::vector<std::shared_ptr<ConsentEventCallback>> listeners(const State& state, int& calls) {
  std::vector<std::shared_ptr<ConsentEventCallback>> result;
  for (auto i = state.range(0); i > 0; --i) {
    result.push_back(std::make_shared<ConsentEventClosureCallback>([&calls] { ++calls; }, [] {}));
  }
  return result;
}

void trigger(State& state) {
  int calls = 0;
  ConsentEventManager manager;
  for (auto& each : listeners(state, calls)) manager.addListener(ConsentEvent::consentSent, std::move(each));
  for (auto _ : state) manager.trigger(ConsentEvent::consentSent);
  if (calls != state.range(0) * state.iterations()) state.SkipWithError("a listener was not called");
}

void callDirectly(State& state) {
  int calls = 0;
  const auto all = listeners(state, calls);
  for (auto _ : state) {
    for (const auto& each : all) each->onSuccess();
    benchmark::ClobberMemory();
  }
}

BENCHMARK(trigger)->Name("events/ours")->Arg(0)->Arg(1)->Arg(100);
BENCHMARK(callDirectly)->Name("events/direct-calls")->Arg(0)->Arg(1)->Arg(100);

}  // namespace
}  // namespace TalvoConsentBenchmarks

BENCHMARK_MAIN();

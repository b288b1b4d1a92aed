// A host with its own main loop and no toolkit. Reads the stored consent, runs a vendor's code while the
// consent allows it, listens to events and submits a choice.
//
//   plain URL [STORE]

#include <cstdio>
#include <vector>

#include <TalvoConsentSDK/TalvoConsentSDK.h>
#include <adapters/posix/PosixPlatform.h>

using namespace TalvoConsentSDK;

int main(int count, char** arguments) {
  if (count < 2) return std::fprintf(stderr, "usage: plain URL [STORE]\n"), 2;

  // The loop that drains this queue is the main loop.
  const auto mainQueue = std::make_shared<MainQueue>();
  Platform::install(makePosixPlatform(mainQueue, count > 2 ? arguments[2] : defaultStoreFile()));
  const auto sdk = CookiesSDK::createInstance(arguments[1], "demo");

  const auto stored = sdk->getConsent();
  std::printf("stored: %s\n", stored ? std::string(rawValue(stored->status())).c_str() : "nothing");

  // Both closures run in `drain` below, at this launch and at every later one.
  const Subscription ads = sdk->gate().on(
      ConsentCategory::marketing, "Adlantern", [] { std::printf("Adlantern: started\n"); },
      [] { std::printf("Adlantern: stopped\n"); });

  std::vector<Subscription> listeners;
  for (const auto& [event, name] : RawValues<ConsentEvent>::table) {
    const auto print = [text = std::string(name)] { std::printf("event: %s\n", text.c_str()); };
    listeners.push_back(sdk->addEventListener(event, print));
  }

  bool isDone = false;
  bool hasSucceeded = false;
  const BasicConsent choice(ConsentValue::all(), ConsentValue::none(), ConsentValue::partial({"Adlantern"}));
  sdk->submitConsent(choice, [&](const Result<ConsentResponse>& result) {
    // This runs on a background thread; the host's state belongs to the main thread.
    mainQueue->post([&, result] {
      hasSucceeded = result.has_value();
      std::printf("%s\n", result ? ("submitted: " + result->id).c_str() : result.error().what());
      isDone = true;
    });
  });

  while (!isDone) {
    mainQueue->wait(std::chrono::milliseconds(100));  // a real host does its own work here
    mainQueue->drain();
  }
  const auto now = sdk->getConsent();
  std::printf("stored: %s\n", now ? std::string(rawValue(now->status())).c_str() : "nothing");
  return hasSucceeded ? 0 : 1;
}

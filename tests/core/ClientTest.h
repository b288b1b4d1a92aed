#pragma once

// Fixture for tests of the client on a platform in memory. The client is a singleton, so each test needs its
// own process.

#include "TalvoConsentSDK/TalvoConsentSDK.h"
#include "TalvoConsentSDK/models/FullConsent.h"

#include "tests/support/Testing.h"

namespace TalvoConsentSDK {

class ClientTest : public ::testing::Test {
 protected:
  ClientTest() { platform.install(); }
  ~ClientTest() override { EXPECT_THAT(platform.session->unexpected(), IsEmpty()); }

  /// Prepares a reply to "METHOD path".
  void answer(const std::string& method, const std::string& path, int status, const std::string& reply) {
    platform.session->answer(method, root + path, status, reply);
  }

  /// Creates the client for site "s" with this configuration.
  std::shared_ptr<CookiesSDK> create(const std::string& configuration = "{}") {
    answer("GET", "cookies/s/configurations", 200, configuration);
    return CookiesSDK::createInstance("https://service.example/", "s");
  }

  /// Creates the client, runs the work of its creation, and drops the requests and lines recorded so far.
  std::shared_ptr<CookiesSDK> created(const std::string& configuration = "{}") {
    const auto client = create(configuration);
    platform.settle();
    platform.printer->take();
    newRequests();
    return client;
  }

  /// "METHOD path" of the requests since the last call, followed by " for USER" if the consent has a user.
  Texts newRequests() {
    Texts texts;
    const auto all = platform.session->requests();
    for (; seen < all.size(); ++seen) {
      const auto sent = JSONDecoder().decode<FullConsent>(all[seen].body.value_or("{}"));
      texts.push_back(all[seen].method + " " + all[seen].url.text().substr(root.size()));
      if (sent && sent->userId) texts.back() += " for " + *sent->userId;
    }
    return texts;
  }

  /// Reads and writes the stored values of the site. `key` is "basicConsent", "originalConsent" or "userId";
  /// "none" stands for no value.
  std::string stored(const std::string& key) const {
    const auto data = platform.store->data(prefix + key + ".s").value();
    return data ? data->bytes : platform.store->string(prefix + key + ".s").value().value_or("none");
  }
  void store(const std::string& key, const std::string& value) {
    if (value == "none") return;
    const std::string full = prefix + key + ".s";
    (key == "userId" ? platform.store->set(full, value) : platform.store->set(full, Data(value))).value();
  }

  /// Appends an event, and the thread on which it happened, to `trace`.
  void note(const std::string& what) {
    trace.push_back(what + (platform.mainActor->isCurrent()    ? " on main"
                            : platform.background->isCurrent() ? " in background"
                                                               : " elsewhere"));
    if (throws) throw WithoutText();
  }
  void noteEvents(CookiesSDK& client) {
    for (const auto& [event, name] : RawValues<ConsentEvent>::table) {
      client.addEventListener(event,
                              std::make_shared<ConsentEventClosureCallback>(
                                  [this, text = std::string(name)] { note(text); }, [this] { note("!"); }));
    }
  }

  /// Ends the banner that `show` shows in the way of a row of tests/golden/banner/ends.txt.
  void endBanner(const std::string& taps, const std::function<void()>& show) {
    const auto scenes = platform.application->scenes;
    if (taps == "nowhere") platform.application->scenes.clear();
    platform.scene->state =
        taps == "background" ? ActivationState::background : ActivationState::foregroundActive;
    show();
    platform.settle();
    platform.application->scenes = scenes;
    if (taps == "another") CookiesSDK::getInstance()->showBanner({}, {}, {}, {});
    for (const std::string& each : split(taps, ';')) {
      const std::string name = each.substr(each.find(' ') + 1);
      EXPECT_TRUE(name == each || platform.scene->windows().at(0)->tap(Role::button, name)) << each;
    }
    platform.settle();
    if (taps == "another") platform.scene->windows().back()->tap(Role::button, "Close");
    platform.settle();
    for (const auto& window : platform.scene->windows()) window->finishAnimations();
    platform.settle();
  }

  const std::string root = "https://service.example/public/";
  const std::string prefix = "com.talvo.consent.";
  MemoryPlatform platform;
  Texts trace;
  bool throws = false;  // makes `note` throw
  std::size_t seen = 0;
};

}  // namespace TalvoConsentSDK

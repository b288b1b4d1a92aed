#include <cstdlib>
#include <thread>

#include <gtest/gtest.h>
#include <unistd.h>

#include "adapters/posix/PosixPlatform.h"

#include "tests/conformance/URLSessionConformance.h"
#include "tests/support/LoopbackServer.h"

namespace TalvoConsentSDK {
namespace {

TEST(PosixPlatform, KeepsConsentsInThePersonsOwnFolder) {
  const struct {
    const char *xdg, *home, *expected;
  } cases[] = {
      {"/data", "/home/me", "/data/adapter_tests/consent.sqlite"},
      {"", "/home/me", "/home/me/.local/share/adapter_tests/consent.sqlite"},
      {"relative", "/home/me", "/home/me/.local/share/adapter_tests/consent.sqlite"},
  };
  for (const auto& [xdg, home, expected] : cases) {
    setenv("XDG_DATA_HOME", xdg, 1);
    setenv("HOME", home, 1);
    EXPECT_EQ(defaultStoreFile(), expected);
  }
}

TEST(PosixPlatform, PutsTheRealSeamsTogether) {
  LoopbackServer server([](auto&, auto& connection) { connection.reply(200, "x"); });
  const auto folder = std::filesystem::path(::testing::TempDir()) / ("posix-" + std::to_string(getpid()));
  const auto store = folder / "consent.sqlite";
  const auto mainQueue = std::make_shared<MainQueue>();
  const Platform platform = makePosixPlatform(mainQueue, store);

  EXPECT_EQ(await(*platform.urlSession, makeRequest("GET", server.url("/"))).value().body, "x");

  ASSERT_TRUE(platform.userDefaults->set("key", std::string("value")));
  EXPECT_EQ(platform.userDefaults->string("key").value(), "value");
  EXPECT_TRUE(std::filesystem::exists(store));

  std::thread::id ran;
  platform.background->post([&] {
    const auto here = std::this_thread::get_id();
    platform.mainActor->post([&, here] { ran = here; });
  });
  ASSERT_TRUE(mainQueue->wait(std::chrono::seconds(30)));
  EXPECT_EQ(mainQueue->drain(), 1U);
  EXPECT_NE(ran, std::this_thread::get_id());
  std::filesystem::remove_all(folder);
}

}  // namespace
}  // namespace TalvoConsentSDK

#include <cstdlib>
#include <filesystem>

#include <gtest/gtest.h>

#include "adapters/posix/PosixPlatform.h"

#include "testing/LoopbackServer.h"
#include "testing/URLSessionConformance.h"
#include "tests/adapters/SQLiteTest.h"

namespace TalvoConsentSDK {
namespace {

TEST(PosixPlatform, KeepsConsentsInThePersonsOwnFolder) {
  const bool isCopy = std::getenv("COPY_OF_THE_TEST");
  if (isCopy) std::filesystem::remove(std::filesystem::read_symlink("/proc/self/exe"));
  for (const auto& [xdg, home, expected] : tableOf<3>("platform/folders.txt")) {
    setenv("XDG_DATA_HOME", xdg.c_str(), 1);
    setenv("HOME", home.c_str(), 1);
    EXPECT_EQ(defaultStoreFile(), expected);
  }
  const auto runCopy =
      "folder=$(mktemp -d) && cp /proc/$PPID/exe $folder/adapter_tests && COPY_OF_THE_TEST=1 "
      "$folder/adapter_tests --gtest_filter=PosixPlatform.* && rmdir $folder";
  EXPECT_TRUE(isCopy || std::system(runCopy) == 0) << "after an update replaced the program";
}

TEST(PosixPlatformCache, IsBesideTheStoreUnlessItIsOff) {
  const TemporaryStore temporary;
  const fs::path store = temporary.file, cache = store.string() + ".cache";
  const LoopbackServer server([](const auto&, auto& connection) {
    connection.reply(200, "{}", "Content-Type: application/json\r\nCache-Control: max-age=60\r\n");
  });
  for (const bool isOn : {false, true, true}) {
    const Platform platform =
        makePosixPlatform(std::make_shared<MainQueue>(), store, {}, isOn ? 1'000'000 : 0);
    for (int request = 0; request < 2; ++request)
      EXPECT_TRUE(await(*platform.urlSession, makeRequest("GET", server.url("/"))));
    EXPECT_EQ(fs::exists(cache), isOn);
  }
  EXPECT_EQ(server.requests().size(), 3U) << "two without the cache, and one with it";
  EXPECT_EQ(fs::status(cache).permissions(), fs::perms(0600));
}

}  // namespace
}  // namespace TalvoConsentSDK

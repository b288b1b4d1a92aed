#include <cstdlib>
#include <filesystem>

#include <gtest/gtest.h>

#include "adapters/posix/PosixPlatform.h"

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
  const bool isCopy = std::getenv("COPY_OF_THE_TEST");
  if (isCopy) std::filesystem::remove(std::filesystem::read_symlink("/proc/self/exe"));
  for (const auto& [xdg, home, expected] : cases) {
    setenv("XDG_DATA_HOME", xdg, 1);
    setenv("HOME", home, 1);
    EXPECT_EQ(defaultStoreFile(), expected);
  }
  const auto runCopy =
      "folder=$(mktemp -d) && cp /proc/$PPID/exe $folder/adapter_tests && COPY_OF_THE_TEST=1 "
      "$folder/adapter_tests --gtest_filter=PosixPlatform.* && rmdir $folder";
  EXPECT_TRUE(isCopy || std::system(runCopy) == 0) << "after an update replaced the program";
}

}  // namespace
}  // namespace TalvoConsentSDK

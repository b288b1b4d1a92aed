#include <cstdlib>

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
  for (const auto& [xdg, home, expected] : cases) {
    setenv("XDG_DATA_HOME", xdg, 1);
    setenv("HOME", home, 1);
    EXPECT_EQ(defaultStoreFile(), expected);
  }
}

}  // namespace
}  // namespace TalvoConsentSDK

#pragma once

// Compares a test's output with a file. After an intended change, run the test with TALVO_UPDATE_GOLDEN=1,
// which rewrites the file and fails, and review the difference before you commit it.

#include <cstdlib>
#include <fstream>

#include "tests/support/Testing.h"

namespace TalvoConsentSDK {

inline void expectGolden(const std::string& file, const std::string& actual) {
  if (std::getenv("TALVO_UPDATE_GOLDEN")) {
    std::ofstream(file) << actual;
    FAIL() << "rewrote " << file;
  }
  EXPECT_EQ(actual, contentOf(file)) << file << " (see tests/support/Golden.h)";
}

}  // namespace TalvoConsentSDK

#pragma once

// How often a test repeats a check that must always hold.

#include <cstdlib>

namespace TalvoConsentSDK {

/// The number in the environment variable `name`, which scripts/stress sets, or `otherwise`.
inline int repetitions(const char* name, int otherwise) {
  const char* const text = std::getenv(name);
  return text ? std::atoi(text) : otherwise;
}

}  // namespace TalvoConsentSDK

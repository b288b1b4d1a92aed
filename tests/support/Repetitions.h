#pragma once

// How often a test does what must hold every time.

#include <cstdlib>

namespace TalvoConsentSDK {

/// The number in the environment variable `name`, by which scripts/stress asks for more, or `otherwise`.
inline int repetitions(const char* name, int otherwise) {
  const char* const text = std::getenv(name);
  return text ? std::atoi(text) : otherwise;
}

}  // namespace TalvoConsentSDK

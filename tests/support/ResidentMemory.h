#pragma once

// Measures the memory of a process, by default this one.

#include <fstream>
#include <string>

#include <malloc.h>

namespace TalvoConsentSDK {

#ifdef __has_feature
#define TALVO_SANITIZED (__has_feature(address_sanitizer) || __has_feature(thread_sanitizer))
#else
#define TALVO_SANITIZED 0  // the presets use sanitizers with clang only
#endif

/// The size in KiB: now for "VmRSS:", the largest since `startOfPeak` for "VmHWM:". Returns 0 if the system
/// does not report it, and under a sanitizer, because sanitizers keep freed memory.
inline long residentMemory(const char* which = "VmRSS:", const std::string& process = "self") {
  std::ifstream status("/proc/" + process + "/status");
  for (std::string word; !TALVO_SANITIZED && status >> word;)
    if (word == which && status >> word) return std::stol(word);
  return 0;
}

/// Gives free memory back to the system, if the C library can, and starts a new peak. Returns the current
/// size in KiB.
inline long startOfPeak() {
#ifdef __GLIBC__
  malloc_trim(0);
#endif
  std::ofstream("/proc/self/clear_refs") << 5;
  return residentMemory();
}

}  // namespace TalvoConsentSDK

#pragma once

// How much memory a process holds, as a rule this one.

#include <fstream>
#include <string>

#include <malloc.h>

namespace TalvoConsentSDK {

#ifdef __has_feature
#define TALVO_SANITIZED (__has_feature(address_sanitizer) || __has_feature(thread_sanitizer))
#else
#define TALVO_SANITIZED 0  // the presets sanitize with clang only
#endif

/// In KiB: "VmRSS:" for now, "VmHWM:" for the most there was since `startOfPeak`. 0 where the system does not
/// tell, and under a sanitizer, which keeps what is freed and more.
inline long residentMemory(const char* which = "VmRSS:", const std::string& process = "self") {
  std::ifstream status("/proc/" + process + "/status");
  for (std::string word; !TALVO_SANITIZED && status >> word;)
    if (word == which && status >> word) return std::stol(word);
  return 0;
}

/// What there is, with nothing kept for later where the C library can be told so.
inline long startOfPeak() {
#ifdef __GLIBC__
  malloc_trim(0);
#endif
  std::ofstream("/proc/self/clear_refs") << 5;
  return residentMemory();
}

}  // namespace TalvoConsentSDK

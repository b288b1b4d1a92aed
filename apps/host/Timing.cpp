#include "apps/host/Timing.h"

#include <chrono>
#include <ctime>
#include <fstream>
#include <mutex>
#include <optional>
#include <sstream>
#include <string>

#if defined(__linux__)
#include <unistd.h>
#endif

#include "TalvoConsentSDK/base/NeverDestroyed.h"

namespace TalvoConsentHost {

namespace {

using Clock = std::chrono::steady_clock;
using TalvoConsentSDK::JSONValue;
using TalvoConsentSDK::neverDestroyed;

struct Moments {
  std::mutex lock;
  std::optional<Clock::time_point> requested;
  std::optional<Clock::time_point> firstFrame;      // of the first banner of the process
  std::clock_t firstFrameWork = 0;                  // the processor time until then
  std::optional<Clock::time_point> requestedFrame;  // of the banner requested last
  std::optional<Clock::time_point> switchTap;
  std::optional<Clock::time_point> switchFrame;

  static Moments& instance() {
    static Moments& moments = neverDestroyed<Moments>();
    return moments;
  }
};

// The time at which the kernel started this process, to a hundredth of a second.
std::optional<Clock::time_point> processStart() {
#if defined(__linux__)
  std::ifstream file("/proc/self/stat");
  std::string text;
  std::getline(file, text);
  std::istringstream fields(text.substr(text.rfind(')') + 2));
  std::string field;
  constexpr int startTime = 22;  // fields count from 1; the first field after the name is the third
  for (int i = 3; i <= startTime; ++i) fields >> field;
  timespec now{};
  if (clock_gettime(CLOCK_BOOTTIME, &now) != 0 || field.empty()) return std::nullopt;
  const double started = std::stod(field) / static_cast<double>(sysconf(_SC_CLK_TCK));
  const double age = static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) / 1e9 - started;
  return Clock::now() - std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(age));
#else
  return std::nullopt;
#endif
}

JSONValue milliseconds(const std::optional<Clock::time_point>& from,
                       const std::optional<Clock::time_point>& to) {
  if (!from || !to || *to < *from) return {};
  return std::chrono::duration<double, std::milli>(*to - *from).count();
}

}  // namespace

void Timing::bannerRequested() {
  Moments& moments = Moments::instance();
  const std::scoped_lock guard(moments.lock);
  moments.requested = Clock::now();
  moments.requestedFrame.reset();
}

// Frames may be presented on a render thread.
void Timing::framePresented() {
  Moments& moments = Moments::instance();
  const std::scoped_lock guard(moments.lock);
  const auto now = Clock::now();
  if (!moments.firstFrame) {
    moments.firstFrame = now;
    moments.firstFrameWork = std::clock();
  }
  if (moments.requested && !moments.requestedFrame) moments.requestedFrame = now;
  if (moments.switchTap && !moments.switchFrame) moments.switchFrame = now;
}

void Timing::switchTapped() {
  Moments& moments = Moments::instance();
  const std::scoped_lock guard(moments.lock);
  moments.switchTap = Clock::now();
  moments.switchFrame.reset();
}

TalvoConsentSDK::JSONObject Timing::report() {
  Moments& moments = Moments::instance();
  const std::scoped_lock guard(moments.lock);
  return {
      {"process_to_first_frame_ms", milliseconds(processStart(), moments.firstFrame)},
      {"first_frame_processor_ms", static_cast<double>(moments.firstFrameWork) * 1e3 / CLOCKS_PER_SEC},
      {"show_to_first_frame_ms", milliseconds(moments.requested, moments.requestedFrame)},
      {"last_switch_to_frame_ms", milliseconds(moments.switchTap, moments.switchFrame)},
  };
}

}  // namespace TalvoConsentHost

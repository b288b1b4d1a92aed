#include "TalvoConsentSDK/platform/StoreDeadline.h"

#include <algorithm>

#include "TalvoConsentSDK/base/Deadline.h"

namespace TalvoConsentSDK {
namespace platform {

namespace {

thread_local std::optional<std::chrono::steady_clock::time_point> current;

}  // namespace

StoreDeadline::StoreDeadline(std::chrono::milliseconds limit) : outer_(current) {
  const auto deadline = deadlineAfter(limit);
  current = outer_ ? std::min(*outer_, deadline) : deadline;
}

StoreDeadline::~StoreDeadline() {
  current = outer_;
}

std::chrono::milliseconds StoreDeadline::remaining(std::chrono::milliseconds otherwise) {
  if (!current) return otherwise;
  const auto left =
      std::chrono::duration_cast<std::chrono::milliseconds>(*current - std::chrono::steady_clock::now());
  return std::max(std::chrono::milliseconds(0), std::min(left, otherwise));
}

}  // namespace platform
}  // namespace TalvoConsentSDK

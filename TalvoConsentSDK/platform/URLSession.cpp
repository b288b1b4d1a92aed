#include "TalvoConsentSDK/platform/URLSession.h"

#include <algorithm>
#include <atomic>
#include <memory>
#include <utility>

#include "TalvoConsentSDK/base/ASCII.h"

namespace TalvoConsentSDK {
namespace platform {

bool HeaderNameLess::operator()(std::string_view a, std::string_view b) const noexcept {
  const auto lower = [](char c) { return lowercased(c); };
  return std::ranges::lexicographical_compare(a, b, {}, lower, lower);
}

PlatformError cancelledError() {
  return {"URLSession", -1, "The request was cancelled"};
}

void runOnce(URLSession& session, URLRequest request, URLSession::Completion completion) {
  struct Report {
    URLSession::Completion completion;
    std::atomic<bool> hasArrived = false;

    void deliver(Result<URLResponse> outcome) {
      if (hasArrived.exchange(true)) return;
      const auto taken = std::move(completion);
      taken(std::move(outcome));
    }
  };
  const auto report = std::make_shared<Report>();
  report->completion = std::move(completion);
  try {
    session.run(std::move(request),
                [report](Result<URLResponse> outcome) { report->deliver(std::move(outcome)); });
  } catch (...) {
    report->deliver(Error::current());
  }
}

}  // namespace platform
}  // namespace TalvoConsentSDK

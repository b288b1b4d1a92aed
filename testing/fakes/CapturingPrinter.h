#pragma once

// A printer that records the lines it is given.

#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "TalvoConsentSDK/base/Export.h"
#include "TalvoConsentSDK/platform/Printer.h"

namespace TalvoConsentSDK TALVO_EXPORT {

class CapturingPrinter : public platform::Printer {
 public:
  void print(std::string_view line) override {
    const std::scoped_lock guard(lock_);
    lines_.emplace_back(line);
  }

  /// The lines printed since the last call.
  std::vector<std::string> take() {
    const std::scoped_lock guard(lock_);
    return std::exchange(lines_, {});
  }

 private:
  std::mutex lock_;
  std::vector<std::string> lines_;
};

}  // namespace TalvoConsentSDK

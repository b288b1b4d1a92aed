#include "TalvoConsentSDK/platform/Printer.h"

#include <cstdio>
#include <string>

#include "TalvoConsentSDK/platform/Error.h"
#include "TalvoConsentSDK/platform/Platform.h"

namespace TalvoConsentSDK {

void StandardOutput::print(std::string_view line) {
  std::string text(line);
  text += '\n';
  std::fwrite(text.data(), 1, text.size(), stdout);
  std::fflush(stdout);
}

void print(std::string_view line) noexcept {
  try {
    Platform::current().printer->print(line);
  } catch (...) {  // nobody is left to tell
  }
}

void callHost(const std::function<void()>& code) noexcept {
  try {
    if (code) code();
  } catch (...) {
    print(std::string("⚠️ A callback threw: ") + Error::current().what());
  }
}

}  // namespace TalvoConsentSDK

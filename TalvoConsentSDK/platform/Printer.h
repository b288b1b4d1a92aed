#pragma once

// Where diagnostic lines go. There are no log levels: a line tells of background work that failed or of input
// that could not be used, and nothing else reports it.

#include <functional>
#include <string_view>

#include "TalvoConsentSDK/base/Export.h"

namespace TalvoConsentSDK {
namespace platform TALVO_EXPORT {

/// Receives every diagnostic line. Called from any thread, also while a client is being created: it must not
/// create one itself.
class Printer {
 public:
  virtual ~Printer() = default;

  /// Writes one line. What the library prints is UTF-8 of at most 2 KB without control characters and
  /// changes of direction: they, and bytes that are no UTF-8, come as `\n`, `\u001b` or `\xff`, and a line
  /// that was cut ends in "…".
  virtual void print(std::string_view line) = 0;
};

/// Prints to standard output. The lines of several threads never mix. A line as long as the library's goes
/// out in one write to a file or pipe, so that those of several processes in one pipe do not mix either; a
/// terminal may receive it in several.
class StandardOutput : public Printer {
 public:
  void print(std::string_view line) override;
};

/// Prints any text on the installed platform's printer, as the one line that a printer is promised. What that
/// throws is contained.
TALVO_EXPORT void print(std::string_view line) noexcept;

/// Runs code that a host handed over. What it throws is contained: one line is printed and the caller goes
/// on.
TALVO_EXPORT void callHost(const std::function<void()>& code) noexcept;

/// Asks a seam of the host's. Should it throw, one line is printed and the answer is `otherwise`.
template <class Answer, class Question>
Answer askHost(Answer otherwise, const Question& question) {
  callHost([&] { otherwise = question(); });
  return otherwise;
}

}  // namespace platform
}  // namespace TalvoConsentSDK

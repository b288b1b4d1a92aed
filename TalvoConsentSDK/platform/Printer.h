#pragma once

// Prints diagnostic lines. There are no log levels: a line reports background work that failed or input that
// could not be used, and is the only report of it.

#include <functional>
#include <string_view>

#include "TalvoConsentSDK/base/Export.h"

namespace TalvoConsentSDK {
namespace platform TALVO_EXPORT {

/// Receives every diagnostic line. The library calls it from any thread, even while a client is being
/// created, so a printer must not create a client.
class Printer {
 public:
  virtual ~Printer() = default;

  /// Writes one line. The library passes UTF-8 of at most 2 KB. Control characters, line separators,
  /// characters that change the text's direction, and bytes that are not UTF-8 are escaped, for example as
  /// `\n`, `\u001b` or `\xff`. A line that was cut ends in "…".
  virtual void print(std::string_view line) = 0;
};

/// Prints to standard output. Lines from several threads never mix. A line of at most 2 KB is written to a
/// file or pipe in one piece, so lines from several processes on one pipe do not mix either; a terminal may
/// receive it in several pieces.
class StandardOutput : public Printer {
 public:
  void print(std::string_view line) override;
};

/// Prints any text on the installed platform's printer, escaped and cut to one line as `Printer::print`
/// describes. If the printer throws, the exception is caught.
TALVO_EXPORT void print(std::string_view line) noexcept;

/// Runs host code. If it throws, catches the exception and prints one line.
TALVO_EXPORT void callHost(const std::function<void()>& code) noexcept;

/// Asks one of the host's seams, and returns its answer. If it throws, prints one line and returns
/// `otherwise`.
template <class Answer, class Question>
Answer askHost(Answer otherwise, const Question& question) {
  callHost([&] { otherwise = question(); });
  return otherwise;
}

}  // namespace platform
}  // namespace TalvoConsentSDK

#pragma once

// The consent service as a child process, with a client for it, and other programs that run to their end.

#include <memory>
#include <string>

#include <httplib.h>

#include "testing/ChildProcess.h"
#include "tests/support/Testing.h"

namespace TalvoConsentSDK::testing {

/// Starts the service on a free port of the loopback address and waits until it listens. It is killed at the
/// end unless it was stopped before.
class ConsentServiceProcess {
 public:
  explicit ConsentServiceProcess(Texts options = {});

  /// What it printed when it was ready; empty when it ended instead.
  const std::string& firstLine() const { return firstLine_; }
  std::string url() const;
  std::string process() const { return std::to_string(service_.process()); }

  /// A client of its own per call, that waits so many seconds for a reply.
  std::unique_ptr<httplib::Client> client(int patience = 30) const;

  /// Asks it to end with SIGTERM and returns its exit status, or the number of the signal that ended it,
  /// negated.
  int stop();

 private:
  ChildProcess service_;
  std::string firstLine_;
};

/// Runs a command in the shell. Returns what it printed, and "exit" with its status where that is not 0.
std::string printedBy(const std::string& command);

}  // namespace TalvoConsentSDK::testing

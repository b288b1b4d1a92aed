#pragma once

// Runs the consent service as a child process, and other programs until they end.

#include <memory>
#include <string>

#include <httplib.h>

#include "testing/ChildProcess.h"
#include "tests/support/Testing.h"

namespace TalvoConsentSDK::testing {

/// Starts the service on a free port of the loopback address and waits until it listens. The destructor kills
/// it unless it has been stopped.
class ConsentServiceProcess {
 public:
  explicit ConsentServiceProcess(Texts options = {});

  /// The line that it printed when it was ready; empty if it ended instead.
  const std::string& firstLine() const { return firstLine_; }
  std::string url() const;
  std::string process() const { return std::to_string(service_.process()); }

  /// A new client that waits up to `timeout` seconds for a reply.
  std::unique_ptr<httplib::Client> client(int timeout = 30) const;

  /// Sends SIGTERM. Returns its exit status, or the negated number of the signal that ended it.
  int stop();

 private:
  ChildProcess service_;
  std::string firstLine_;
};

/// Runs a shell command. Returns its output, followed by "exit" and its status if that is not 0.
std::string printedBy(const std::string& command);

}  // namespace TalvoConsentSDK::testing

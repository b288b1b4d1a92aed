#pragma once

// The consent service as a child process, with a client for it.

#include <memory>
#include <string>
#include <vector>

#include <httplib.h>

namespace TalvoConsentSDK::testing {

/// Starts the service on a free port of the loopback address and waits until it listens. It is killed at the
/// end unless it was stopped before.
class ConsentServiceProcess {
 public:
  explicit ConsentServiceProcess(std::vector<std::string> options = {});
  ~ConsentServiceProcess();
  ConsentServiceProcess(const ConsentServiceProcess&) = delete;
  ConsentServiceProcess& operator=(const ConsentServiceProcess&) = delete;

  /// What it printed when it was ready; empty when it ended instead.
  const std::string& firstLine() const { return firstLine_; }
  std::string url() const;
  std::string process() const { return std::to_string(pid_); }

  /// A client of its own per call, that waits so many seconds for a reply.
  std::unique_ptr<httplib::Client> client(int patience = 30) const;

  /// Waits for its end and answers its exit status; the first asks it to end with SIGTERM. A death by signal
  /// is the signal's number, negated.
  int stop();
  int wait();

 private:
  pid_t pid_ = -1;
  std::string firstLine_;
};

}  // namespace TalvoConsentSDK::testing

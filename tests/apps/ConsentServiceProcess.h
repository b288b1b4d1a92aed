#pragma once

// Runs the consent service as a child process, and other programs until they end.

#include <csignal>
#include <cstdio>
#include <memory>

#include <httplib.h>
#include <unistd.h>

#include "testing/ChildProcess.h"
#include "tests/support/Testing.h"

namespace TalvoConsentSDK::testing {

/// Starts the service on a free port of the loopback address and waits until it listens. The destructor kills
/// it unless it has been stopped.
class ConsentServiceProcess {
 public:
  explicit ConsentServiceProcess(Texts options = {})
      : service_([&](const ProcessChannel& parent) {
          options.insert(options.begin(), {TALVO_CONSENT_SERVICE, "--port", "0"});
          std::vector<char*> arguments;
          for (std::string& each : options) arguments.push_back(each.data());
          arguments.push_back(nullptr);
          ::dup2(parent.descriptor(), STDOUT_FILENO);
          ::execv(TALVO_CONSENT_SERVICE, arguments.data());
        }) {
    while (const auto next = service_.channel->receive<char>()) {
      if (next == '\n') break;
      firstLine_ += *next;
    }
  }

  /// The line that it printed when it was ready; empty if it ended instead.
  const std::string& firstLine() const { return firstLine_; }
  std::string url() const { return firstLine_.substr(firstLine_.rfind(' ') + 1); }
  std::string process() const { return std::to_string(service_.process()); }

  /// A new client that waits up to `timeout` seconds for a reply.
  std::unique_ptr<httplib::Client> client(int timeout = 30) const {
    auto client = std::make_unique<httplib::Client>(url());
    client->set_read_timeout(timeout);
    client->enable_server_certificate_verification(false);
    return client;
  }

  /// Sends SIGTERM. Returns its exit status, or the negated number of the signal that ended it.
  int stop() {
    service_.signal(SIGTERM);
    return service_.wait();
  }

 private:
  ChildProcess service_;
  std::string firstLine_;
};

/// Runs a shell command. Returns its output, followed by "exit" and its status if that is not 0.
inline std::string printedBy(const std::string& command) {
  FILE* const output = popen((command + " || echo exit $?").c_str(), "r");
  std::string printed;
  for (int c; (c = std::getc(output)) != EOF;) printed += static_cast<char>(c);
  pclose(output);
  return printed;
}

}  // namespace TalvoConsentSDK::testing

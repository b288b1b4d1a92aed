#include "tests/apps/ConsentServiceProcess.h"

#include <csignal>
#include <cstdio>

#include <unistd.h>

namespace TalvoConsentSDK::testing {

ConsentServiceProcess::ConsentServiceProcess(Texts options)
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

std::string ConsentServiceProcess::url() const {
  return firstLine_.substr(firstLine_.rfind(' ') + 1);
}

std::unique_ptr<httplib::Client> ConsentServiceProcess::client(int timeout) const {
  auto client = std::make_unique<httplib::Client>(url());
  client->set_read_timeout(timeout);
  client->enable_server_certificate_verification(false);
  return client;
}

int ConsentServiceProcess::stop() {
  service_.signal(SIGTERM);
  return service_.wait();
}

std::string printedBy(const std::string& command) {
  FILE* const output = popen((command + " || echo exit $?").c_str(), "r");
  std::string printed;
  for (int c; (c = std::getc(output)) != EOF;) printed += static_cast<char>(c);
  pclose(output);
  return printed;
}

}  // namespace TalvoConsentSDK::testing

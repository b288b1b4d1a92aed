#include "tests/apps/ConsentServiceProcess.h"

#include <array>

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

namespace TalvoConsentSDK::testing {

ConsentServiceProcess::ConsentServiceProcess(std::vector<std::string> options) {
  std::vector<std::string> words{TALVO_CONSENT_SERVICE, "--port", "0"};
  words.insert(words.end(), options.begin(), options.end());
  std::vector<char*> arguments;
  for (std::string& each : words) arguments.push_back(each.data());
  arguments.push_back(nullptr);

  std::array<int, 2> output{};
  if (pipe2(output.data(), O_CLOEXEC) != 0) return;
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, output[1], STDOUT_FILENO);
  posix_spawn(&pid_, TALVO_CONSENT_SERVICE, &actions, nullptr, arguments.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  close(output[1]);
  for (char c = 0; read(output[0], &c, 1) == 1 && c != '\n';) firstLine_ += c;
  close(output[0]);
}

ConsentServiceProcess::~ConsentServiceProcess() {
  if (pid_ <= 0) return;
  kill(pid_, SIGKILL);
  wait();
}

std::string ConsentServiceProcess::url() const {
  return firstLine_.substr(firstLine_.rfind(' ') + 1);
}

std::unique_ptr<httplib::Client> ConsentServiceProcess::client(int patience) const {
  auto client = std::make_unique<httplib::Client>(url());
  client->set_read_timeout(patience);
  client->enable_server_certificate_verification(false);
  return client;
}

int ConsentServiceProcess::stop() {
  kill(pid_, SIGTERM);
  return wait();
}

int ConsentServiceProcess::wait() {
  int status = 0;
  waitpid(pid_, &status, 0);
  pid_ = -1;
  return WIFSIGNALED(status) ? -WTERMSIG(status) : WEXITSTATUS(status);
}

}  // namespace TalvoConsentSDK::testing

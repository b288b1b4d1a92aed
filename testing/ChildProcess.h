#pragma once

// Runs part of a test in a child process, for tests that share a file between processes, kill a process, or
// let it exit while it is working.

#include <csignal>
#include <cstdio>
#include <exception>
#include <functional>
#include <optional>

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

namespace TalvoConsentSDK {

/// One end of the connection between a process and its child. The destructor closes it.
class ProcessChannel {
 public:
  explicit ProcessChannel(int end) : end_(end) {}
  ~ProcessChannel() { close(); }
  ProcessChannel(const ProcessChannel&) = delete;

  /// Writes a value, which must not contain pointers. Returns false if the other process has closed its end.
  template <class T>
  bool send(const T& value) const {
    return ::send(end_, &value, sizeof value, MSG_NOSIGNAL) == static_cast<ssize_t>(sizeof value);
  }

  /// Waits for the next value. Returns nothing once the other process has closed its end.
  template <class T>
  std::optional<T> receive() const {
    T value{};
    const bool isWhole =
        ::recv(end_, &value, sizeof value, MSG_WAITALL) == static_cast<ssize_t>(sizeof value);
    return isWhole ? std::optional(value) : std::nullopt;
  }

  int descriptor() const { return end_; }

  void close() {
    if (end_ >= 0) ::close(end_);
    end_ = -1;
  }

 private:
  int end_;
};

/// The constructor forks, so only the calling thread continues in the child. Create it while no other
/// thread holds a lock that the child needs.
class ChildProcess {
 public:
  /// The child runs `work` and exits with 0, or with 1 if an expectation failed in the child or `work` threw
  /// a `std::exception`. If the test had failed before the fork, the child always exits with 0.
  explicit ChildProcess(const std::function<void(const ProcessChannel& parent)>& work) {
    int ends[2] = {-1, -1};
    EXPECT_EQ(::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends), 0);
    std::fflush(nullptr);  // otherwise both processes would write the buffered output
    process_ = ::fork();
    if (process_ == 0) {
      ::close(ends[0]);
      run(work, ProcessChannel(ends[1]));
    }
    ::close(ends[1]);
    channel.emplace(ends[0]);
  }

  /// Kills the child unless `wait` was called.
  ~ChildProcess() {
    if (process_ <= 0) return;
    signal(SIGKILL);
    wait();
  }
  ChildProcess(const ChildProcess&) = delete;

  pid_t process() const { return process_; }
  void signal(int number) const { ::kill(process_, number); }

  /// Waits for the child to end. Returns its exit status, or the negated number of the signal that ended it.
  int wait() {
    int status = -1;
    ::waitpid(process_, &status, 0);
    process_ = -1;
    return WIFSIGNALED(status) ? -WTERMSIG(status) : WEXITSTATUS(status);
  }

  std::optional<ProcessChannel> channel;

 private:
  [[noreturn]] static void run(const std::function<void(const ProcessChannel&)>& work,
                               const ProcessChannel& parent) {
    const bool hadFailed = ::testing::Test::HasFailure();
    try {
      work(parent);
    } catch (const std::exception& error) {
      ADD_FAILURE() << error.what();
    }
    std::fflush(nullptr);
    ::_exit(::testing::Test::HasFailure() && !hadFailed);
  }

  pid_t process_ = -1;
};

}  // namespace TalvoConsentSDK

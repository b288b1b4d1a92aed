#pragma once

// Part of a test in a process of its own: to share a file with it, to kill it, to let it exit while it works.

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

/// One end of the connection between a process and its child. It is closed with the object.
class ProcessChannel {
 public:
  explicit ProcessChannel(int end) : end_(end) {}
  ~ProcessChannel() { close(); }
  ProcessChannel(const ProcessChannel&) = delete;

  /// Writes a value without pointers. Returns whether the other process still has its end.
  template <class T>
  bool send(const T& value) const {
    return ::send(end_, &value, sizeof value, MSG_NOSIGNAL) == static_cast<ssize_t>(sizeof value);
  }

  /// Waits for the next value; nothing once the other process has closed its end.
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

/// Is forked when it is made, so only the calling thread goes on in the child; start it before other threads
/// hold locks.
class ChildProcess {
 public:
  /// The child runs `work` and exits with 0 unless an expectation failed in it, or it threw.
  explicit ChildProcess(const std::function<void(const ProcessChannel& parent)>& work) {
    int ends[2] = {-1, -1};
    EXPECT_EQ(::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends), 0);
    std::fflush(nullptr);  // lest both processes write what stands in the buffers
    process_ = ::fork();
    if (process_ == 0) {
      ::close(ends[0]);
      run(work, ProcessChannel(ends[1]));
    }
    ::close(ends[1]);
    channel.emplace(ends[0]);
  }

  /// Kills the child unless its end was waited for.
  ~ChildProcess() {
    if (process_ <= 0) return;
    signal(SIGKILL);
    wait();
  }
  ChildProcess(const ChildProcess&) = delete;

  pid_t process() const { return process_; }
  void signal(int number) const { ::kill(process_, number); }

  /// Waits for the child's end. Returns its exit status, or the number of the signal that ended it, negated.
  int wait() {
    int status = -1;
    ::waitpid(process_, &status, 0);
    process_ = -1;
    return WIFSIGNALED(status) ? -WTERMSIG(status) : WEXITSTATUS(status);
  }

  /// To the child.
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

#pragma once

// A server that costs a client as little waiting as possible.

#include <atomic>
#include <string>
#include <thread>

namespace TalvoConsentBenchmarks {

/// Answers every HTTP/1.1 request on a port of 127.0.0.1 with status 200 and one JSON object of a kilobyte,
/// which is a consent response too. One thread; connections stay open as long as their clients like.
class QuickServer {
 public:
  QuickServer();
  ~QuickServer();
  QuickServer(const QuickServer&) = delete;
  QuickServer& operator=(const QuickServer&) = delete;

  std::string url() const { return "http://127.0.0.1:" + std::to_string(port_); }

 private:
  void serve();

  std::string reply_;
  int listener_ = -1;
  int poll_ = -1;
  int port_ = 0;
  std::atomic<bool> stop_ = false;
  std::thread thread_;
};

}  // namespace TalvoConsentBenchmarks

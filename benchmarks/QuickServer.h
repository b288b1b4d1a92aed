#pragma once

// A server that answers as fast as possible.

#include <atomic>
#include <string>
#include <thread>

namespace TalvoConsentBenchmarks {

/// Answers every HTTP/1.1 request on a port of 127.0.0.1 with status 200 and a JSON object of one kilobyte,
/// which is also a valid consent response. Uses one thread; connections stay open until their clients close
/// them.
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

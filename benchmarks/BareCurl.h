#pragma once

// Requests on libcurl's multi interface and nothing more: no thread, no rules, no outcomes.

#include <string>
#include <vector>

namespace TalvoConsentBenchmarks {

/// Reuses its easy handles. Aborts on any error.
class BareCurl {
 public:
  /// Sends POST requests with `body`, each on a fresh connection, or GET requests when it is empty.
  BareCurl(std::string url, std::string body);
  ~BareCurl();
  BareCurl(const BareCurl&) = delete;
  BareCurl& operator=(const BareCurl&) = delete;

  /// Runs `requests` requests, so many of them at a time, on the calling thread.
  void run(int requests, int inFlight);

 private:
  struct Transfer;

  void begin(Transfer& transfer);

  const std::string url_;
  const std::string body_;
  void* const multi_;
  void* headers_ = nullptr;
  std::vector<Transfer> transfers_;
};

}  // namespace TalvoConsentBenchmarks

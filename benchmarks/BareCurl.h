#pragma once

// Sends requests with libcurl's multi interface alone: without the session's thread, rules and completions.

#include <string>
#include <vector>

namespace TalvoConsentBenchmarks {

/// Reuses its easy handles. Aborts on any error.
class BareCurl {
 public:
  /// Sends POST requests with `body`, each on a fresh connection, or GET requests if `body` is empty.
  BareCurl(std::string url, std::string body);
  ~BareCurl();
  BareCurl(const BareCurl&) = delete;
  BareCurl& operator=(const BareCurl&) = delete;

  /// Runs `requests` requests on the calling thread, `inFlight` of them at a time. `inFlight` must be the
  /// same in every call.
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

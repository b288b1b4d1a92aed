#pragma once

// Logs one line of JSON per request, for people and for tests that check what a client sent.

#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "TalvoConsentSDK/base/Result.h"

namespace TalvoConsentSDK::service {

struct RequestLogEntry {
  std::string method;
  std::string target;  // the path and query as received
  std::string clientName;
  std::string contentType;
  std::string body;
  std::string fault;          // the kind of the simulated failure, if any
  std::optional<int> status;  // none if nothing is answered
};

/// Appends to a file. A line has the keys time (UTC), method, path (with the query), headers (X-Client-Name
/// and Content-Type only), body (parsed if it is JSON, otherwise as text), fault and status. A body or a
/// fault that is empty is left out; the status is null if nothing is answered. Each line is written in one
/// piece. Thread-safe.
class RequestLog {
 public:
  /// With an empty name, the log discards its lines.
  static Result<std::unique_ptr<RequestLog>> open(const std::string& file);

  ~RequestLog();

  /// Returns once the line is in the file. A line that cannot be written is lost.
  void write(const RequestLogEntry& entry);

 private:
  explicit RequestLog(int descriptor) : descriptor_(descriptor) {}

  std::mutex lock_;
  int descriptor_;  // negative if there is no file
};

}  // namespace TalvoConsentSDK::service

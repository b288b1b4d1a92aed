#pragma once

// One line of JSON per request, for people and for tests that look at what a client sent.

#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "TalvoConsentSDK/base/Result.h"

namespace TalvoConsentSDK::service {

struct RequestLogEntry {
  std::string method;
  std::string target;  // the path with its query, as it was sent
  std::string clientName;
  std::string contentType;
  std::string body;
  std::string fault;          // the kind of the fault that was applied
  std::optional<int> status;  // none when nothing is answered
};

/// Appends to a file. A line has the keys time (UTC), method, path, headers, body (parsed when it is JSON,
/// else as text), fault and status; what a request lacks is left out, except that the status is null when
/// nothing is answered. Lines are written whole. Safe from any thread.
class RequestLog {
 public:
  /// An empty name opens a log that writes nowhere.
  static Result<std::unique_ptr<RequestLog>> open(const std::string& file);

  ~RequestLog();

  /// Returns when the line is in the file. What cannot be written is lost.
  void write(const RequestLogEntry& entry);

 private:
  explicit RequestLog(int descriptor) : descriptor_(descriptor) {}

  std::mutex lock_;
  int descriptor_;  // negative: none
};

}  // namespace TalvoConsentSDK::service

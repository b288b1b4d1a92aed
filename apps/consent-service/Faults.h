#pragma once

// Failures that the service can simulate, to test how clients handle them.

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "TalvoConsentSDK/base/Result.h"

#include "Reply.h"

namespace TalvoConsentSDK::service {

/// A simulated failure: which requests it affects and what they get instead of the real answer.
class Fault {
 public:
  /// Reads "PATHPART=KIND". PATHPART is any part of "METHOD PATH?QUERY", such as "configurations" or
  /// "POST /public/cookie-consent". KIND is a status from 200 to 599, or one of
  ///   reset      the connection closes without an answer
  ///   stall      no answer is ever sent
  ///   truncated  the connection closes half-way through the answer's body
  ///   empty      an empty body
  ///   null       the JSON text null
  ///   array      the JSON text []
  ///   notutf8    a body that is not UTF-8
  ///   html500    status 500 with an error page in HTML
  /// or "STATUS:KIND" to change the status of the kind. An error's text says what is wrong with `text`.
  static Result<Fault> parse(std::string_view text);

  bool hits(std::string_view methodAndTarget) const {
    return methodAndTarget.find(part_) != std::string::npos;
  }

  /// The reply with the failure. Calls `answer` only if it needs part of the real answer: for `truncated`,
  /// and for a success status with a body. Otherwise the request has no effect.
  Reply reply(const std::function<Reply()>& answer) const;

  /// KIND as it was passed to `parse`.
  const std::string& kind() const noexcept { return kindText_; }

 private:
  enum class Kind { status, reset, stall, truncated, empty, null, array, notutf8, html500 };

  std::string part_;
  std::string kindText_;
  Kind kind_ = Kind::status;
  std::optional<int> status_;
};

/// The first fault that affects a request, or null.
const Fault* findFault(const std::vector<Fault>& faults, std::string_view methodAndTarget);

}  // namespace TalvoConsentSDK::service

#pragma once

// What the tests of the libcurl session share.

#include <chrono>

#include "adapters/curl/CurlURLSession.h"

#include "testing/LoopbackServer.h"
#include "testing/Outcomes.h"
#include "tests/support/Testing.h"

namespace TalvoConsentSDK {

using Connection = LoopbackServer::Connection;
using Received = LoopbackServer::Request;

/// A libcurl session that trusts servers with the certificate `identity()`. Uses HTTP/2 if they support it.
class SecureCurlURLSession : public CurlURLSession {
 public:
  SecureCurlURLSession() : CurlURLSession(options()) {}

  static const TestCertificate* identity() {
    static const TestCertificate certificate("localhost");
    return &certificate;
  }

 private:
  static CurlOptions options() {
    CurlOptions options;
    options.certificates = identity()->certificate();
    return options;
  }
};

/// "STATUS BODY", with the size of a long body, "cancelled", or "error CODE TEXT". Expects that no error
/// contains the word "secret".
inline std::string described(const Result<URLResponse>& outcome) {
  if (!outcome) {
    if (isCancelled(outcome)) return "cancelled";
    const auto* error = outcome.error().as<PlatformError>();
    if (!error) return outcome.error().what();
    EXPECT_EQ(error->domain(), "CURL");
    EXPECT_THAT(error->what(), ::testing::Not(HasSubstr("secret")));
    return "error " + std::to_string(error->code()) + " " + error->what();
  }
  const std::string status = std::to_string(outcome->statusCode.value_or(0)),
                    body = outcome->body.value_or("");
  if (body.empty()) return status;
  return status + " " + (body.size() < 100 ? body : std::to_string(body.size()) + " bytes");
}

inline void replyGood(const Received&, Connection& connection) {
  connection.reply(200, "good");
}

}  // namespace TalvoConsentSDK

// The libcurl session under the conformance suite, against a real server.

#include <map>

#include "adapters/curl/CurlURLSession.h"

#include "testing/LoopbackServer.h"
#include "testing/URLSessionConformance.h"

namespace TalvoConsentSDK {
namespace {

class CurlBackend {
 public:
  URLSession& session() { return session_; }

  URL serve(const std::string& method, const std::string& path, int status, std::string body) {
    const std::scoped_lock guard(lock_);
    answers_[method + " " + path] = {status, std::move(body)};
    return URL::parse(server_.url(path)).value();
  }

  // Nothing listens on a port that was given back.
  URL unreachable() {
    return URL::parse(LoopbackServer([](auto&, auto&) {}).url("/")).value();
  }

 private:
  std::mutex lock_;
  std::map<std::string, std::pair<int, std::string>> answers_;
  LoopbackServer server_{
      [this](const LoopbackServer::Request& request, LoopbackServer::Connection& connection) {
        const std::scoped_lock guard(lock_);
        const auto& [status, body] = answers_.at(request.method + " " + request.target);
        connection.reply(status, body);
      }};
  CurlURLSession session_;
};

INSTANTIATE_TYPED_TEST_SUITE_P(Curl, URLSessionConformance, CurlBackend);

}  // namespace
}  // namespace TalvoConsentSDK

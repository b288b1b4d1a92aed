// The libcurl session and the example's own under the conformance suite, against a real server.

#include <map>

#include "adapters/curl/CurlURLSession.h"

#include "examples/own-platform/OwnSession.h"
#include "testing/LoopbackServer.h"
#include "testing/URLSessionConformance.h"

namespace TalvoConsentSDK {
namespace {

template <class Session>
class LoopbackBackend {
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
        connection.close();  // which a simple client waits for
      }};
  Session session_;
};

using Backends = ::testing::Types<LoopbackBackend<CurlURLSession>, LoopbackBackend<own::OwnSession>>;
INSTANTIATE_TYPED_TEST_SUITE_P(Loopback, URLSessionConformance, Backends);

}  // namespace
}  // namespace TalvoConsentSDK

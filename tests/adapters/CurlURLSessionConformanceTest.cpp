// The libcurl session and the example's own under the conformance suite, against a real server.

#include <map>
#include <type_traits>

#include "adapters/curl/CurlURLSession.h"

#include "examples/own-platform/OwnSession.h"
#include "testing/LoopbackServer.h"
#include "testing/URLSessionConformance.h"

namespace TalvoConsentSDK {
namespace {

// Speaks HTTP/2 with the server.
class SecureCurlURLSession : public CurlURLSession {
 public:
  SecureCurlURLSession() : CurlURLSession(options()) {}

  static const TestCertificate& identity() {
    static const TestCertificate certificate("localhost");
    return certificate;
  }

 private:
  static CurlOptions options() {
    CurlOptions options;
    options.certificates = identity().certificate();
    return options;
  }
};

template <class Session>
class LoopbackBackend {
 public:
  URLSession& session() { return session_; }

  URL serve(const std::string& method, const std::string& path, int status, std::string body) {
    return answer(method, path, [status, body](auto& connection) { connection.reply(status, body); });
  }

  URL redirect(const std::string& method, const std::string& path, int status) {
    const std::string location = "Location: " + url(elsewhere_, "/").text() + "\r\n";
    return answer(method, path,
                  [status, location](auto& connection) { connection.reply(status, "", location); });
  }

  URL breakOff(const std::string& method, const std::string& path) {
    return answer(method, path, [](auto& connection) { connection.reset(); });
  }

  // Nothing listens on a port that was given back.
  URL unreachable() {
    return URL::parse(LoopbackServer([](auto&, auto&) {}).url("/")).value();
  }

  std::size_t seen(const std::string& text) const { return server_.seen(text) + elsewhere_.seen(text); }

 private:
  using Connection = LoopbackServer::Connection;
  using Answer = std::function<void(Connection&)>;
  static constexpr bool isSecure = std::is_same_v<Session, SecureCurlURLSession>;

  static URL url(const LoopbackServer& server, const std::string& path) {
    return URL::parse(server.url(path, isSecure ? "localhost" : "127.0.0.1")).value();
  }

  URL answer(const std::string& method, const std::string& path, Answer answer) {
    const std::scoped_lock guard(lock_);
    answers_[method + " " + path] = std::move(answer);
    return url(server_, path);
  }

  void handle(const LoopbackServer::Request& request, Connection& connection) {
    const std::scoped_lock guard(lock_);
    answers_.at(request.method + " " + request.target)(connection);
    if (!isSecure) connection.close();  // which a simple client waits for
  }

  std::mutex lock_;
  std::map<std::string, Answer> answers_;
  const TestCertificate* const identity_ = isSecure ? &SecureCurlURLSession::identity() : nullptr;
  LoopbackServer server_{[this](auto& request, auto& connection) { handle(request, connection); }, identity_,
                         0, LoopbackServer::http2};
  LoopbackServer elsewhere_{[](auto&, auto& connection) { connection.reply(200); }, identity_, 0,
                            LoopbackServer::http2};
  Session session_;
};

using Backends = ::testing::Types<LoopbackBackend<CurlURLSession>, LoopbackBackend<SecureCurlURLSession>,
                                  LoopbackBackend<own::OwnSession>>;
INSTANTIATE_TYPED_TEST_SUITE_P(Loopback, URLSessionConformance, Backends);

}  // namespace
}  // namespace TalvoConsentSDK

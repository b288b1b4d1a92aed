#pragma once

// Real servers for the conformance tests of URL sessions.

#include <cstddef>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <utility>

#include "TalvoConsentSDK/platform/URLSession.h"

#include "testing/LoopbackServer.h"

namespace TalvoConsentSDK {

inline const TestCertificate* noIdentity() {
  return nullptr;
}

/// A backend for `URLSessionConformance` whose session connects to real servers. If `identity` returns a
/// certificate, the servers use https with it. The session is default-constructed and must trust that
/// certificate.
template <class Session, auto identity = &noIdentity>
class LoopbackBackend {
 public:
  platform::URLSession& session() { return session_; }

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

  // Returns the URL of a server that has been destroyed, so nothing listens on its port.
  URL unreachable() {
    return URL::parse(LoopbackServer([](auto&, auto&) {}).url("/")).value();
  }

  std::size_t seen(const std::string& text) const { return server_.seen(text) + elsewhere_.seen(text); }

 private:
  using Connection = LoopbackServer::Connection;
  using Answer = std::function<void(Connection&)>;
  static URL url(const LoopbackServer& server, const std::string& path) {
    return URL::parse(server.url(path, identity() ? "localhost" : "127.0.0.1")).value();
  }

  URL answer(const std::string& method, const std::string& path, Answer answer) {
    const std::scoped_lock guard(lock_);
    answers_[method + " " + path] = std::move(answer);
    return url(server_, path);
  }

  void handle(const LoopbackServer::Request& request, Connection& connection) {
    const std::scoped_lock guard(lock_);
    answers_.at(request.method + " " + request.target)(connection);
    if (!identity()) connection.close();  // simple clients wait for the end of the connection
  }

  std::mutex lock_;
  std::map<std::string, Answer> answers_;
  LoopbackServer server_{[this](auto& request, auto& connection) { handle(request, connection); }, identity(),
                         0, LoopbackServer::http2};
  LoopbackServer elsewhere_{[](auto&, auto& connection) { connection.reply(200); }, identity(), 0,
                            LoopbackServer::http2};
  Session session_;
};

}  // namespace TalvoConsentSDK

#pragma once

// Real servers for the conformance tests of URL sessions.

#include <atomic>
#include <chrono>
#include <cstddef>
#include <functional>
#include <map>
#include <mutex>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>

#include "TalvoConsentSDK/platform/URLSession.h"

#include "testing/FullListener.h"
#include "testing/LoopbackServer.h"
#include "testing/URLSessionConformance.h"

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

  URL serve(const std::string& method, const std::string& path, int status, std::string body,
            const HeaderLines& headers = {}) {
    std::string lines;
    for (const auto& [name, value] : headers) lines += name + ": " + value + "\r\n";
    return answer(method, path, [status, body, lines](auto& connection) {
      connection.reply(status, body, lines);
      if (!identity()) connection.close();  // simple clients wait for the end of the connection
    });
  }

  URL redirect(const std::string& method, const std::string& path, int status) {
    return serve(method, path, status, "", {{"Location", url(elsewhere_.port(), "/").text()}});
  }

  URL breakOff(const std::string& method, const std::string& path) {
    return answer(method, path, [](auto& connection) { connection.reset(); });
  }

  URL stall(const std::string& method, const std::string& path, Stall where) {
    isConnectingNext_ = where == Stall::connecting;
    if (isConnectingNext_) return url(full_.port(), path);
    return answer(method, path, [this, where](auto& connection) {
      if (where != Stall::beforeHead) connection.begin("x");
      ++stalls_;
      for (int left = 40; where == Stall::inBodyWithBytes && left > 0 && !connection.ends(); --left) {
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        connection.more("x");
      }
    });
  }

  void awaitStall() {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (isConnectingNext_ ? !full_.hasAttempt() : stalls_ == 0) {
      if (std::chrono::steady_clock::now() > end) throw std::runtime_error("The request has not arrived");
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    if (!isConnectingNext_) --stalls_;
  }

  // Returns the URL of a server that has been destroyed, so nothing listens on its port.
  URL unreachable() {
    return URL::parse(LoopbackServer([](auto&, auto&) {}).url("/")).value();
  }

  std::size_t seen(const std::string& text) const { return server_.seen(text) + elsewhere_.seen(text); }

 private:
  using Connection = LoopbackServer::Connection;
  using Answer = std::function<void(Connection&)>;
  static URL url(int port, const std::string& path) {
    const std::string origin = identity() ? "https://localhost:" : "http://127.0.0.1:";
    return URL::parse(origin + std::to_string(port) + path).value();
  }

  URL answer(const std::string& method, const std::string& path, Answer answer) {
    const std::scoped_lock guard(lock_);
    answers_[method + " " + path] = std::move(answer);
    return url(server_.port(), path);
  }

  Answer answerTo(const LoopbackServer::Request& request) {
    const std::scoped_lock guard(lock_);
    return answers_.at(request.method + " " + request.target);
  }

  std::mutex lock_;
  std::atomic<int> stalls_ = 0;
  bool isConnectingNext_ = false;  // the latest `stall` is about connecting
  std::map<std::string, Answer> answers_;
  FullListener full_;
  LoopbackServer server_{[this](auto& request, auto& connection) { answerTo(request)(connection); },
                         identity(), 0, LoopbackServer::http2};
  LoopbackServer elsewhere_{[](auto&, auto& connection) { connection.reply(200); }, identity(), 0,
                            LoopbackServer::http2};
  Session session_;
};

}  // namespace TalvoConsentSDK

#pragma once

// The host's own HTTP: one socket per request, and only plain http to an IPv4 address and a port. A real
// session would also follow redirects, and run requests at the same time.

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include <TalvoConsentSDK/base/Deadline.h>
#include <TalvoConsentSDK/platform/URLSession.h>
#include <adapters/threads/BackgroundThread.h>
#include <arpa/inet.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace own {
using namespace TalvoConsentSDK;
using namespace TalvoConsentSDK::platform;

class OwnSession : public platform::URLSession {
 public:
  // Runs one request after another, on a thread that catches exceptions from completions.
  void run(URLRequest request, Completion completion) override {
    const auto end = request.totalTimeout ? deadlineAfter(*request.totalTimeout) : Clock::time_point::max();
    thread_.post([request = std::move(request), end, completion = std::move(completion)] {
      completion(outcome(request, end));
    });
  }

 private:
  using Clock = std::chrono::steady_clock;

  static PlatformError failure(const char* what) { return {"OwnSession", 1, what}; }

  static Result<URLResponse> outcome(const URLRequest& request, Clock::time_point end) try {
    return exchange(request, end);
  } catch (const PlatformError& error) {
    return error;
  }

  // Waits until the socket can send or receive, or the request is cancelled. Checks fifty times a second.
  static void wait(const URLRequest& request, Clock::time_point end, int peer, short event) {
    const auto soonest = std::min(end, deadlineAfter(request.timeout));
    pollfd ready{peer, event, 0};
    do {
      if (request.cancellation && request.cancellation->isCancelled()) throw cancelledError();
      if (Clock::now() >= soonest) throw failure("The service is too slow");
    } while (poll(&ready, 1, 20) <= 0);  // below 0 if a signal interrupted it
  }

  static URLResponse exchange(const URLRequest& request, Clock::time_point end) {
    // "http://127.0.0.1:8080/path?query"
    const std::string& url = request.url.text();
    const std::size_t host = url.find("//") + 2;
    const std::size_t path = url.find('/', host);
    const std::size_t colon = url.rfind(':', path);
    if (request.url.scheme() != "http" || colon < host) throw failure("Only http://ADDRESS:PORT is spoken");

    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<std::uint16_t>(std::atoi(url.c_str() + colon + 1)));
    if (inet_pton(AF_INET, request.url.host().c_str(), &address.sin_addr) != 1) {
      throw failure("The service has no address");
    }
    const int peer = socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK, 0);
    const std::unique_ptr<const int, void (*)(const int*)> closing(&peer, [](const int* it) { close(*it); });
    // If this fails, `send` fails, too.
    connect(peer, reinterpret_cast<const sockaddr*>(&address), sizeof address);

    const std::string body = request.body.value_or("");
    std::string sent = request.method + " " + url.substr(path) + " HTTP/1.0\r\n";
    for (const auto& [name, value] : request.headers) sent += name + ": " + value + "\r\n";
    sent += "Content-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body;
    for (std::string_view left = sent; !left.empty();) {
      wait(request, end, peer, POLLOUT);
      const ssize_t count = send(peer, left.data(), left.size(), MSG_NOSIGNAL);
      if (count < 0) throw failure("The service cannot be reached");
      left.remove_prefix(static_cast<std::size_t>(count));
    }

    std::string reply;
    for (ssize_t count = 1; count > 0;) {
      char part[4096];
      wait(request, end, peer, POLLIN);
      count = recv(peer, part, sizeof part, 0);
      if (count < 0) throw failure("The reply was broken off");
      reply.append(part, static_cast<std::size_t>(count));
    }
    return parsed(request, reply);
  }

  static URLResponse parsed(const URLRequest& request, const std::string& reply) {
    const std::size_t end = reply.find("\r\n\r\n");
    if (reply.size() < 12 || end == std::string::npos) throw failure("No reply arrived");
    URLResponse response;
    response.url = request.url;
    response.statusCode = std::atoi(reply.c_str() + 9);  // "HTTP/1.1 200 OK"
    for (std::size_t at = reply.find("\r\n") + 2; at < end; at = reply.find("\r\n", at) + 2) {
      const std::string line = reply.substr(at, reply.find("\r\n", at) - at);
      const std::size_t colon = line.find(':');
      const std::size_t begin = line.find_first_not_of(' ', colon + 1);
      if (colon == std::string::npos || begin == std::string::npos) continue;
      std::string& value = response.headers[line.substr(0, colon)];
      value += (value.empty() ? "" : ", ") + line.substr(begin);
    }
    const bool hasBody = request.method != "HEAD" && response.statusCode != 204 && response.statusCode != 304;
    if (hasBody) response.body = reply.substr(end + 4);
    return response;
  }

  BackgroundThread thread_;
};

}  // namespace own

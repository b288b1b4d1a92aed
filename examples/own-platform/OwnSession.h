#pragma once

// The host's own HTTP: one blocking socket per request, and only plain http to an IPv4 address and a port. A
// real session would also follow redirects.

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <memory>
#include <string>

#include <TalvoConsentSDK/platform/URLSession.h>
#include <adapters/threads/BackgroundThread.h>
#include <arpa/inet.h>
#include <sys/socket.h>
#include <unistd.h>

namespace own {
using namespace TalvoConsentSDK;
using namespace TalvoConsentSDK::platform;

class OwnSession : public platform::URLSession {
 public:
  // Runs one request after another, on a thread that catches exceptions from completions.
  void run(URLRequest request, Completion completion) override {
    thread_.post([request = std::move(request), completion = std::move(completion)] {
      completion(exchange(request));
    });
  }

 private:
  static PlatformError failure(const char* what) { return {"OwnSession", 1, what}; }

  static Result<URLResponse> exchange(const URLRequest& request) {
    // "http://127.0.0.1:8080/path?query"
    const std::string& url = request.url.text();
    const std::size_t host = url.find("//") + 2;
    const std::size_t path = url.find('/', host);
    const std::size_t colon = url.rfind(':', path);
    if (request.url.scheme() != "http" || colon < host) return failure("Only http://ADDRESS:PORT is spoken");

    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<std::uint16_t>(std::atoi(url.c_str() + colon + 1)));
    const int peer = socket(AF_INET, SOCK_STREAM, 0);
    const std::unique_ptr<const int, void (*)(const int*)> closing(&peer, [](const int* it) { close(*it); });
    if (inet_pton(AF_INET, request.url.host().c_str(), &address.sin_addr) != 1 ||
        connect(peer, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
      return failure("The service cannot be reached");
    }
    using std::chrono::seconds;
    const auto limit = std::clamp(std::chrono::ceil<seconds>(request.timeout), seconds(1), seconds(86'400));
    timeval patience{};
    patience.tv_sec = static_cast<std::time_t>(limit.count());
    setsockopt(peer, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);

    std::string sent = request.method + " " + url.substr(path) + " HTTP/1.0\r\n";
    for (const auto& [name, value] : request.headers) sent += name + ": " + value + "\r\n";
    const std::string body = request.body.value_or("");
    sent += "Content-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body;
    if (send(peer, sent.data(), sent.size(), MSG_NOSIGNAL) != static_cast<ssize_t>(sent.size())) {
      return failure("The request could not be sent");
    }

    std::string reply;
    char part[4096];
    ssize_t count = 0;
    while ((count = recv(peer, part, sizeof part, 0)) > 0)
      reply.append(part, static_cast<std::size_t>(count));
    const std::size_t end = reply.find("\r\n\r\n");
    if (count < 0 || reply.size() < 12 || end == std::string::npos) return failure("No reply arrived");

    URLResponse response;
    response.statusCode = std::atoi(reply.c_str() + 9);  // "HTTP/1.1 200 OK"
    const bool hasBody = request.method != "HEAD" && response.statusCode != 204 && response.statusCode != 304;
    if (hasBody) response.body = reply.substr(end + 4);
    return response;
  }

  BackgroundThread thread_;
};

}  // namespace own

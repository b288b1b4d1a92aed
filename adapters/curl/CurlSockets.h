#pragma once

// The sockets that libcurl has created for a session.

#include <unordered_map>

#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

namespace TalvoConsentSDK {

/// A service that sends more than it declared leaves bytes on a connection that libcurl considers free.
/// Before 8.1, libcurl takes them as the answer to the next request on that connection. So a transfer checks
/// for input before it reuses a connection.
class CurlSockets {
 public:
  void add(int socket) { ports_[socket] = unknown; }

  /// Closes a socket for libcurl.
  int close(int socket) {
    ports_.erase(socket);
    return ::close(socket);
  }

  /// Whether a socket has this local port.
  bool isOpen(int localPort) {
    bool found = false;
    for (auto& [socket, port] : ports_) {
      if (port == unknown) port = portOf(socket);
      found = found || port == localPort;
    }
    return found;
  }

  /// Whether the socket with this local port has input, or its peer has closed it.
  bool hasInput(int localPort) {
    for (auto& [socket, port] : ports_) {
      if (port == unknown) port = portOf(socket);
      char byte = 0;
      if (port == localPort && ::recv(socket, &byte, 1, MSG_PEEK | MSG_DONTWAIT) >= 0) return true;
    }
    return false;
  }

  /// Shuts down the connection with this local port, so that libcurl does not reuse it.
  void shutDown(int localPort) {
    for (const auto& [socket, port] : ports_) {
      if (portOf(socket) == localPort) ::shutdown(socket, SHUT_RDWR);
    }
  }

 private:
  static constexpr int unknown = 0;  // not asked for yet, or not connected

  static int portOf(int socket) {
    sockaddr_in6 address{};  // a sockaddr_in has the port at the same offset
    socklen_t size = sizeof address;
    const bool known = ::getsockname(socket, reinterpret_cast<sockaddr*>(&address), &size) == 0;
    return known && (address.sin6_family == AF_INET || address.sin6_family == AF_INET6)
               ? ntohs(address.sin6_port)
               : -1;
  }

  std::unordered_map<int, int> ports_;  // by socket
};

}  // namespace TalvoConsentSDK

#pragma once

// The sockets that libcurl has made for a session.

#include <unordered_map>

#include <netinet/in.h>
#include <sys/socket.h>

namespace TalvoConsentSDK {

/// A service that sends more than it has declared leaves bytes on a connection that counts as free.
/// Before 8.1, libcurl takes them for the answer to the next request there. So a transfer looks before it
/// uses one again.
class CurlSockets {
 public:
  void add(int socket) { ports_[socket] = unknown; }

  /// Whether anything has arrived, or the end, at the socket of this local port. A socket's number stays here
  /// after it has been closed and may be another file's then; at worst that is a connection not used again.
  bool hasInput(int localPort) {
    for (auto& [socket, port] : ports_) {
      if (port == unknown) port = portOf(socket);
      char byte = 0;
      if (port == localPort && ::recv(socket, &byte, 1, MSG_PEEK | MSG_DONTWAIT) >= 0) return true;
    }
    return false;
  }

  /// Ends the connection of this local port, so that libcurl does not use it again.
  void shutDown(int localPort) {
    for (const auto& [socket, port] : ports_) {
      if (portOf(socket) == localPort) ::shutdown(socket, SHUT_RDWR);
    }
  }

 private:
  static constexpr int unknown = 0;  // or not connected yet

  static int portOf(int socket) {
    sockaddr_in6 address{};  // the port is where it is in a sockaddr_in, too
    socklen_t size = sizeof address;
    const bool known = ::getsockname(socket, reinterpret_cast<sockaddr*>(&address), &size) == 0;
    return known && (address.sin6_family == AF_INET || address.sin6_family == AF_INET6)
               ? ntohs(address.sin6_port)
               : -1;
  }

  std::unordered_map<int, int> ports_;  // by socket: as far as they have been asked
};

}  // namespace TalvoConsentSDK

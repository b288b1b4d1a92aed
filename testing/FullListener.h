#pragma once

// A port to which no further connection can be made.

#include <cstdint>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>

#include <arpa/inet.h>
#include <sys/socket.h>
#include <unistd.h>

namespace TalvoConsentSDK {

/// Listens on a free port of 127.0.0.1 and accepts nothing. Its queue holds one connection, which the
/// constructor makes. Linux then ignores every other attempt to connect, so that the client waits.
class FullListener {
 public:
  FullListener() {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    auto* const any = reinterpret_cast<sockaddr*>(&address);
    if (bind(listener_, any, size) != 0 || listen(listener_, 0) != 0 ||
        getsockname(listener_, any, &size) != 0 || connect(first_, any, size) != 0) {
      throw std::runtime_error("A full listener cannot be made");
    }
    port_ = ntohs(address.sin_port);
  }
  ~FullListener() {
    close(first_);
    close(listener_);
  }
  FullListener(const FullListener&) = delete;
  FullListener& operator=(const FullListener&) = delete;

  int port() const { return port_; }

  /// Whether a client is trying to connect to the port.
  bool hasAttempt() const {
    char ending[32];
    std::snprintf(ending, sizeof ending, "0100007F:%04X 02", static_cast<unsigned>(port_));  // 02: SYN_SENT
    std::ifstream connections("/proc/net/tcp");
    const std::string all(std::istreambuf_iterator<char>(connections), {});
    return all.find(ending) != std::string::npos;
  }

 private:
  const int listener_ = socket(AF_INET, SOCK_STREAM, 0);
  const int first_ = socket(AF_INET, SOCK_STREAM, 0);
  int port_ = 0;
};

}  // namespace TalvoConsentSDK

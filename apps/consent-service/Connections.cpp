#include "Connections.h"

#include <charconv>
#include <filesystem>
#include <string>
#include <system_error>
#include <vector>

#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/types.h>

namespace TalvoConsentSDK::service {

namespace {

namespace fs = std::filesystem;

int portOf(const sockaddr_storage& address) {
  if (address.ss_family == AF_INET) return ntohs(reinterpret_cast<const sockaddr_in&>(address).sin_port);
  if (address.ss_family == AF_INET6) return ntohs(reinterpret_cast<const sockaddr_in6&>(address).sin6_port);
  return -1;
}

// One end's port; -1 for what is no connected internet socket.
int portOf(int descriptor, decltype(&getpeername) end) {
  sockaddr_storage address{};
  socklen_t size = sizeof address;
  return end(descriptor, reinterpret_cast<sockaddr*>(&address), &size) == 0 ? portOf(address) : -1;
}

std::vector<int> connections(int localPort) {
  std::vector<int> found;
  std::error_code error;
  for (fs::directory_iterator each("/dev/fd", error), end; !error && each != end; each.increment(error)) {
    const std::string name = each->path().filename().string();
    int descriptor = -1;
    std::from_chars(name.data(), name.data() + name.size(), descriptor);
    const bool isConnected = portOf(descriptor, getpeername) >= 0;
    if (isConnected && portOf(descriptor, getsockname) == localPort) found.push_back(descriptor);
  }
  return found;
}

}  // namespace

int connectionSocket(int localPort, int remotePort) {
  for (const int descriptor : connections(localPort)) {
    if (portOf(descriptor, getpeername) == remotePort) return descriptor;
  }
  return -1;
}

void shutDown(int socket) {
  shutdown(socket, SHUT_RDWR);
}

bool hasPeerGone(int socket, int milliseconds) {
  pollfd request{socket, 0, 0};
#ifdef POLLRDHUP
  request.events = POLLRDHUP;
#endif
  return poll(&request, 1, milliseconds) > 0;
}

void endIdleConnections(int localPort) {
  for (const int descriptor : connections(localPort)) shutdown(descriptor, SHUT_RD);
}

}  // namespace TalvoConsentSDK::service

#include "Connection.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <string_view>

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <openssl/err.h>
#include <openssl/ssl.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include "Connections.h"
#include "Reply.h"

namespace TalvoConsentSDK::service {

namespace {

#ifdef POLLRDHUP
constexpr short peerGone = POLLRDHUP;
#else
constexpr short peerGone = 0;
#endif

constexpr std::chrono::milliseconds lingering{2000};

thread_local Connection* currentConnection = nullptr;

void readAddress(int socket, decltype(&getpeername) end, std::string& ip, int& port) {
  sockaddr_storage address{};
  socklen_t size = sizeof address;
  if (end(socket, reinterpret_cast<sockaddr*>(&address), &size) != 0) return;
  std::array<char, INET6_ADDRSTRLEN> text{};
  if (address.ss_family == AF_INET6) {
    const auto& six = reinterpret_cast<const sockaddr_in6&>(address);
    inet_ntop(AF_INET6, &six.sin6_addr, text.data(), text.size());
    port = ntohs(six.sin6_port);
  } else {
    const auto& four = reinterpret_cast<const sockaddr_in&>(address);
    inet_ntop(AF_INET, &four.sin_addr, text.data(), text.size());
    port = ntohs(four.sin_port);
  }
  ip = text.data();
}

// Checks the part of a head that has arrived. Returns 200, or the status with which to refuse it.
int checkHead(std::string_view text) {
  if (text.substr(0, text.find('\n')).size() > maxLine) return 414;
  if (text.size() > maxHead) return 431;
  std::size_t lines = 0;
  for (std::size_t begin = 0; begin < text.size(); ++lines) {
    const std::size_t end = std::min(text.find('\n', begin), text.size());
    if (end - begin > maxLine) return 431;
    begin = end + 1;
  }
  return lines > maxHeaders + 2 ? 431 : 200;  // plus the request line and the empty line
}

}  // namespace

Connection::Connection(Connections& all, int socket, SSL* session, std::chrono::milliseconds time)
    : all_(all), socket_(socket), session_(session), time_(time) {
  fcntl(socket, F_SETFL, fcntl(socket, F_GETFL) | O_NONBLOCK);
  if (session) SSL_set_fd(session, socket);
  currentConnection = this;
  all_.enter(*this);
}

Connection::~Connection() {
  all_.leave(*this);
  currentConnection = nullptr;
  if (session_) SSL_free(session_);
  ::close(socket_);
}

Connection& Connection::current() {
  return *currentConnection;
}

void Connection::enter(Phase phase, std::chrono::milliseconds time) {
  phase_ = phase;
  since_ = Clock::now();
  until_ = since_ + time;
}

// Waits for the client. Returns false if the client ran out of time, or if the connection was ended and is
// not sending.
bool Connection::wait(short events) {
  waitingSince_ = since_.time_since_epoch().count();
  isSending_ = (events & POLLOUT) != 0;
  all_.waits();
  int ready = 0;
  while (ready <= 0 && (isSending_ || !isEnded_)) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(until_ - Clock::now()).count();
    if (left <= 0) break;
    pollfd request{socket_, events, 0};
    ready = poll(&request, 1, static_cast<int>(left));
  }
  waitingSince_ = 0;
  isSending_ = false;
  if (ready <= 0) isLate_ = true;
  return ready > 0;
}

// Call this after a TLS call failed. Waits if the call needs the client, and returns whether to repeat it.
bool Connection::waitUntilAgain(int result) {
  const int error = SSL_get_error(session_, result);
  if (error == SSL_ERROR_WANT_READ) return wait(POLLIN);
  return error == SSL_ERROR_WANT_WRITE && wait(POLLOUT);
}

bool Connection::shakeHands() {
  if (!session_) return true;
  enter(Phase::head, time_);
  for (;;) {
    ERR_clear_error();
    const int result = SSL_accept(session_);
    if (result == 1) return true;
    if (!waitUntilAgain(result)) return false;
  }
}

// Appends to `received_`. Returns false when nothing more will arrive, for whatever reason.
bool Connection::receive() {
  std::array<char, 16384> piece;
  for (;;) {
    ERR_clear_error();
    const auto count = session_ ? SSL_read(session_, piece.data(), static_cast<int>(piece.size()))
                                : recv(socket_, piece.data(), piece.size(), 0);
    if (count > 0) {
      received_.erase(0, at_).append(piece.data(), static_cast<std::size_t>(count));
      headEnd_ -= std::min(headEnd_, at_);
      at_ = 0;
      return true;
    }
    const bool isComing = session_ ? waitUntilAgain(static_cast<int>(count))
                                   : count < 0 && (errno == EAGAIN || errno == EINTR) && wait(POLLIN);
    if (isComing) continue;
    if (isEnded_) isLate_ = true;
    return false;
  }
}

int Connection::readHead() {
  if (isEnded_) return 0;
  enter(Phase::head, time_);
  isAtNextRequest = false;
  bodyLeft_ = 2 * maxBody;  // leaves room for chunk headers and poor compression
  for (;;) {
    // Skip empty lines between requests.
    while (std::string_view(received_).substr(at_).starts_with("\r\n")) at_ += 2;
    const std::string_view text = std::string_view(received_).substr(at_);
    const auto end = text.find("\n\r\n");
    const auto head = text.substr(0, end == text.npos ? end : end + 3);
    if (const int status = checkHead(head); status != 200) return status;
    if (end != text.npos) {
      headEnd_ = at_ + head.size();
      return 200;
    }
    const bool hasBegun = !text.empty();
    if (!receive()) return hasBegun && isLate_ ? 408 : 0;
  }
}

ssize_t Connection::read(char* data, size_t size) {
  if (at_ == received_.size()) {
    if (phase_ != Phase::body) enter(Phase::body, time_);
    if (!receive()) return -1;
  }
  auto count = std::min(size, received_.size() - at_);
  if (at_ >= headEnd_) {
    count = std::min(count, bodyLeft_);
    bodyLeft_ -= count;
    if (count == 0) return -1;
  } else {
    count = std::min(count, headEnd_ - at_);
  }
  std::copy_n(received_.data() + at_, count, data);
  at_ += count;
  return static_cast<ssize_t>(count);
}

ssize_t Connection::write(const char* data, size_t size) {
  if (phase_ != Phase::reply) enter(Phase::reply, time_);
  const int length = static_cast<int>(std::min<std::size_t>(size, 1 << 20));
  for (;;) {
    ERR_clear_error();
    const auto count = session_ ? SSL_write(session_, data, length)
                                : send(socket_, data, static_cast<std::size_t>(length), MSG_NOSIGNAL);
    if (count > 0) return count;
    if (session_) {
      if (!waitUntilAgain(static_cast<int>(count))) return -1;
    } else if (count == 0 || (errno != EAGAIN && errno != EINTR) || !wait(POLLOUT)) {
      return -1;
    }
  }
}

void Connection::refuse(int status) {
  const std::string body = errorReply(status, "the request was refused").body;
  std::string reply = "HTTP/1.1 " + std::to_string(status) +
                      " Refused\r\nConnection: close\r\nContent-Type: " + std::string(jsonType) +
                      "\r\nContent-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body;
  for (std::string_view rest = reply; !rest.empty();) {
    const auto count = write(rest.data(), rest.size());
    if (count <= 0) return;
    rest.remove_prefix(static_cast<std::size_t>(count));
  }
}

void Connection::linger() {
  if (session_) SSL_shutdown(session_);
  shutdown(socket_, SHUT_WR);
  enter(Phase::head, lingering);
  std::array<char, 16384> piece;
  while (!isEnded_ && Clock::now() < until_) {
    const auto count = recv(socket_, piece.data(), piece.size(), 0);
    if (count == 0) return;
    if (count < 0 && ((errno != EAGAIN && errno != EINTR) || !wait(POLLIN))) return;
  }
}

void Connection::waitForEnd() {
  do enter(Phase::reply, time_);
  while (!wait(peerGone) && !isEnded_);
}

void Connection::end(bool makesRoom) {
  isEnded_ = true;
  shutdown(socket_, makesRoom && isSending_ ? SHUT_RDWR : SHUT_RD);
}

void Connection::abort() {
  isEnded_ = true;
  shutdown(socket_, SHUT_RDWR);
}

std::optional<Connection::Clock::time_point> Connection::waitingForClientSince() const {
  const auto since = waitingSince_.load();
  return since == 0 ? std::nullopt : std::optional(Clock::time_point(Clock::duration(since)));
}

void Connection::get_remote_ip_and_port(std::string& ip, int& port) const {
  readAddress(socket_, getpeername, ip, port);
}

void Connection::get_local_ip_and_port(std::string& ip, int& port) const {
  readAddress(socket_, getsockname, ip, port);
}

}  // namespace TalvoConsentSDK::service

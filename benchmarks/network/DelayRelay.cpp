// delay_relay PORT ROUND_TRIP: a slow network on one machine. Listens on a free port of the loopback address,
// prints "listening on PORT", and passes on every connection to PORT, until it is killed. Every byte arrives
// half of ROUND_TRIP milliseconds after it was sent, and so does the end of a direction. There is
// no limit of bandwidth.
//
// The system accepts a client's connection at once, but in a real network the handshake takes a round trip.
// So all that the client sends before it has received anything arrives another round trip later.

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <deque>
#include <list>
#include <string>
#include <vector>

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sched.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

using Clock = std::chrono::steady_clock;

struct Piece {
  Clock::time_point due;
  std::string bytes;  // empty: the end
};

/// One direction of a connection.
class Direction {
 public:
  Direction(int from, int to, Clock::duration delay) : from_(from), to_(to), delay_(delay) {}

  bool hasDelivered() const { return hasDelivered_; }
  bool hasEnded() const { return hasReadAll_ && pieces_.empty(); }

  /// Adds what to wait for, and lowers `until` to the time at which the next piece is due.
  void prepare(std::vector<pollfd>& polls, Clock::time_point& until) {
    if (!hasReadAll_) polls.push_back({from_, POLLIN, 0});
    if (pieces_.empty()) return;
    if (isBlocked_) {
      polls.push_back({to_, POLLOUT, 0});
    } else {
      until = std::min(until, pieces_.front().due);
    }
  }

  /// Reads what was sent, to be delivered after the delay and `extra`. Then delivers what is due.
  void work(Clock::duration extra) {
    while (!hasReadAll_) {
      std::array<char, 1 << 16> buffer;
      const auto count = recv(from_, buffer.data(), buffer.size(), 0);
      if (count < 0 && (errno == EAGAIN || errno == EINTR)) break;
      hasReadAll_ = count <= 0;
      const auto size = static_cast<std::size_t>(std::max<ssize_t>(count, 0));
      pieces_.push_back({Clock::now() + delay_ + extra, std::string(buffer.data(), size)});
    }
    isBlocked_ = false;
    while (!pieces_.empty() && !isBlocked_ && pieces_.front().due <= Clock::now()) deliver(pieces_.front());
  }

 private:
  void deliver(Piece& piece) {
    if (!piece.bytes.empty()) {
      const auto count = send(to_, piece.bytes.data(), piece.bytes.size(), MSG_NOSIGNAL);
      isBlocked_ = count < 0 && errno == EAGAIN;
      if (isBlocked_) return;
      hasDelivered_ = true;
      piece.bytes.erase(0, count < 0 ? piece.bytes.size() : static_cast<std::size_t>(count));
      if (!piece.bytes.empty()) return;
    } else {
      shutdown(to_, SHUT_WR);
    }
    pieces_.pop_front();
  }

  const int from_;
  const int to_;
  const Clock::duration delay_;
  std::deque<Piece> pieces_;
  bool hasReadAll_ = false;
  bool hasDelivered_ = false;
  bool isBlocked_ = false;  // the receiver takes no more for now
};

sockaddr_in loopback(int port) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(static_cast<std::uint16_t>(port));
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  return address;
}

class Connection {
 public:
  Connection(int client, int server, Clock::duration roundTrip)
      : client_(client),
        server_(server),
        roundTrip_(roundTrip),
        toServer_(client, server, roundTrip / 2),
        toClient_(server, client, roundTrip / 2) {
    const int yes = 1;
    for (const int each : {client, server}) {
      setsockopt(each, IPPROTO_TCP, TCP_NODELAY, &yes, sizeof yes);
      fcntl(each, F_SETFL, O_NONBLOCK);
    }
  }
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;
  ~Connection() {
    close(client_);
    close(server_);
  }

  bool hasEnded() const { return toServer_.hasEnded() && toClient_.hasEnded(); }

  void prepare(std::vector<pollfd>& polls, Clock::time_point& until) {
    toServer_.prepare(polls, until);
    toClient_.prepare(polls, until);
  }

  void work() {
    toServer_.work(toClient_.hasDelivered() ? Clock::duration(0) : roundTrip_);
    toClient_.work(Clock::duration(0));
  }

 private:
  const int client_;
  const int server_;
  const Clock::duration roundTrip_;
  Direction toServer_;
  Direction toClient_;
};

void wait(std::vector<pollfd>& polls, Clock::time_point until) {
  const auto left = std::max(until - Clock::now(), Clock::duration(0));
  const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(left);
  const timespec time{seconds.count(), std::chrono::nanoseconds(left - seconds).count()};
  ppoll(polls.data(), polls.size(), &time, nullptr);
}

}  // namespace

int main(int count, char** arguments) {
  if (count != 3) return std::fputs("Usage: delay_relay PORT ROUND_TRIP\n", stderr), 2;
  const auto target = loopback(std::atoi(arguments[1]));
  const auto roundTrip = std::chrono::duration_cast<Clock::duration>(
      std::chrono::duration<double, std::milli>(std::atof(arguments[2])));

  const int listener = socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
  auto own = loopback(0);
  socklen_t size = sizeof own;
  if (bind(listener, reinterpret_cast<const sockaddr*>(&own), size) != 0 ||
      listen(listener, SOMAXCONN) != 0 ||
      getsockname(listener, reinterpret_cast<sockaddr*>(&own), &size) != 0) {
    return std::perror("delay_relay"), 1;
  }
  std::printf("listening on %d\n", ntohs(own.sin_port));
  std::fflush(stdout);

  const sched_param ahead{.sched_priority = 1};
  // Other load on the machine must not delay the relay. Without root's rights this has no effect.
  sched_setscheduler(0, SCHED_FIFO, &ahead);

  std::list<Connection> connections;
  for (;;) {
    std::vector<pollfd> polls{{listener, POLLIN, 0}};
    auto until = Clock::now() + std::chrono::hours(1);
    for (Connection& each : connections) each.prepare(polls, until);
    wait(polls, until);
    for (int client = 0; (client = accept(listener, nullptr, nullptr)) >= 0;) {
      const int server = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
      // If this is refused, the connection looks as if its end had arrived.
      connect(server, reinterpret_cast<const sockaddr*>(&target), sizeof target);
      connections.emplace_back(client, server, roundTrip);
    }
    for (Connection& each : connections) each.work();
    connections.remove_if([](const Connection& each) { return each.hasEnded(); });
  }
}

#include "benchmarks/QuickServer.h"

#include <array>
#include <csignal>
#include <cstdlib>
#include <map>
#include <string_view>

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/epoll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace TalvoConsentBenchmarks {

namespace {

void require(bool holds) {
  if (!holds) std::abort();
}

void watch(int poll, int descriptor) {
  epoll_event event{};
  event.events = EPOLLIN;
  event.data.fd = descriptor;
  require(epoll_ctl(poll, EPOLL_CTL_ADD, descriptor, &event) == 0);
}

// The length of the first complete request in `text`; 0 if there is none yet.
std::size_t requestLength(std::string_view text) {
  constexpr std::string_view end = "\r\n\r\n";
  constexpr std::string_view lengthHeader = "\r\nContent-Length: ";
  const auto head = text.find(end);
  if (head == std::string_view::npos) return 0;
  std::size_t length = head + end.size();
  const auto header = text.substr(0, head).find(lengthHeader);
  if (header != std::string_view::npos) {
    length += std::strtoul(text.data() + header + lengthHeader.size(), nullptr, 10);
  }
  return length <= text.size() ? length : 0;
}

}  // namespace

QuickServer::QuickServer() {
  const std::string body = R"({"id":"record","note":")" + std::string(1'000, 'x') + R"("})";
  reply_ =
      "HTTP/1.1 200 OK\r\nContent-Type: application/json\r\nContent-Length: " + std::to_string(body.size()) +
      "\r\n\r\n" + body;
  std::signal(SIGPIPE, SIG_IGN);
  listener_ = socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t size = sizeof address;
  auto* const any = reinterpret_cast<sockaddr*>(&address);
  require(bind(listener_, any, size) == 0 && listen(listener_, 1024) == 0 &&
          getsockname(listener_, any, &size) == 0);
  port_ = ntohs(address.sin_port);
  poll_ = epoll_create1(0);
  watch(poll_, listener_);
  thread_ = std::thread([this] { serve(); });
}

QuickServer::~QuickServer() {
  stop_ = true;
  thread_.join();
  close(listener_);
  close(poll_);
}

void QuickServer::serve() {
  std::map<int, std::string> unread;
  std::array<epoll_event, 64> events{};
  std::array<char, 65536> buffer{};
  while (!stop_) {
    const int count = epoll_wait(poll_, events.data(), static_cast<int>(events.size()), 100);
    for (int i = 0; i < count; ++i) {
      const int descriptor = events[static_cast<std::size_t>(i)].data.fd;
      if (descriptor == listener_) {
        for (int client = accept(listener_, nullptr, nullptr); client >= 0;
             client = accept(listener_, nullptr, nullptr)) {
          const int on = 1;
          setsockopt(client, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
          watch(poll_, client);
        }
        continue;
      }
      std::string& text = unread[descriptor];
      const auto got = read(descriptor, buffer.data(), buffer.size());
      if (got <= 0) {
        unread.erase(descriptor);
        close(descriptor);
        continue;
      }
      text.append(buffer.data(), static_cast<std::size_t>(got));
      while (const std::size_t length = requestLength(text)) {
        text.erase(0, length);
        static_cast<void>(!write(descriptor, reply_.data(), reply_.size()));
      }
    }
  }
  for (const auto& [descriptor, text] : unread) close(descriptor);
}

}  // namespace TalvoConsentBenchmarks

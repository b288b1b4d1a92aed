// Sends arbitrary bytes from a loopback socket through the libcurl session and the transport. Every request
// must end exactly once, whatever the service sends.

#include <future>
#include <mutex>
#include <thread>

#include <arpa/inet.h>
#include <sys/socket.h>
#include <unistd.h>

#include "TalvoConsentSDK/base/NeverDestroyed.h"
#include "TalvoConsentSDK/network/URLSessionHTTPClient.h"

#include "adapters/curl/CurlURLSession.h"

#include "fuzz/Fuzzing.h"

using namespace TalvoConsentSDK;
using namespace TalvoConsentSDK::platform;
using namespace TalvoConsentSDK::fuzzing;

namespace {

constexpr std::size_t maxReply = 1U << 12U;

bool isWhole(const std::string& request) {
  return request.ends_with(request.starts_with("POST") ? "\r\n\r\n{\"a\":1}" : "\r\n\r\n");
}

/// Answers every request with the same bytes and closes the connection.
class ByteServer {
 public:
  ByteServer() : listener_(::socket(AF_INET, SOCK_STREAM, 0)) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    auto* const any = reinterpret_cast<sockaddr*>(&address);
    require(::bind(listener_, any, size) == 0 && ::listen(listener_, 64) == 0 &&
                ::getsockname(listener_, any, &size) == 0,
            "the server listens");
    port_ = ntohs(address.sin_port);
    std::thread([this] { serve(); }).detach();
  }

  std::string url() const { return "http://127.0.0.1:" + std::to_string(port_) + "/"; }

  void setReply(std::string bytes) {
    const std::scoped_lock guard(lock_);
    reply_ = std::move(bytes);
  }

 private:
  std::string reply() {
    const std::scoped_lock guard(lock_);
    return reply_;
  }

  void serve() {
    for (;;) {
      const int socket = ::accept(listener_, nullptr, nullptr);
      std::string request;
      char bytes[4096];
      // Read the whole request: otherwise closing sends a reset that can overtake the reply.
      while (!isWhole(request)) {
        const auto got = ::recv(socket, bytes, sizeof bytes, 0);
        if (got <= 0) break;
        request.append(bytes, static_cast<std::size_t>(got));
      }
      const std::string bytesOfReply = reply();
      ::send(socket, bytesOfReply.data(), bytesOfReply.size(), MSG_NOSIGNAL);
      ::close(socket);
    }
  }

  const int listener_;
  int port_ = 0;
  std::mutex lock_;
  std::string reply_;
};

// Whether a reply may redirect the client to another server. The fuzzer must contact no server but its own.
bool leadsAway(std::string text) {
  std::ranges::transform(text, text.begin(),
                         [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; });
  const std::size_t location = text.find("location");
  return location != text.npos &&
         (text.find("//", location) != text.npos || text.find('\\', location) != text.npos ||
          text.find("http", location) != text.npos);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static ByteServer& server = neverDestroyed<ByteServer>();
  static const auto& session = neverDestroyed([] {
    CurlOptions options;
    options.maxReply = maxReply;
    return std::make_shared<CurlURLSession>(options);
  }());
  const std::string text(reinterpret_cast<const char*>(data), size);
  if (leadsAway(text)) return 0;
  server.setReply(text);
  const URL url = *URL::parse(server.url());
  URLSessionHTTPClient client(session);
  const auto ended = std::make_shared<std::promise<void>>();
  client.postJSON(url, {{"a", 1}}, {}, [ended](const Result<JSONObject>& reply) {
    if (!reply) require(!std::string_view(reply.error().what()).empty(), "an error has a text");
    ended->set_value();
  });
  ended->get_future().get();

  const auto reported = std::make_shared<std::promise<Result<URLResponse>>>();
  session->run(URLRequest(url),
               [reported](const Result<URLResponse>& outcome) { reported->set_value(outcome); });
  const auto response = reported->get_future().get();
  if (response) {
    require(response->statusCode && *response->statusCode >= 0, "a reply has a status");
    require(response->body.value_or("").size() <= maxReply, "no body exceeds the limit");
    return 0;
  }
  const auto* error = response.error().as<PlatformError>();
  require(error && error->domain() == "CURL" && error->code() != 28, "a closed connection does not time out");
  return 0;
}

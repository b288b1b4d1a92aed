#pragma once

// A server for tests, of HTTP/1.1 and HTTP/2: it reads requests properly, and lets a test answer them as
// badly as it likes.

#include <atomic>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "TalvoConsentSDK/platform/URLSession.h"

#include "testing/HTTP2Frames.h"

struct ssl_ctx_st;
struct ssl_st;

namespace TalvoConsentSDK {

/// A certificate for one host and its key, in two files that go away with it.
class TestCertificate {
 public:
  /// Valid from `firstDay` to `lastDay`, counted from now. Self-signed, or issued by an authority that nobody
  /// has.
  explicit TestCertificate(const std::string& host, int firstDay = 0, int lastDay = 2,
                           bool isSelfSigned = true);
  ~TestCertificate();

  const std::filesystem::path& certificate() const { return certificate_; }
  const std::filesystem::path& key() const { return key_; }

 private:
  std::filesystem::path folder_, certificate_, key_;
};

/// Listens on a free port of 127.0.0.1. Each connection has a thread, on which the handler answers its
/// requests one after another.
class LoopbackServer {
 public:
  struct Request {
    std::string method, target, body;
    platform::HTTPHeaders headers;
    int connection = 0;  // counted from 1
  };

  class Connection {
   public:
    void send(std::string_view bytes);
    /// `headers` are whole lines, each with its line end. With a body comes its length.
    void reply(int status, std::string_view body = "", std::string_view headers = "");
    /// Does what a script says, word for word: `"text"` is sent, `"text"*9` so often, `"text"*` until the
    /// peer has gone; `pause` waits for 50 ms; `close`, `reset` and `stall` are the functions below. In a
    /// text, `\n` is a line end of HTTP (CR LF) and `\x0A` any byte; `"text"^9` is a longer one, repeated.
    /// After `HEADERS:5` or the like, a text is the payload of an HTTP/2 frame with these flags, on the
    /// request's stream or, as in `PING:0:3`, on another. Throws on anything else.
    void play(const std::string& script);
    /// Ends the connection in an orderly way once the handler returns.
    void close() { ends_ = true; }
    /// Ends it at once, in a way that the peer sees as "connection reset".
    void reset();
    /// Returns when the peer has gone, or the server stops.
    void waitForPeer();

   private:
    friend class LoopbackServer;
    std::optional<Request> receive();
    std::optional<Request> receiveHTTP2();
    HTTP2Frame frame(const std::string& word) const;
    std::size_t read(char* bytes, std::size_t count);
    bool readUntil(const std::function<bool()>& done);
    std::string take(std::size_t count);

    LoopbackServer* server_ = nullptr;
    int number_ = 0;
    int socket_ = -1;
    ssl_st* tls_ = nullptr;
    bool ends_ = false;
    std::string unread_;

    bool isHTTP2_ = false;
    HTTP2HeaderReader headers_;
    std::uint32_t stream_ = 0;                   // of the request that is answered
    std::map<std::uint32_t, std::size_t> open_;  // by stream: which of the server's requests arrives there
  };

  using Handler = std::function<void(const Request&, Connection&)>;

  /// Speaks TLS when there is an identity; with `onlyTLS`, one of OpenSSL's numbers such as `TLS1_VERSION`,
  /// that version alone, however weak. With a greeting it speaks HTTP/2 to clients that can, beginning with
  /// these frames.
  explicit LoopbackServer(Handler handler, const TestCertificate* identity = nullptr, int onlyTLS = 0,
                          std::string greeting = "");
  ~LoopbackServer();

  int port() const { return port_; }
  std::string url(std::string_view path, std::string_view host = "127.0.0.1") const;

  /// The greeting of a server that takes requests of any size. It sends at most 32 MiB itself, the window
  /// that libcurl gives it.
  static constexpr const char* http2 =
      R"(SETTINGS:0:0 "\x00\x04\x7f\xff\xff\xff" WINDOW_UPDATE:0:0 "\x7f\xff\x00\x00")";

  int connections() const { return connections_; }
  /// All whose header has arrived; a body may still be on its way.
  std::vector<Request> requests() const;
  /// How often a text has arrived, in whatever request.
  std::size_t seen(std::string_view text) const;

 private:
  void accept();
  std::size_t note(Request request);
  void serve(int socket, int number);

  const Handler handler_;
  const std::string greeting_;
  ssl_ctx_st* tls_ = nullptr;
  int listener_ = -1;
  int port_ = 0;
  std::atomic<int> connections_ = 0;
  mutable std::mutex lock_;
  std::vector<Request> requests_;
  std::map<int, std::string> received_;  // by connection: what it has sent
  std::vector<int> open_;                // sockets of living connections
  std::vector<std::thread> threads_;
  std::thread acceptor_;
};

}  // namespace TalvoConsentSDK

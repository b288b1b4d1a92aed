#pragma once

// An HTTP/1.1 server for tests: it reads requests properly, and lets a test answer them as badly as it likes.

#include <atomic>
#include <filesystem>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "TalvoConsentSDK/platform/URLSession.h"

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
    HTTPHeaders headers;
    int connection = 0;  // counted from 1
  };

  class Connection {
   public:
    void send(std::string_view bytes);
    /// `headers` are whole lines, each with its line end. With a body comes its length.
    void reply(int status, std::string_view body = "", std::string_view headers = "");
    /// Does what a script says, word for word: `"text"` is sent, `"text"*9` so often, `"text"*` until the
    /// peer has gone; `pause` waits for 50 ms; `close`, `reset` and `stall` are the functions below. In a
    /// text, `\n` is a line end of HTTP (CR LF) and `\x0A` any byte. Throws on anything else.
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
    std::size_t read(char* bytes, std::size_t count);

    int socket_ = -1;
    ssl_st* tls_ = nullptr;
    bool ends_ = false;
    std::string unread_;
  };

  using Handler = std::function<void(const Request&, Connection&)>;

  /// Speaks TLS when there is an identity; with `onlyTLS`, one of OpenSSL's numbers such as `TLS1_VERSION`,
  /// that version alone, however weak.
  explicit LoopbackServer(Handler handler, const TestCertificate* identity = nullptr, int onlyTLS = 0);
  ~LoopbackServer();

  int port() const { return port_; }
  std::string url(std::string_view path, std::string_view host = "127.0.0.1") const;

  int connections() const { return connections_; }
  std::vector<Request> requests() const;

 private:
  void accept();
  void serve(int socket, int number);

  const Handler handler_;
  ssl_ctx_st* tls_ = nullptr;
  int listener_ = -1;
  int port_ = 0;
  std::atomic<int> connections_ = 0;
  mutable std::mutex lock_;
  std::vector<Request> requests_;
  std::vector<int> open_;  // sockets of living connections
  std::vector<std::thread> threads_;
  std::thread acceptor_;
};

}  // namespace TalvoConsentSDK

#pragma once

// An HTTP/1.1 and HTTP/2 server for tests. It reads requests correctly, and a test may answer them with
// anything, however malformed.

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

/// A certificate for one host and its key, in two files that the destructor deletes.
class TestCertificate {
 public:
  /// Valid from `firstDay` to `lastDay`, in days from now. Self-signed, or issued by an authority that no
  /// client can trust.
  explicit TestCertificate(const std::string& host, int firstDay = 0, int lastDay = 2,
                           bool isSelfSigned = true);
  ~TestCertificate();

  const std::filesystem::path& certificate() const { return certificate_; }
  const std::filesystem::path& key() const { return key_; }

 private:
  std::filesystem::path folder_, certificate_, key_;
};

/// Listens on a free port of 127.0.0.1. Each connection has its own thread, on which the handler answers
/// requests one after another.
class LoopbackServer {
 public:
  struct Request {
    std::string method, target, body;
    platform::HTTPHeaders headers;
    int connection = 0;              // counted from 1
    bool hasResumedSession = false;  // of TLS
  };

  class Connection {
   public:
    void send(std::string_view bytes);
    /// `headers` are complete lines with line ends. Content-Length is added, except for status 204 and 304.
    void reply(int status, std::string_view body = "", std::string_view headers = "");
    /// Sends the header of a reply with status 200 and the first part of its body. `more` sends another part.
    /// The reply never ends.
    void begin(std::string_view part);
    void more(std::string_view part);
    /// Runs a script of words separated by spaces. `"text"` sends the text, `"text"*9` sends it nine times,
    /// and `"text"*` repeats it until the peer has gone. `pause` waits for 50 ms. `close` and `reset` call
    /// the functions below, and `stall` calls `waitForPeer`. In a text, `\n` is an HTTP line end (CR LF) and
    /// `\x0A` is the byte 0x0A; `"text"^9` is a single text of nine copies. `HEADERS:5 "text"` sends one
    /// HTTP/2 frame with the given type, flags and payload on the request's stream; `PING:0:3 "text"` sends a
    /// frame on stream 3. Throws on anything else.
    void play(const std::string& script);
    /// Closes the connection normally once the handler returns.
    void close() { ends_ = true; }
    /// Makes the peer see "connection reset" once the handler returns.
    void reset();
    /// Whether the connection ends once the handler returns, for example because the peer has gone.
    bool ends() const { return ends_; }
    /// Waits until the peer has gone or the server stops.
    void waitForPeer();

   private:
    friend class LoopbackServer;
    Request newRequest() const;
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
    std::uint32_t stream_ = 0;                   // of the request being answered
    std::map<std::uint32_t, std::size_t> open_;  // by stream: index of its request in the server's list
  };

  using Handler = std::function<void(const Request&, Connection&)>;

  /// Uses TLS if `identity` is not null. `onlyTLS` is an OpenSSL version number such as `TLS1_VERSION` and
  /// allows only that version, however weak; 0 allows all. `greeting` is a script for `Connection::play`: if
  /// it is not empty, a server with TLS uses HTTP/2 with clients that support it, and plays the greeting
  /// first on each such connection.
  explicit LoopbackServer(Handler handler, const TestCertificate* identity = nullptr, int onlyTLS = 0,
                          std::string greeting = "");
  ~LoopbackServer();

  int port() const { return port_; }
  std::string url(std::string_view path, std::string_view host = "127.0.0.1") const;

  /// A greeting that lets clients send requests of any size. Replies are limited to 32 MiB, the window that
  /// libcurl grants.
  static constexpr const char* http2 =
      R"(SETTINGS:0:0 "\x00\x04\x7f\xff\xff\xff" WINDOW_UPDATE:0:0 "\x7f\xff\x00\x00")";

  int connections() const { return connections_; }
  /// From now on, serves connections only once there have been `count` of them in total.
  void holdUntilConnections(int count) { minConnections_ = count; }
  /// All requests whose header has arrived; their bodies may still be arriving.
  std::vector<Request> requests() const;
  /// How often a text has arrived, on any connection. A header of HTTP/2 counts as the line that it would be
  /// in HTTP/1.1.
  std::size_t seen(std::string_view text) const;

 private:
  void accept();
  std::size_t note(Request request);
  void received(int connection, std::string_view text);
  void serve(int socket, int number);

  const Handler handler_;
  const std::string greeting_;
  ssl_ctx_st* tls_ = nullptr;
  int listener_ = -1;
  int port_ = 0;
  std::atomic<int> connections_ = 0;
  std::atomic<int> minConnections_ = 0;
  mutable std::mutex lock_;
  std::vector<Request> requests_;
  std::map<int, std::string> received_;  // by connection: all bytes, and the decoded headers of HTTP/2
  std::vector<int> open_;                // sockets of open connections
  std::vector<std::thread> threads_;
  std::thread acceptor_;
};

}  // namespace TalvoConsentSDK

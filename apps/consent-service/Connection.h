#pragma once

// The connection of one client. Limits the size of a request and the time that the client may take to send
// it.

#include <atomic>
#include <chrono>
#include <cstddef>
#include <optional>
#include <string>

#include <httplib.h>

namespace TalvoConsentSDK::service {

class Connections;

inline constexpr std::size_t maxBody =
    1 << 20;  // bytes, decompressed; a consent with 10,000 vendors has 300,000
inline constexpr std::size_t maxHead = 64 << 10;  // bytes of the request line and all headers
inline constexpr std::size_t maxLine = 8000;      // bytes of the request line or of one header
inline constexpr std::size_t maxHeaders = 100;

/// The stream from which the HTTP library reads a request and to which it writes the reply. Used by the
/// thread that serves the connection; `end` and `waitingForClientSince` may be called on any thread.
class Connection : public httplib::Stream {
 public:
  using Clock = std::chrono::steady_clock;

  /// Takes ownership of the socket and of the TLS session, which may be null. A client has `time` to send a
  /// head, the same time again to send the body, and the same time again to receive the reply.
  Connection(Connections& all, int socket, SSL* session, std::chrono::milliseconds time);
  ~Connection() override;
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;

  /// The connection that the calling thread is serving. Call this only while it serves one.
  static Connection& current();

  /// Performs the TLS handshake, if there is a TLS session. Returns false if it fails or the client's time
  /// runs out.
  bool shakeHands();

  /// Waits for the head of the next request. Returns 200 once it has arrived, 0 if no request began or the
  /// client closed the connection, and otherwise the status with which to refuse the request.
  int readHead();

  /// Answers a request whose head was refused.
  void refuse(int status);

  /// Sends nothing more, and discards input until the client closes the connection, the connection is ended,
  /// or 2 seconds have passed. Closing while input is unread could make the client lose the last reply.
  void linger();

  /// Waits until the client closes the connection or the connection is ended.
  void waitForEnd();

  /// Ends reading. A request that has been read is still answered, unless `makesRoom` is true and the client
  /// is not taking the reply.
  void end(bool makesRoom);

  /// Ends both directions at once, whether or not the client has got an answer.
  void abort();

  /// Whether the current request has been read completely, so that the next byte begins another one.
  bool isAtNextRequest = false;

  /// Whether the client ran out of time, or the connection was ended while it waited for the client.
  bool isLate() const { return isLate_; }

  /// Whether the body takes more bytes on the wire than any body of the allowed size should.
  bool isTooLarge() const { return bodyLeft_ == 0; }

  /// If the service is waiting for the client to send or receive, the time at which the current head, body or
  /// reply began; otherwise nothing.
  std::optional<Clock::time_point> waitingForClientSince() const;

  bool isEnded() const { return isEnded_; }

  bool is_readable() const override { return true; }
  bool is_writable() const override { return !isEnded_; }
  ssize_t read(char* data, size_t size) override;
  ssize_t write(const char* data, size_t size) override;
  void get_remote_ip_and_port(std::string& ip, int& port) const override;
  void get_local_ip_and_port(std::string& ip, int& port) const override;
  socket_t socket() const override { return socket_; }

 private:
  enum class Phase { head, body, reply };

  void enter(Phase phase, std::chrono::milliseconds time);
  bool wait(short events);
  bool waitUntilAgain(int result);
  bool receive();

  Connections& all_;
  const int socket_;
  SSL* const session_;
  const std::chrono::milliseconds time_;
  Phase phase_ = Phase::reply;
  Clock::time_point since_;  // start of the current phase
  Clock::time_point until_;
  std::string received_;
  std::size_t at_ = 0;        // read position in `received_`
  std::size_t headEnd_ = 0;   // position in `received_`
  std::size_t bodyLeft_ = 0;  // bytes
  bool isLate_ = false;
  std::atomic<Clock::rep> waitingSince_{0};  // 0: not waiting for the client
  std::atomic<bool> isSending_{false};
  std::atomic<bool> isEnded_{false};
};

}  // namespace TalvoConsentSDK::service

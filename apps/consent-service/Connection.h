#pragma once

// One client's connection. What a client sends before its request is read is bounded in size and in time.

#include <atomic>
#include <chrono>
#include <cstddef>
#include <optional>
#include <string>

#include <httplib.h>

namespace TalvoConsentSDK::service {

class Connections;

inline constexpr std::size_t maxBody =
    1 << 20;  // bytes, decompressed; a choice among 10,000 vendors has 300,000
inline constexpr std::size_t maxHead = 64 << 10;  // bytes of the request line and the headers
inline constexpr std::size_t maxLine = 8000;      // bytes of one of these lines
inline constexpr std::size_t maxHeaders = 100;

/// The stream that the HTTP library reads a request from and writes its reply to. Used by the thread that
/// serves the connection; `end` and `clientsTurnSince` may be called from any other.
class Connection : public httplib::Stream {
 public:
  using Clock = std::chrono::steady_clock;

  /// Owns the socket and, unless it is null, the TLS session. A client has `time` to send a head, as long
  /// again to send the body, and as long again to take the reply.
  Connection(Connections& all, int socket, SSL* session, std::chrono::milliseconds time);
  ~Connection() override;
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;

  /// The connection that this thread serves; only while it serves one.
  static Connection& current();

  /// Agrees on the keys of a TLS session. False when the client does not within its time.
  bool shakeHands();

  /// Waits for the head of the next request. 200 when it is there, else the status to refuse it with; 0 when
  /// the client sent nothing more.
  int readHead();

  /// Answers a request whose head cannot be read.
  void refuse(int status);

  /// Closes the connection so that the client still gets the last reply: unread bytes would destroy it.
  void linger();

  /// Waits until the client has gone.
  void waitForEnd();

  /// Reading finds the end from now on. A request that was read is still answered, unless the connection
  /// makes room for another and its client does not take the reply.
  void end(bool makesRoom);

  /// Ends both directions at once: the client sees the end, with or without an answer.
  void abort();

  /// Whether the next byte begins another request. Not before the body has been read.
  bool isInStep = false;

  /// Whether the client ran out of its time, or its place was given to another.
  bool isLate() const { return isLate_; }

  /// Whether the body takes more bytes on the wire than one of the largest size does.
  bool isTooLarge() const { return bodyLeft_ == 0; }

  /// Since when the service waits for the client to send or to take something; nothing while it does not.
  std::optional<Clock::time_point> clientsTurnSince() const;

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
  Clock::time_point since_;  // when the phase began
  Clock::time_point until_;
  std::string received_;
  std::size_t at_ = 0;        // in what was received
  std::size_t headEnd_ = 0;   // likewise
  std::size_t bodyLeft_ = 0;  // bytes
  bool isLate_ = false;
  std::atomic<Clock::rep> turn_{0};  // 0: not the client's
  std::atomic<bool> isSending_{false};
  std::atomic<bool> isEnded_{false};
};

}  // namespace TalvoConsentSDK::service

#pragma once

// The calls that a session makes to OpenSSL itself, without going through libcurl.

#include <cstddef>
#include <string_view>

#include <openssl/ssl.h>

namespace TalvoConsentSDK {

/// Watches the TLS connections of a session. Used on the session's thread; must outlive the connections.
class CurlTLS {
 public:
  /// Configures the context from which libcurl makes its connections. The connections then never write TLS
  /// secrets to a log file, even if the environment asks for that.
  void configure(SSL_CTX* context) {
    SSL_CTX_set_keylog_callback(context, nullptr);
    SSL_CTX_set_msg_callback(context, &CurlTLS::noteRecord);
    SSL_CTX_set_msg_callback_arg(context, this);
  }

  /// Whether the connection has negotiated HTTP/2; false for null.
  static bool usesHTTP2(const SSL* connection) {
    const unsigned char* protocol = nullptr;
    unsigned size = 0;
    if (connection) SSL_get0_alpn_selected(connection, &protocol, &size);
    return std::string_view(reinterpret_cast<const char*>(protocol), size) == "h2";
  }

  /// Whether OpenSSL holds received bytes that have not been read yet; false for null.
  static bool hasInput(const SSL* connection) { return connection && SSL_has_pending(connection) == 1; }

  /// Call this before each call into libcurl and whenever part of a reply arrives. libcurl 7.88 keeps
  /// reading, and does nothing else, for as long as an HTTP/2 service sends frames that belong to no reply.
  /// So this class ends a connection that receives more than `maxBytes` between two calls.
  void noteReply() { bytes_ = 0; }

 private:
  static constexpr std::size_t maxBytes = 16U << 20U;
  static constexpr std::size_t headSize = 5;  // of a record header, whose last two bytes are the length

  static void noteRecord(int isWritten, int, int kind, const void* head, std::size_t size, SSL* connection,
                         void* self) {
    if (isWritten != 0 || kind != SSL3_RT_HEADER || size < headSize) return;
    const auto* const bytes = static_cast<const unsigned char*>(head);
    auto& tls = *static_cast<CurlTLS*>(self);
    if (connection != tls.connection_) tls.bytes_ = 0;
    tls.connection_ = connection;
    tls.bytes_ += std::size_t{bytes[3]} * 256 + bytes[4];
    if (tls.bytes_ > maxBytes)
      SSL_set_shutdown(connection, SSL_RECEIVED_SHUTDOWN);  // the next read reports the end
  }

  const SSL* connection_ = nullptr;  // the last connection read from; only compared
  std::size_t bytes_ = 0;
};

}  // namespace TalvoConsentSDK

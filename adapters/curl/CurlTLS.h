#pragma once

// What a session asks of OpenSSL beneath libcurl.

#include <cstddef>
#include <string_view>

#include <openssl/ssl.h>

namespace TalvoConsentSDK {

/// The TLS connections of a session. Used by its thread; it outlives them.
class CurlTLS {
 public:
  /// Sets up what libcurl makes connections of. No secrets are written where the environment asks for it.
  void configure(SSL_CTX* context) {
    SSL_CTX_set_keylog_callback(context, nullptr);
    SSL_CTX_set_msg_callback(context, &CurlTLS::noteRecord);
    SSL_CTX_set_msg_callback_arg(context, this);
  }

  /// Whether that is what a connection has agreed on; null is none.
  static bool usesHTTP2(const SSL* connection) {
    const unsigned char* protocol = nullptr;
    unsigned size = 0;
    if (connection) SSL_get0_alpn_selected(connection, &protocol, &size);
    return std::string_view(reinterpret_cast<const char*>(protocol), size) == "h2";
  }

  /// Whether a part of a record is left that has been received and not read; null has none.
  static bool hasInput(const SSL* connection) { return connection && SSL_has_pending(connection) == 1; }

  /// Call it before libcurl is entered and when a part of a reply arrives. libcurl 7.88 reads on as long as
  /// an HTTP/2 service sends frames that belong to no reply, and nothing else happens meanwhile. So a
  /// connection ends on which too much arrives between two calls.
  void noteReply() { bytes_ = 0; }

 private:
  static constexpr std::size_t maxBytes = 16U << 20U;
  static constexpr std::size_t headSize = 5;  // of a record; its length comes last

  static void noteRecord(int isWritten, int, int kind, const void* head, std::size_t size, SSL* connection,
                         void* self) {
    if (isWritten != 0 || kind != SSL3_RT_HEADER || size < headSize) return;
    const auto* const bytes = static_cast<const unsigned char*>(head);
    auto& tls = *static_cast<CurlTLS*>(self);
    if (connection != tls.connection_) tls.bytes_ = 0;
    tls.connection_ = connection;
    tls.bytes_ += std::size_t{bytes[3]} * 256 + bytes[4];
    if (tls.bytes_ > maxBytes)
      SSL_set_shutdown(connection, SSL_RECEIVED_SHUTDOWN);  // the next read finds the end
  }

  const SSL* connection_ = nullptr;  // the last one that was read from; only compared
  std::size_t bytes_ = 0;
};

}  // namespace TalvoConsentSDK

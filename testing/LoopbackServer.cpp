#include "testing/LoopbackServer.h"

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <stdexcept>
#include <type_traits>
#include <utility>

#include <arpa/inet.h>
#include <netinet/tcp.h>
#include <openssl/ec.h>
#include <openssl/pem.h>
#include <openssl/ssl.h>
#include <openssl/x509v3.h>
#include <sys/socket.h>
#include <unistd.h>

#include "TalvoConsentSDK/base/ASCII.h"

namespace TalvoConsentSDK {

namespace {

void require(bool condition, const char* what) {
  if (!condition) throw std::runtime_error(what);
}

// Owns an object of a C library, which `release` frees.
template <class T, auto release>
using Owner = std::unique_ptr<T, std::integral_constant<decltype(release), release>>;

int choosesProtocol(SSL*, const unsigned char** chosen, unsigned char* size, const unsigned char* offered,
                    unsigned int offeredSize, void*) {
  static constexpr unsigned char known[] = "\x02h2\x08http/1.1";
  auto* const out = const_cast<unsigned char**>(chosen);
  return SSL_select_next_proto(out, size, known, sizeof known - 1, offered, offeredSize) ==
                 OPENSSL_NPN_NEGOTIATED
             ? SSL_TLSEXT_ERR_OK
             : SSL_TLSEXT_ERR_NOACK;
}

std::string between(const std::string& text, std::size_t begin, std::size_t end) {
  return text.substr(begin, end - begin);
}

}  // namespace

TestCertificate::TestCertificate(const std::string& host, int firstDay, int lastDay, bool isSelfSigned) {
  std::string name = (std::filesystem::temp_directory_path() / "certificate-XXXXXX").string();
  require(mkdtemp(name.data()) != nullptr, "mkdtemp");
  folder_ = name;
  certificate_ = folder_ / "certificate.pem";
  key_ = folder_ / "key.pem";

  const Owner<EVP_PKEY, EVP_PKEY_free> key(EVP_EC_gen("P-256")), authority(EVP_EC_gen("P-256"));
  const Owner<X509, X509_free> made(X509_new());
  X509_set_version(made.get(), X509_VERSION_3);
  ASN1_INTEGER_set(X509_get_serialNumber(made.get()), static_cast<long>(std::random_device()() >> 1U));
  X509_time_adj_ex(X509_getm_notBefore(made.get()), firstDay, 0, nullptr);
  X509_time_adj_ex(X509_getm_notAfter(made.get()), lastDay, 0, nullptr);
  X509_set_pubkey(made.get(), key.get());
  const auto nameIt = [](X509_NAME* it, const char* text) {
    X509_NAME_add_entry_by_txt(it, "CN", MBSTRING_ASC, reinterpret_cast<const unsigned char*>(text), -1, -1,
                               0);
  };
  nameIt(X509_get_subject_name(made.get()), "test");
  nameIt(X509_get_issuer_name(made.get()), isSelfSigned ? "test" : "an authority");
  const Owner<X509_EXTENSION, X509_EXTENSION_free> hosts(
      X509V3_EXT_conf_nid(nullptr, nullptr, NID_subject_alt_name, ("DNS:" + host).c_str()));
  X509_add_ext(made.get(), hosts.get(), -1);
  require(X509_sign(made.get(), (isSelfSigned ? key : authority).get(), EVP_sha256()) > 0, "sign");

  const Owner<FILE, std::fclose> toKey(std::fopen(key_.c_str(), "w"));
  const Owner<FILE, std::fclose> toCertificate(std::fopen(certificate_.c_str(), "w"));
  require(toKey && toCertificate &&
              PEM_write_PrivateKey(toKey.get(), key.get(), nullptr, nullptr, 0, nullptr, nullptr) == 1 &&
              PEM_write_X509(toCertificate.get(), made.get()) == 1,
          "write the certificate");
}

TestCertificate::~TestCertificate() {
  std::filesystem::remove_all(folder_);
}

void LoopbackServer::Connection::send(std::string_view bytes) {
  while (!bytes.empty()) {
    const auto sent = tls_ ? SSL_write(tls_, bytes.data(), static_cast<int>(bytes.size()))
                           : ::send(socket_, bytes.data(), bytes.size(), 0);
    if (sent <= 0) return close();
    bytes.remove_prefix(static_cast<std::size_t>(sent));
  }
}

void LoopbackServer::Connection::reply(int status, std::string_view body, std::string_view headers) {
  if (isHTTP2_) {
    HTTP2Fields fields{{":status", std::to_string(status)}, {"content-length", std::to_string(body.size())}};
    if (status == 204 || status == 304) fields.pop_back();
    for (std::size_t at = 0; at < headers.size(); at = headers.find('\n', at) + 1) {
      const std::size_t colon = headers.find(':', at);
      fields.emplace_back(lowercased(headers.substr(at, colon - at)),
                          headers.substr(colon + 2, headers.find('\r', at) - colon - 2));
    }
    const auto sendFrame = [&](std::uint8_t type, std::uint8_t flags, std::string payload) {
      const bool ends = body.empty();
      if (ends) flags |= HTTP2Frame::endsStream;
      send(HTTP2Frame{type, flags, stream_, std::move(payload)}.bytes());
    };
    sendFrame(HTTP2Frame::headers, HTTP2Frame::endsHeaders, headerBlock(fields));
    while (!body.empty()) {
      std::string piece(body.substr(0, 16384));
      body.remove_prefix(piece.size());
      sendFrame(HTTP2Frame::data, 0, std::move(piece));
    }
    return;
  }
  std::string head = "HTTP/1.1 " + std::to_string(status) + " Status\r\n" + std::string(headers);
  if (status != 204 && status != 304) head += "Content-Length: " + std::to_string(body.size()) + "\r\n";
  send(head + "\r\n" + std::string(body));
}

void LoopbackServer::Connection::begin(std::string_view part) {
  if (isHTTP2_)
    send(HTTP2Frame{HTTP2Frame::headers, HTTP2Frame::endsHeaders, stream_, headerBlock({{":status", "200"}})}
             .bytes());
  else
    send("HTTP/1.1 200 Status\r\nContent-Length: 1000000\r\n\r\n");
  more(part);
}

void LoopbackServer::Connection::more(std::string_view part) {
  if (isHTTP2_) return send(HTTP2Frame{HTTP2Frame::data, 0, stream_, std::string(part)}.bytes());
  send(part);
}

void LoopbackServer::Connection::play(const std::string& script) {
  std::optional<HTTP2Frame> frame;  // the next text becomes its payload
  for (std::size_t at = 0; (at = script.find_first_not_of(' ', at)) != std::string::npos && !ends_;) {
    if (script[at] != '"') {
      const std::size_t end = std::min(script.find(' ', at), script.size());
      const std::string word = between(script, std::exchange(at, end), end);
      if (word[0] >= 'A' && word[0] <= 'Z') {
        frame = this->frame(word);
        continue;
      }
      require(word == "pause" || word == "close" || word == "reset" || word == "stall", script.c_str());
      if (word == "pause") std::this_thread::sleep_for(std::chrono::milliseconds(50));
      if (word == "close") close();
      if (word == "reset") reset();
      if (word == "stall") waitForPeer();
      continue;
    }
    std::string text;
    for (++at; script.at(at) != '"'; ++at) {
      if (script[at] != '\\') {
        text += script[at];
      } else if (script.at(++at) == 'n') {
        text += "\r\n";
      } else {
        require(script[at] == 'x', script.c_str());
        text += static_cast<char>(std::stoi(script.substr(at + 1, 2), nullptr, 16));
        at += 2;
      }
    }
    if (++at < script.size() && script[at] == '^') {
      const std::size_t end = std::min(script.find_first_of("* ", at), script.size());
      const std::string once = text;
      for (std::size_t left = std::stoul(between(script, at + 1, end)); left > 1; --left) text += once;
      at = end;
    }
    if (frame) {
      frame->payload = text;
      text = std::exchange(frame, std::nullopt)->bytes();
    }
    require(!text.empty(), script.c_str());
    std::size_t left = 1;
    if (at < script.size() && script[at] == '*') {
      const std::size_t end = std::min(script.find(' ', at), script.size());
      const std::string number = between(script, at + 1, end);
      at = end;
      left = number.empty() ? SIZE_MAX : std::stoul(number);
    }
    // Send in pieces of about 64 KB: repeating a short text is fast then, and repeating a long text takes
    // little memory.
    const std::size_t together = std::min(left, 1 + 65536 / text.size());
    std::string piece;
    for (std::size_t n = 0; n < together; ++n) piece += text;
    for (; left > 0 && !ends_; left -= std::min(left, together)) {
      send(std::string_view(piece).substr(0, std::min(left, together) * text.size()));
    }
  }
}

void LoopbackServer::Connection::reset() {
  const linger now{1, 0};
  setsockopt(socket_, SOL_SOCKET, SO_LINGER, &now, sizeof now);
  close();
}

void LoopbackServer::Connection::waitForPeer() {
  char bytes[256];
  while (read(bytes, sizeof bytes) > 0) {
  }
  close();
}

// "TYPE:FLAGS" or "TYPE:FLAGS:STREAM".
HTTP2Frame LoopbackServer::Connection::frame(const std::string& word) const {
  const std::size_t flags = word.find(':'), stream = word.find(':', flags + 1);
  require(flags != std::string::npos, word.c_str());
  HTTP2Frame frame;
  frame.type = HTTP2Frame::typeNamed(between(word, 0, flags));
  frame.flags = static_cast<std::uint8_t>(std::stoi(word.substr(flags + 1)));
  frame.stream =
      stream == std::string::npos ? stream_ : static_cast<std::uint32_t>(std::stoul(word.substr(stream + 1)));
  return frame;
}

std::size_t LoopbackServer::Connection::read(char* bytes, std::size_t count) {
  const auto got = tls_ ? SSL_read(tls_, bytes, static_cast<int>(count)) : ::recv(socket_, bytes, count, 0);
  if (got <= 0) return 0;
  server_->received(number_, {bytes, static_cast<std::size_t>(got)});
  return static_cast<std::size_t>(got);
}

bool LoopbackServer::Connection::readUntil(const std::function<bool()>& done) {
  char bytes[65536];
  while (!done()) {
    const std::size_t got = read(bytes, sizeof bytes);
    if (got == 0) return false;
    unread_.append(bytes, got);
  }
  return true;
}

std::string LoopbackServer::Connection::take(std::size_t count) {
  std::string taken = unread_.substr(0, count);
  unread_.erase(0, count);
  return taken;
}

LoopbackServer::Request LoopbackServer::Connection::newRequest() const {
  Request request;
  request.connection = number_;
  request.hasResumedSession = tls_ && SSL_session_reused(tls_) == 1;
  return request;
}

std::optional<LoopbackServer::Request> LoopbackServer::Connection::receive() {
  std::size_t end = 0;
  if (!readUntil([&] { return (end = unread_.find("\r\n\r\n")) != std::string::npos; })) return std::nullopt;

  Request request = newRequest();
  const std::string head = take(end + 4).substr(0, end + 2);
  const std::size_t line = head.find("\r\n");
  const std::size_t space = head.find(' ');
  request.method = head.substr(0, space);
  request.target = between(head, space + 1, head.find(' ', space + 1));
  for (std::size_t at = line + 2; at < head.size(); at = head.find("\r\n", at) + 2) {
    const std::size_t colon = head.find(':', at);
    const std::size_t value = head.find_first_not_of(' ', colon + 1);
    request.headers[between(head, at, colon)] = between(head, value, head.find("\r\n", at));
  }
  const std::size_t number = server_->note(request);
  const auto length = request.headers.find("Content-Length");
  const std::size_t size = length == request.headers.end() ? 0 : std::stoul(length->second);
  if (!readUntil([&] { return unread_.size() >= size; })) return std::nullopt;
  request.body = take(size);
  const std::scoped_lock guard(server_->lock_);
  return server_->requests_[number] = request;
}

std::optional<LoopbackServer::Request> LoopbackServer::Connection::receiveHTTP2() {
  for (;;) {
    if (!readUntil([&] { return unread_.size() >= HTTP2Frame::headSize; })) return std::nullopt;
    const std::size_t size = HTTP2Frame::headSize + HTTP2Frame::payloadSize(unread_);
    if (!readUntil([&] { return unread_.size() >= size; })) return std::nullopt;
    const HTTP2Frame frame = HTTP2Frame::read(take(size));
    if (frame.type == HTTP2Frame::settings && !(frame.flags & HTTP2Frame::ack)) play(R"(SETTINGS:1:0 "")");
    if (frame.type == HTTP2Frame::headers) {
      Request request = newRequest();
      for (auto& [name, value] : headers_.read(frame)) {
        server_->received(number_, name + ": " + value + "\r\n");
        (name == ":method" ? request.method
         : name == ":path" ? request.target
                           : request.headers[name]) = value;
      }
      open_[frame.stream] = server_->note(std::move(request));
    } else if (frame.type != HTTP2Frame::data) {
      continue;
    }
    const std::scoped_lock guard(server_->lock_);
    Request& request = server_->requests_[open_.at(frame.stream)];
    if (frame.type == HTTP2Frame::data) request.body += frame.payload;
    if (!(frame.flags & HTTP2Frame::endsStream)) continue;
    stream_ = frame.stream;
    return request;
  }
}

LoopbackServer::LoopbackServer(Handler handler, const TestCertificate* identity, int onlyTLS,
                               std::string greeting)
    : handler_(std::move(handler)), greeting_(std::move(greeting)) {
  if (identity) {
    tls_ = SSL_CTX_new(TLS_server_method());
    require(SSL_CTX_use_certificate_file(tls_, identity->certificate().c_str(), SSL_FILETYPE_PEM) == 1 &&
                SSL_CTX_use_PrivateKey_file(tls_, identity->key().c_str(), SSL_FILETYPE_PEM) == 1,
            "certificate");
    if (!greeting_.empty()) SSL_CTX_set_alpn_select_cb(tls_, choosesProtocol, nullptr);
    if (onlyTLS != 0) {
      SSL_CTX_set_cipher_list(tls_, "DEFAULT:@SECLEVEL=0");
      require(SSL_CTX_set_min_proto_version(tls_, onlyTLS) && SSL_CTX_set_max_proto_version(tls_, onlyTLS),
              "the version of TLS");
    }
  }
  listener_ = ::socket(AF_INET, SOCK_STREAM, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t size = sizeof address;
  auto* const any = reinterpret_cast<sockaddr*>(&address);
  require(bind(listener_, any, size) == 0 && listen(listener_, 512) == 0 &&
              getsockname(listener_, any, &size) == 0,
          "listen");
  port_ = ntohs(address.sin_port);
  acceptor_ = std::thread([this] { accept(); });
}

LoopbackServer::~LoopbackServer() {
  shutdown(listener_, SHUT_RDWR);
  acceptor_.join();
  ::close(listener_);
  connections_ = minConnections_ = 0;
  connections_.notify_all();
  {
    const std::scoped_lock guard(lock_);
    for (const int socket : open_) shutdown(socket, SHUT_RDWR);
  }
  for (std::thread& thread : threads_) thread.join();
  SSL_CTX_free(tls_);
}

std::string LoopbackServer::url(std::string_view path, std::string_view host) const {
  return (tls_ ? "https://" : "http://") + std::string(host) + ":" + std::to_string(port_) +
         std::string(path);
}

std::vector<LoopbackServer::Request> LoopbackServer::requests() const {
  const std::scoped_lock guard(lock_);
  return requests_;
}

std::size_t LoopbackServer::seen(std::string_view text) const {
  const std::scoped_lock guard(lock_);
  std::size_t times = 0;
  for (const auto& [connection, bytes] : received_) {
    for (std::size_t at = 0; (at = bytes.find(text, at)) != std::string::npos; ++at) ++times;
  }
  return times;
}

void LoopbackServer::received(int connection, std::string_view text) {
  const std::scoped_lock guard(lock_);
  received_[connection].append(text);
}

std::size_t LoopbackServer::note(Request request) {
  const std::scoped_lock guard(lock_);
  requests_.push_back(std::move(request));
  return requests_.size() - 1;
}

void LoopbackServer::accept() {
  for (;;) {
    const int socket = ::accept(listener_, nullptr, nullptr);
    if (socket < 0) return;
    const int on = 1;
    setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    const std::scoped_lock guard(lock_);
    open_.push_back(socket);
    threads_.emplace_back([this, socket, number = ++connections_] { serve(socket, number); });
    connections_.notify_all();
  }
}

void LoopbackServer::serve(int socket, int number) {
  sigset_t pipe;
  sigemptyset(&pipe);
  sigaddset(&pipe, SIGPIPE);
  pthread_sigmask(SIG_BLOCK, &pipe, nullptr);

  for (int now = connections_; now < minConnections_; now = connections_) connections_.wait(now);
  Connection connection;
  connection.server_ = this;
  connection.number_ = number;
  connection.socket_ = socket;
  if (tls_) {
    connection.tls_ = SSL_new(tls_);
    SSL_set_fd(connection.tls_, socket);
    connection.ends_ = SSL_accept(connection.tls_) != 1;
    const unsigned char* protocol = nullptr;
    unsigned int size = 0;
    SSL_get0_alpn_selected(connection.tls_, &protocol, &size);
    connection.isHTTP2_ = size == 2;
  }
  constexpr std::string_view preface = "PRI * HTTP/2.0\r\n\r\nSM\r\n\r\n";
  if (connection.isHTTP2_ &&
      connection.readUntil([&] { return connection.unread_.size() >= preface.size(); })) {
    require(connection.take(preface.size()) == preface, "the preface");
    connection.play(greeting_);
  }
  while (!connection.ends_) {
    const auto request = connection.isHTTP2_ ? connection.receiveHTTP2() : connection.receive();
    if (!request) break;
    handler_(*request, connection);
  }
  SSL_free(connection.tls_);
  const std::scoped_lock guard(lock_);
  std::erase(open_, socket);
  ::close(socket);
}

}  // namespace TalvoConsentSDK

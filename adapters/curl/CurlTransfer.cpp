#include "adapters/curl/CurlTransfer.h"

#include <algorithm>
#include <array>
#include <new>
#include <string_view>
#include <utility>

#include <curl/curl.h>

namespace TalvoConsentSDK {

using namespace platform;

namespace {

constexpr int maxRedirects = 20;

// The limit of a decompressed body: `alwaysDecompressed` bytes, or `maxDecompression` times the bytes
// received if that is more.
constexpr std::size_t alwaysDecompressed = 1'000'000;
constexpr std::size_t maxDecompression = 50;

// Adding a limit to a time must not overflow.
std::chrono::milliseconds idleLimit(const URLRequest& request, const CurlRules& rules) {
  using namespace std::chrono_literals;
  const auto limit = std::min(request.timeout, rules.maxTimeout.value_or(request.timeout));
  return std::clamp<std::chrono::milliseconds>(limit, 1ms, 24h);
}

std::optional<std::chrono::milliseconds> totalLimit(const URLRequest& request, const CurlRules& rules) {
  using namespace std::chrono_literals;
  constexpr auto most = std::chrono::milliseconds::max();
  const auto limit = std::min(request.totalTimeout.value_or(most), rules.maxTotalTimeout.value_or(most));
  if (limit == most) return std::nullopt;
  return std::clamp<std::chrono::milliseconds>(limit, 1ms, 24h * 365);
}

// Headers that are not sent after a redirect to another origin: credentials, and the marks of a reply that
// this origin gave, by which another one could recognise the device.
bool belongsToOrigin(const std::string& name) {
  constexpr std::array names{"Authorization", "Proxy-Authorization", "Cookie", "If-None-Match",
                             "If-Modified-Since"};
  return std::ranges::any_of(names, [&](const char* each) { return sameText(name, each); });
}

bool mayHaveBody(const URLRequest& request) {
  return request.method == "POST" || request.method == "PUT";
}

std::optional<PlatformError> refusal(const URLRequest& request) {
  const auto refused = [](std::string text) {
    return curlError(CURLE_BAD_FUNCTION_ARGUMENT, std::move(text));
  };
  if (!mayHaveBody(request) && request.method != "GET" && request.method != "HEAD") {
    return refused("The request's method is not GET, HEAD, POST or PUT");
  }
  if (request.body && !mayHaveBody(request))
    return refused("A " + request.method + " request cannot have a body");
  for (const auto& [name, value] : request.headers) {
    if (!isHeaderName(name)) return refused("A header has an invalid name");
    if (value.find_first_of(std::string_view("\r\n\0", 3)) != std::string::npos) {
      return refused("The value of the header " + name + " contains a line break or NUL");
    }
  }
  return std::nullopt;
}

}  // namespace

void CurlTransfer::ListDeleter::operator()(curl_slist* list) const noexcept {
  curl_slist_free_all(list);
}

CurlTransfer::CurlTransfer(CurlShared& shared, URLRequest request, Clock::time_point start, CurlHandle handle)
    : shared_(shared),
      rules_(shared.rules),
      request_(std::move(request)),
      idleLimit_(idleLimit(request_, rules_)),
      totalLimit_(totalLimit(request_, rules_)),
      end_(totalLimit_ ? start + *totalLimit_ : Clock::time_point::max()),
      keepsOrigin_(mayHaveBody(request_)),
      handle_(handle ? std::move(handle) : makeHandle(shared)) {}

// libcurl may use a remembered handle until its connection is closed, and must not write an error's text to a
// transfer that has been destroyed.
CurlHandle CurlTransfer::takeHandle() {
  curl_easy_setopt(handle(), CURLOPT_ERRORBUFFER, nullptr);
  return std::move(handle_);
}

std::optional<PlatformError> CurlTransfer::prepare() {
  if (auto refused = refusal(request_)) return refused;
  target_ = CurlTarget::parse(request_.url.text().c_str());
  if (!target_) return curlError(CURLE_URL_MALFORMAT, "The request's URL cannot be used");
  return configure();
}

std::optional<CurlTransfer::Outcome> CurlTransfer::finish(int code) {
  if (rejection_) return *rejection_;
  if (isSecondAttempt_) {
    return curlError(CURLE_SEND_FAIL_REWIND,
                     "The service did not accept the " + request_.method + ", which is not sent again");
  }
  if (isStaleConnection_) {
    avoidsPool_ = true;
    if (auto refused = configure()) return *refused;
    return std::nullopt;
  }
  // libcurl also uses this code for a single line of more than 100 KB. Before the first byte, the code really
  // means a lack of memory.
  if (code == CURLE_OUT_OF_MEMORY && !header_.isWhole() && timeOf(CURLINFO_STARTTRANSFER_TIME_T) > 0)
    return tooLargeHeaderError();
  // libcurl uses this code for a line that is not a header, and for a folded first line.
  if (code == CURLE_BAD_FUNCTION_ARGUMENT)
    return curlError(CURLE_WEIRD_SERVER_REPLY, "The reply's header cannot be read");
  if (code != CURLE_OK) {
    const char* const text = curl_easy_strerror(static_cast<CURLcode>(code));
    return curlError(code, errorText_.front() ? errorText_.data() : text);
  }
  if (!header_.isWhole()) return curlError(CURLE_PARTIAL_FILE, "The connection was closed within the header");
  long status = 0;
  const char* location = nullptr;
  curl_easy_getinfo(handle(), CURLINFO_RESPONSE_CODE, &status);
  curl_easy_getinfo(handle(), CURLINFO_REDIRECT_URL, &location);
  // If the HTTP version has several digits, libcurl may misread the status, even as a negative number.
  if (status != header_.status())
    return curlError(CURLE_WEIRD_SERVER_REPLY, "The reply's status cannot be read");
  const bool redirects = status == 301 || status == 302 || status == 303 || status == 307 || status == 308;
  if (redirects && location) {
    if (auto refused = follow(static_cast<int>(status), location)) return *refused;
    return std::nullopt;
  }
  if (isCompressedTooWell(body_.size(), 0)) return tooWellCompressedError(maxDecompression);
  URLResponse response;
  response.statusCode = static_cast<int>(status);
  try {
    response.headers = header_.takeHeaders();
    response.url = redirects_ == 0 ? request_.url : URL::parse(target_->part(CURLUPART_URL));
    if (request_.method != "HEAD" && status != 204 && status != 304) response.body = body_.take();
  } catch (const std::bad_alloc&) {
    return curlError(CURLE_OUT_OF_MEMORY, "There is not enough memory for the reply");
  }
  return response;
}

std::optional<PlatformError> CurlTransfer::follow(int status, const char* location) {
  if (++redirects_ > maxRedirects) {
    return curlError(CURLE_TOO_MANY_REDIRECTS,
                     "More than " + std::to_string(maxRedirects) + " redirects in a row");
  }
  auto next = CurlTarget::parse(location);
  if (!next) return curlError(CURLE_URL_MALFORMAT, "A redirect's URL cannot be used");
  if (target_->scheme == "https" && next->scheme != "https") {
    return curlError(CURLE_UNSUPPORTED_PROTOCOL, "A redirect from https to " + next->scheme + " is refused");
  }
  const bool leaves = !next->sharesOrigin(*target_);
  if (leaves && keepsOrigin_)
    return curlError(CURLE_TOO_MANY_REDIRECTS, "A POST or PUT is not redirected to another origin");
  if (status <= 302 && request_.method == "PUT")
    return curlError(CURLE_SEND_FAIL_REWIND,
                     "A PUT is sent again only for a redirect with status 307 or 308");
  if (status <= 303 && mayHaveBody(request_)) {
    request_.method = "GET";
    request_.headers.erase("Content-Type");
  }
  leftOrigin_ = leftOrigin_ || leaves;
  target_ = std::move(next);
  return configure();
}

std::optional<PlatformError> CurlTransfer::configure() {
  const bool plain = target_->scheme == "http";
  if (!plain && target_->scheme != "https") {
    return curlError(CURLE_UNSUPPORTED_PROTOCOL, "Requests must use https, not " + target_->scheme);
  }
  if (plain && !rules_.allowsPlainHTTP && !target_->isLoopback()) {
    return curlError(CURLE_UNSUPPORTED_PROTOCOL, "Plain http is refused, use https: " + target_->host);
  }
  body_ = {};
  header_ = CurlHeader(request_.method == "HEAD" ? std::nullopt : std::optional(rules_.maxReply));
  localPort_ = 0;
  isNewConnection_ = isConnected_ = isHTTP2_ = isSecondAttempt_ = isStaleConnection_ = false;
  rejection_.reset();
  errorText_.front() = '\0';
  progress_ = {};
  lastProgress_ = Clock::now();
  configureConnection();
  configureMessage();
  return std::nullopt;
}

// Makes a handle with the options that all transfers of a session share. The others are set before each run.
CurlHandle CurlTransfer::makeHandle(CurlShared& shared) {
  const CurlRules& rules = shared.rules;
  CurlHandle handle(curl_easy_init());
  if (!handle) throw std::bad_alloc();
  CURL* const easy = handle.get();
  curl_easy_setopt(easy, CURLOPT_FOLLOWLOCATION, 0L);  // `follow` handles redirects one by one
  curl_easy_setopt(easy, CURLOPT_SSLVERSION, long{CURL_SSLVERSION_TLSv1_2});
  curl_easy_setopt(easy, CURLOPT_SSL_VERIFYPEER, 1L);
  curl_easy_setopt(easy, CURLOPT_SSL_VERIFYHOST, 2L);
  if (!rules.certificates.empty()) {
    curl_blob blob{const_cast<char*>(rules.certificates.data()), rules.certificates.size(), CURL_BLOB_NOCOPY};
    curl_easy_setopt(easy, CURLOPT_CAINFO_BLOB, &blob);
  } else if (rules.hasCertificateFile) {
    // If a folder is set as well, libcurl reads the file again for every connection.
    curl_easy_setopt(easy, CURLOPT_CAPATH, nullptr);
  }
  if (rules.usesOpenSSL) {  // the context of another TLS library has another type
    constexpr auto made = [](void*, void* context, void* data) {
      static_cast<CurlTLS*>(data)->configure(static_cast<SSL_CTX*>(context));
      return CURLE_OK;
    };
    curl_easy_setopt(easy, CURLOPT_SSL_CTX_FUNCTION, static_cast<curl_ssl_ctx_callback>(made));
    curl_easy_setopt(easy, CURLOPT_SSL_CTX_DATA, &shared.tls);
  }
  curl_easy_setopt(easy, CURLOPT_SHARE, shared.tlsSessions.get());
  curl_easy_setopt(easy, CURLOPT_ACCEPT_ENCODING, "");  // every encoding that this libcurl can decode
  curl_easy_setopt(easy, CURLOPT_SUPPRESS_CONNECT_HEADERS, 1L);  // they belong to the proxy
  curl_easy_setopt(easy, CURLOPT_NOSIGNAL, 1L);
  curl_easy_setopt(easy, CURLOPT_QUICK_EXIT, 1L);  // do not wait for a slow name server when a transfer ends

  constexpr auto received = [](char* bytes, std::size_t, std::size_t count, void* self) {
    return static_cast<CurlTransfer*>(self)->receive({bytes, count});
  };
  curl_easy_setopt(easy, CURLOPT_WRITEFUNCTION, static_cast<curl_write_callback>(received));
  constexpr auto receivedHeader = [](char* bytes, std::size_t, std::size_t count, void* self) {
    return static_cast<CurlTransfer*>(self)->receiveHeader({bytes, count});
  };
  curl_easy_setopt(easy, CURLOPT_HEADERFUNCTION, static_cast<curl_write_callback>(receivedHeader));
  constexpr auto connects = [](void* self, curl_socket_t socket, curlsocktype) {
    static_cast<CurlTransfer*>(self)->shared_.sockets.add(socket);
    static_cast<CurlTransfer*>(self)->isNewConnection_ = true;
    return CURL_SOCKOPT_OK;
  };
  curl_easy_setopt(easy, CURLOPT_SOCKOPTFUNCTION, static_cast<curl_sockopt_callback>(connects));
  constexpr auto closes = [](void* sockets, curl_socket_t socket) {
    return static_cast<CurlSockets*>(sockets)->close(socket);
  };
  curl_easy_setopt(easy, CURLOPT_CLOSESOCKETFUNCTION, static_cast<curl_closesocket_callback>(closes));
  curl_easy_setopt(easy, CURLOPT_CLOSESOCKETDATA, &shared.sockets);
  constexpr auto isConnected = [](void* self, char*, char*, int, int localPort) {
    return static_cast<CurlTransfer*>(self)->maySend(localPort) ? CURL_PREREQFUNC_OK : CURL_PREREQFUNC_ABORT;
  };
  curl_easy_setopt(easy, CURLOPT_PREREQFUNCTION, static_cast<curl_prereq_callback>(isConnected));
  constexpr auto moved = [](void* self, curl_off_t, curl_off_t down, curl_off_t, curl_off_t up) {
    return static_cast<CurlTransfer*>(self)->noteProgress(down, up) ? 0 : 1;
  };
  curl_easy_setopt(easy, CURLOPT_XFERINFOFUNCTION, static_cast<curl_xferinfo_callback>(moved));
  curl_easy_setopt(easy, CURLOPT_NOPROGRESS, 0L);
  return handle;
}

void CurlTransfer::configureConnection() {
  CURL* const easy = handle();
  curl_easy_setopt(easy, CURLOPT_CURLU, target_->url.get());
  curl_easy_setopt(easy, CURLOPT_PROTOCOLS_STR, target_->scheme.c_str());
  curl_easy_setopt(easy, CURLOPT_PROXY, target_->isLoopback() ? "" : nullptr);
  // A POST or PUT gets a fresh connection: if a reused one closed without an answer, libcurl would send it
  // again.
  curl_easy_setopt(easy, CURLOPT_FRESH_CONNECT, mayHaveBody(request_) || avoidsPool_ ? 1L : 0L);

  // A request waits for a connection to its origin that is being opened, and shares it over HTTP/2. Over
  // plain http, it would wait for the reply to the first request.
  const bool waits = target_->scheme == "https" && shared_.origins.mayShare(target_->origin());
  curl_easy_setopt(easy, CURLOPT_PIPEWAIT, waits ? 1L : 0L);

  // Limits the time to connect; our own idle limit applies first. If a host has several addresses, libcurl
  // spends at most half of the remaining time on each address except the last, so an address that does not
  // answer leaves time for the next one.
  const auto limit = std::min(idleLimit_, totalLimit_.value_or(idleLimit_)).count();
  curl_easy_setopt(easy, CURLOPT_CONNECTTIMEOUT_MS, static_cast<long>(limit + limit / 2));

  for (const CURLoption data : {CURLOPT_WRITEDATA, CURLOPT_HEADERDATA, CURLOPT_SOCKOPTDATA,
                                CURLOPT_PREREQDATA, CURLOPT_XFERINFODATA}) {
    curl_easy_setopt(easy, data, this);
  }
  curl_easy_setopt(easy, CURLOPT_ERRORBUFFER, errorText_.data());
  static_assert(std::tuple_size_v<decltype(errorText_)> >= CURL_ERROR_SIZE);
}

void CurlTransfer::configureMessage() {
  CURL* const easy = handle();
  const std::string* const body = request_.body ? &*request_.body : nullptr;
  curl_easy_setopt(easy, CURLOPT_POSTFIELDS, body ? body->data() : "");
  curl_easy_setopt(easy, CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(body ? body->size() : 0));
  curl_easy_setopt(easy, CURLOPT_CUSTOMREQUEST, request_.method == "PUT" ? "PUT" : nullptr);
  if (mayHaveBody(request_)) {
    curl_easy_setopt(easy, CURLOPT_POST, 1L);
  } else {
    curl_easy_setopt(easy, CURLOPT_HTTPGET, 1L);
    if (request_.method == "HEAD") curl_easy_setopt(easy, CURLOPT_NOBODY, 1L);
  }
  curl_easy_setopt(easy, CURLOPT_HEADER, 1L);  // `receive` gets each line before libcurl parses it

  headers_.reset();
  const auto add = [this](const std::string& line) {
    curl_slist* const longer = curl_slist_append(headers_.get(), line.c_str());
    if (!longer) throw std::bad_alloc();
    static_cast<void>(headers_.release());
    headers_.reset(longer);
  };
  if (mayHaveBody(request_)) {
    add("Expect:");                                                        // do not wait for "100 Continue"
    if (!request_.headers.contains("Content-Type")) add("Content-Type:");  // do not claim to send a form
  }
  for (const auto& [name, value] : request_.headers) {
    if (leftOrigin_ && belongsToOrigin(name)) continue;
    const bool blank = value.find_first_not_of(" \t") == std::string::npos;
    add(blank ? name + ";" : name + ": " + value);  // libcurl's way to send a header without a value
  }
  curl_easy_setopt(easy, CURLOPT_HTTPHEADER, headers_.get());
}

// libcurl calls this before it sends a request. It calls it again before it repeats a request by itself:
// after a refused stream, after a shared connection closed without an answer, or when the service demands
// HTTP/1.1.
bool CurlTransfer::maySend(int localPort) {
  const bool isRepeated = std::exchange(isConnected_, true);
  localPort_ = localPort;
  wasRepeated_ = wasRepeated_ || isRepeated;
  isSecondAttempt_ = isRepeated && mayHaveBody(request_);
  // Over HTTP/2, frames may arrive at any time and are never mistaken for another stream's reply.
  const SSL* const tls = tlsConnection();
  isHTTP2_ = CurlTLS::usesHTTP2(tls);
  if (tls) shared_.origins.note(target_->origin(), isHTTP2_);
  isStaleConnection_ =
      !isNewConnection_ && !isHTTP2_ && (CurlTLS::hasInput(tls) || shared_.sockets.hasInput(localPort));
  lastProgress_ = Clock::now();
  return !isSecondAttempt_ && !isStaleConnection_;
}

// Null without TLS, and if libcurl uses a TLS library other than OpenSSL.
const SSL* CurlTransfer::tlsConnection() const {
  const curl_tlssessioninfo* session = nullptr;
  curl_easy_getinfo(handle(), CURLINFO_TLS_SSL_PTR, &session);
  const bool isOpenSSL = session && session->backend == CURLSSLBACKEND_OPENSSL && rules_.usesOpenSSL;
  return isOpenSSL ? static_cast<const SSL*>(session->internals) : nullptr;
}

void CurlTransfer::remind() {
  if (Clock::now() - lastProgress_ >= reminder) wakeUp();
}

void CurlTransfer::wakeUp() {
  if (!isHTTP2_) return;
  curl_easy_pause(handle(), CURLPAUSE_RECV);
  curl_easy_pause(handle(), CURLPAUSE_CONT);
}

// In microseconds; 0 until the transfer reaches the step.
std::int64_t CurlTransfer::timeOf(int step) const {
  curl_off_t microseconds = 0;
  curl_easy_getinfo(handle(), static_cast<CURLINFO>(step), &microseconds);
  return microseconds;
}

// Returning false ends the transfer. `maxReply` limits the compressed bytes too, since an endless body may
// decompress to nothing.
bool CurlTransfer::noteProgress(std::int64_t received, std::int64_t sent) {
  if (static_cast<std::uint64_t>(received) > rules_.maxReply) {
    refuse(tooLargeError(rules_.maxReply));
    return false;
  }
  Progress now{progress_.steps, header_.bytes(), received, sent};
  if (!isConnected_) {
    now.steps = timeOf(CURLINFO_NAMELOOKUP_TIME_T) + timeOf(CURLINFO_CONNECT_TIME_T) +
                timeOf(CURLINFO_APPCONNECT_TIME_T);
  }
  if (now == progress_) return true;
  progress_ = now;
  lastProgress_ = Clock::now();
  return true;
}

std::size_t CurlTransfer::refuse(PlatformError reason) {
  rejection_ = std::move(reason);
  return CURL_WRITEFUNC_ERROR;
}

// Called with the pieces of the header lines first, then with the body.
std::size_t CurlTransfer::receive(std::string_view bytes) {
  shared_.tls.noteReply();
  if (!header_.isWhole()) {
    if (header_.allows(bytes)) return bytes.size();
    return refuse(curlError(CURLE_WEIRD_SERVER_REPLY, "The reply's header cannot be read"));
  }
  if (bytes.size() > rules_.maxReply - body_.size()) return refuse(tooLargeError(rules_.maxReply));
  // libcurl may pass on the decompressed content of a whole buffer before it counts the buffer as received.
  if (isCompressedTooWell(body_.size() + bytes.size(), CURL_MAX_WRITE_SIZE)) {
    return refuse(tooWellCompressedError(maxDecompression));
  }
  try {
    body_.append(bytes);
  } catch (const std::bad_alloc&) {  // must not pass through libcurl
    return CURL_WRITEFUNC_ERROR;
  }
  return bytes.size();
}

bool CurlTransfer::isCompressedTooWell(std::size_t size, std::size_t uncounted) const {
  if (size <= alwaysDecompressed) return false;
  curl_off_t received = 0;
  curl_easy_getinfo(handle(), CURLINFO_SIZE_DOWNLOAD_T, &received);
  return size > maxDecompression * (static_cast<std::uint64_t>(received) + uncounted);
}

std::size_t CurlTransfer::receiveHeader(std::string_view line) {
  try {
    if (auto reason = header_.add(line)) return refuse(*std::move(reason));
  } catch (const std::bad_alloc&) {
    return CURL_WRITEFUNC_ERROR;
  }
  if (header_.isWhole())
    curl_easy_setopt(handle(), CURLOPT_HEADER, 0L);  // trailers must not be passed on as body
  return line.size();
}

PlatformError CurlTransfer::timeoutError() const {
  const bool isWhole = totalLimit_ && end_ <= lastProgress_ + idleLimit_;
  return curlError(CURLE_OPERATION_TIMEDOUT,
                   isWhole ? "No reply within " + std::to_string(totalLimit_->count()) + " ms"
                           : "No progress for " + std::to_string(idleLimit_.count()) + " ms");
}

void CurlTransfer::noteWaitInVain() {
  if (!isConnected_) shared_.origins.note(target_->origin(), false);
}

}  // namespace TalvoConsentSDK

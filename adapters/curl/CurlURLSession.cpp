#include "adapters/curl/CurlURLSession.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <limits>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include <curl/curl.h>

#include "adapters/curl/CurlWorker.h"

namespace TalvoConsentSDK {

using namespace platform;

namespace {

// A string cannot be larger than PTRDIFF_MAX, and `CurlBody::take` briefly holds the body twice.
constexpr std::size_t maxReplyHeld = std::numeric_limits<std::ptrdiff_t>::max() / 2;

void initialiseCurl() {
  static const CURLcode code = curl_global_init(CURL_GLOBAL_DEFAULT);
  if (code != CURLE_OK) throw curlError(code, curl_easy_strerror(code));
}

std::string contents(const std::filesystem::path& file) {
  std::ifstream stream(file, std::ios::binary);
  std::string text{std::istreambuf_iterator<char>(stream), {}};
  if (text.empty()) {
    throw curlError(CURLE_SSL_CACERT_BADFILE, "The certificates cannot be read: " + file.string());
  }
  return text;
}

CurlRules rulesFor(const CurlOptions& options) {
  initialiseCurl();
  CurlRules rules;
  rules.allowsPlainHTTP = options.allowsPlainHTTP;
  rules.maxReply = std::min(options.maxReply, maxReplyHeld);
  rules.maxTimeout = options.maxTimeout;
  rules.maxTotalTimeout = options.maxTotalTimeout;
  const std::unique_ptr<CURL, decltype(&curl_easy_cleanup)> easy(curl_easy_init(), &curl_easy_cleanup);
  const char* system = nullptr;
  curl_easy_getinfo(easy.get(), CURLINFO_CAINFO, &system);
  rules.hasCertificateFile = system != nullptr;
  const char* const tls = curl_version_info(CURLVERSION_NOW)->ssl_version;
  rules.usesOpenSSL = tls && std::string_view(tls).starts_with("OpenSSL/");
  rules.mayForgetReplies = curl_version_info(CURLVERSION_NOW)->version_num < 0x080000;
  if (options.certificates) {
    if (system) rules.certificates = contents(system) + "\n";
    rules.certificates += contents(*options.certificates);
  }
  return rules;
}

}  // namespace

CurlURLSession::CurlURLSession(const CurlOptions& options)
    : worker_(std::make_shared<Worker>(rulesFor(options))),
      thread_(std::make_unique<ParkedThread>(
          [worker = worker_](const std::atomic<bool>& stop) { worker->run(stop); },
          [worker = worker_] { worker->wake(); })) {}

CurlURLSession::~CurlURLSession() {
  worker_->close();
}

void CurlURLSession::run(URLRequest request, Completion completion) {
  if (request.cancellation) {
    request.cancellation->observe([worker = std::weak_ptr(worker_)] {
      if (const auto held = worker.lock()) held->noteCancellation();
    });
  }
  worker_->add(std::move(request), std::move(completion));
}

}  // namespace TalvoConsentSDK

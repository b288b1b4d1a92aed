#include "adapters/curl/CurlURLSession.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <fstream>
#include <functional>
#include <iterator>
#include <limits>
#include <mutex>
#include <new>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include <curl/curl.h>

#include "TalvoConsentSDK/platform/Printer.h"

#include "adapters/curl/CurlTransfer.h"

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

/// The state shared by the session and its thread. `add`, `noteCancellation`, `wake` and `close` may be
/// called on any thread; the rest belongs to the worker thread.
///
/// When the process exits, the TLS library is shut down while the thread may still be running. So the thread
/// holds `inCurl_` whenever it is inside libcurl, and checks `stop` before it enters. Once `wake` has held
/// `inCurl_` with `stop` set, the thread does not enter libcurl again, except in `end`, which runs only if
/// the session was closed. Completions run without `inCurl_`, so a completion that never returns does not
/// delay the exit.
class CurlURLSession::Worker {
 public:
  explicit Worker(CurlRules rules) : shared_(std::move(rules)), multi_(curl_multi_init()) {
    if (!multi_) throw std::bad_alloc();
    // Checks that libcurl could open the file descriptors that it uses to wake the thread: without them,
    // nothing could ever wake it. If all is well, the call only shortens the first wait.
    if (const CURLMcode code = curl_multi_wakeup(multi_); code != CURLM_OK) {
      curl_multi_cleanup(multi_);
      throw curlError(CURLE_FAILED_INIT,
                      std::string("libcurl cannot run requests: ") + curl_multi_strerror(code));
    }
  }

  // `end` has freed libcurl's handle, unless the process is exiting.
  ~Worker() = default;

  void add(URLRequest request, Completion completion) {
    const std::scoped_lock guard(lock_);
    arrivals_.push_back({std::move(request), std::move(completion), Clock::now()});
    if (std::exchange(waits_, false)) curl_multi_wakeup(multi_);
  }

  /// Call this after a request has been cancelled, whether or not it is still running.
  void noteCancellation() {
    const std::scoped_lock guard(lock_);
    hasCancellation_ = true;
    if (std::exchange(waits_, false)) curl_multi_wakeup(multi_);
  }

  /// Call this with `stop` set: when it returns, the thread has left libcurl. That can take seconds on a busy
  /// device, because the thread may be reading certificates or making a TLS handshake. If the process ended
  /// meanwhile, it would crash. The limit of a minute is only for a libcurl that never returns.
  void wake() {
    {
      const std::scoped_lock guard(lock_);
      if (multi_) curl_multi_wakeup(multi_);
    }
    if (inCurl_.try_lock_for(std::chrono::minutes(1))) inCurl_.unlock();
  }

  /// Makes `run` end all requests when `stop` is set. Without this call, `run` leaves them unanswered, as
  /// when the process exits.
  void close() { closed_ = true; }

  void run(const std::atomic<bool>& stop) {
    std::vector<Ending> endings;
    while (!stop) {
      {
        const std::scoped_lock guard(inCurl_);
        if (stop) break;
        begin(endings);
        if (takeCancellation()) endCancelled(endings);
        remind();
        int running = 0;
        shared_.tls.noteReply();
        curl_multi_perform(multi_, &running);
        finish(endings);
        endOverdue(endings);
        freeRemembered();
        if (endings.empty() && setWaits(true)) {
          curl_multi_poll(multi_, nullptr, 0, untilNextDeadline(), nullptr);
          setWaits(false);
        }
      }
      report(endings, stop);
    }
    if (!closed_) return;
    end(endings);
    report(endings, stop);
  }

 private:
  using Clock = CurlTransfer::Clock;
  static constexpr std::size_t maxSpare = 32;  // about 6 KB each

  struct Arrival {
    URLRequest request;
    Completion completion;
    Clock::time_point time;
  };
  struct Running {
    std::unique_ptr<CurlTransfer> transfer;
    Completion completion;
  };
  struct Remembered {  // see `CurlTransfer::isHandleRemembered`
    int port;
    CurlHandle handle;
  };
  struct Ending {
    Completion completion;
    CurlTransfer::Outcome outcome;
  };

  // Sets and returns whether the thread waits: only if `waits` is true and no request has arrived.
  bool setWaits(bool waits) {
    const std::scoped_lock guard(lock_);
    waits_ = waits && arrivals_.empty() && !hasCancellation_;
    return waits_;
  }

  bool takeCancellation() {
    const std::scoped_lock guard(lock_);
    return std::exchange(hasCancellation_, false);
  }

  std::vector<Arrival> takeArrivals() {
    const std::scoped_lock guard(lock_);
    return std::exchange(arrivals_, {});
  }

  void begin(std::vector<Ending>& endings) {
    for (auto& [request, completion, time] : takeArrivals()) {
      if (request.cancellation && request.cancellation->isCancelled()) {
        endings.push_back({std::move(completion), cancelledError()});
        continue;
      }
      auto transfer = std::make_unique<CurlTransfer>(shared_, std::move(request), time, takeSpare());
      if (auto refused = transfer->prepare()) {
        endings.push_back({std::move(completion), *std::move(refused)});
        continue;
      }
      void* const handle = transfer->handle();
      running_[handle] = {std::move(transfer), std::move(completion)};
      enter(handle, endings);
    }
  }

  // If libcurl does not accept a handle, its request ends here.
  void enter(void* handle, std::vector<Ending>& endings) {
    const CURLMcode code = curl_multi_add_handle(multi_, handle);
    if (code != CURLM_OK) retire(handle, curlError(CURLE_FAILED_INIT, curl_multi_strerror(code)), endings);
  }

  void finish(std::vector<Ending>& endings) {
    int left = 0;
    while (CURLMsg* const message = curl_multi_info_read(multi_, &left)) {
      CURL* const handle = message->easy_handle;
      const CURLcode code = message->data.result;  // removing the handle frees the message
      if (code != CURLE_OK) leaveConnection(handle);
      curl_multi_remove_handle(multi_, handle);
      if (auto outcome = running_.at(handle).transfer->finish(code)) {
        retire(handle, *std::move(outcome), endings);
      } else {
        enter(handle, endings);
      }
    }
  }

  // After a failed HTTP/2 stream, libcurl keeps the connection even if it is dead, and the next requests
  // would hang on it too. So shut it down, unless other requests share it.
  void leaveConnection(void* failed) {
    const int port = running_.at(failed).transfer->localPort();
    const bool isShared = std::ranges::any_of(running_, [&](const auto& other) {
      return other.first != failed && other.second.transfer->localPort() == port;
    });
    if (port != 0 && !isShared) shared_.sockets.shutDown(port);
  }

  std::vector<void*> handlesWhere(const std::function<bool(const CurlTransfer&)>& isMeant) const {
    std::vector<void*> handles;
    for (const auto& [handle, running] : running_) {
      if (isMeant(*running.transfer)) handles.push_back(handle);
    }
    return handles;
  }

  // libcurl closes the connection, or resets the stream of an HTTP/2 connection, which can then be used
  // again. But a silent connection may be dead, and the next requests would hang on it, too.
  void endCancelled(std::vector<Ending>& endings) {
    for (void* const handle : handlesWhere([](const auto& each) { return each.isCancelled(); })) {
      if (running_.at(handle).transfer->isSilent()) leaveConnection(handle);
      endEarly(handle, cancelledError(), endings);
    }
  }

  void endOverdue(std::vector<Ending>& endings) {
    const auto now = Clock::now();
    for (void* const handle : handlesWhere([&](const auto& each) { return each.deadline() <= now; })) {
      leaveConnection(handle);
      endEarly(handle, running_.at(handle).transfer->timeoutError(), endings);
    }
  }

  // Before 8.1, libcurl sends the reset of a stream only with other traffic of the connection. It may also
  // have read, but not processed, replies to requests that share the connection.
  void endEarly(void* handle, PlatformError reason, std::vector<Ending>& endings) {
    const int port = running_.at(handle).transfer->localPort();
    if (remembered_.size() >= maxSpare) leaveConnection(handle);
    curl_multi_remove_handle(multi_, handle);
    retire(handle, std::move(reason), endings);
    for (const auto& [other, running] : running_) {
      if (port != 0 && running.transfer->localPort() == port) running.transfer->wakeUp();
    }
  }

  void remind() {
    if (!shared_.rules.mayForgetReplies) return;
    for (const auto& [handle, running] : running_) running.transfer->remind();
  }

  int untilNextDeadline() const {
    using namespace std::chrono;
    const auto now = Clock::now();
    milliseconds wait = minutes(1);
    if (shared_.rules.mayForgetReplies && !running_.empty()) wait = CurlTransfer::reminder;
    for (const auto& [handle, running] : running_) {
      wait = std::min(wait, ceil<milliseconds>(running.transfer->deadline() - now));
    }
    return std::max(0, static_cast<int>(wait.count()));
  }

  // Queues the outcome of a handle that has been removed from `multi_`, and frees the handle or keeps it for
  // reuse.
  void retire(void* handle, CurlTransfer::Outcome outcome, std::vector<Ending>& endings) {
    const auto entry = running_.find(handle);
    CurlTransfer& transfer = *entry->second.transfer;
    endings.push_back({std::move(entry->second.completion), std::move(outcome)});
    if (transfer.isHandleRemembered()) {
      remembered_.push_back({transfer.localPort(), transfer.takeHandle()});
    } else if (transfer.isHandleReusable() && spare_.size() < maxSpare) {
      spare_.push_back(transfer.takeHandle());
    }
    running_.erase(entry);
  }

  void freeRemembered() {
    std::erase_if(remembered_, [this](const Remembered& each) { return !shared_.sockets.isOpen(each.port); });
  }

  // Reusing a handle is cheaper than making one.
  CurlHandle takeSpare() {
    if (spare_.empty()) return nullptr;
    CurlHandle handle = std::move(spare_.back());
    spare_.pop_back();
    return handle;
  }

  // Ends all requests. Connections are closed here and not in the destructor, because closing can raise
  // SIGPIPE, and only this thread is certain to have it blocked.
  void end(std::vector<Ending>& endings) {
    const auto closed =
        curlError(CURLE_ABORTED_BY_CALLBACK, "The session was closed before the reply arrived");
    const std::scoped_lock guard(inCurl_);
    while (!running_.empty()) {
      void* const handle = running_.begin()->first;
      const bool isCancelled = running_.begin()->second.transfer->isCancelled();
      curl_multi_remove_handle(multi_, handle);
      retire(handle, isCancelled ? cancelledError() : closed, endings);
    }
    spare_.clear();
    for (auto& [request, completion, time] : takeArrivals()) {
      const bool isCancelled = request.cancellation && request.cancellation->isCancelled();
      endings.push_back({std::move(completion), isCancelled ? cancelledError() : closed});
    }
    std::unique_lock waking(lock_);
    CURLM* const multi = std::exchange(multi_, nullptr);
    waking.unlock();
    curl_multi_cleanup(multi);
    remembered_.clear();
  }

  // A completion may do anything, such as add requests or destroy the session. No completion is called once
  // the process is exiting.
  void report(std::vector<Ending>& endings, const std::atomic<bool>& stop) {
    for (auto& [completion, outcome] : endings) {
      if (stop && !closed_) return;
      callHost([&] { completion(std::move(outcome)); });
      completion = nullptr;
    }
    endings.clear();
  }

  std::atomic<bool> closed_ = false;
  CurlShared shared_;
  std::timed_mutex inCurl_;
  std::unordered_map<void*, Running> running_;  // by easy handle
  std::vector<CurlHandle> spare_;
  std::vector<Remembered> remembered_;
  std::mutex lock_;  // guards the members below; held only briefly
  std::vector<Arrival> arrivals_;
  bool hasCancellation_ = false;
  bool waits_ = false;  // the thread must be woken to see an arrival or a cancellation
  CURLM* multi_;        // null once freed
};

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

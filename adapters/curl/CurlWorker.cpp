#include "adapters/curl/CurlWorker.h"

#include <algorithm>
#include <chrono>
#include <new>
#include <string>
#include <utility>

#include <curl/curl.h>

#include "TalvoConsentSDK/platform/Printer.h"

namespace TalvoConsentSDK {

using namespace platform;

CurlURLSession::Worker::Worker(CurlRules rules) : shared_(std::move(rules)), multi_(curl_multi_init()) {
  if (!multi_) throw std::bad_alloc();
  // Checks that libcurl could open the file descriptors that it uses to wake the thread: without them,
  // nothing could ever wake it. If all is well, the call only shortens the first wait.
  if (const CURLMcode code = curl_multi_wakeup(multi_); code != CURLM_OK) {
    curl_multi_cleanup(multi_);
    throw curlError(CURLE_FAILED_INIT,
                    std::string("libcurl cannot run requests: ") + curl_multi_strerror(code));
  }
}

void CurlURLSession::Worker::add(URLRequest request, Completion completion) {
  const std::scoped_lock guard(lock_);
  arrivals_.push_back({std::move(request), std::move(completion), Clock::now()});
  if (std::exchange(waits_, false)) curl_multi_wakeup(multi_);
}

void CurlURLSession::Worker::noteCancellation() {
  const std::scoped_lock guard(lock_);
  hasCancellation_ = true;
  if (std::exchange(waits_, false)) curl_multi_wakeup(multi_);
}

void CurlURLSession::Worker::wake() {
  {
    const std::scoped_lock guard(lock_);
    if (multi_) curl_multi_wakeup(multi_);
  }
  if (inCurl_.try_lock_for(std::chrono::minutes(1))) inCurl_.unlock();
}

void CurlURLSession::Worker::run(const std::atomic<bool>& stop) {
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

// Sets and returns whether the thread waits. It does not wait if `waits` is false, or if a request has
// arrived or been cancelled.
bool CurlURLSession::Worker::setWaits(bool waits) {
  const std::scoped_lock guard(lock_);
  waits_ = waits && arrivals_.empty() && !hasCancellation_;
  return waits_;
}

bool CurlURLSession::Worker::takeCancellation() {
  const std::scoped_lock guard(lock_);
  return std::exchange(hasCancellation_, false);
}

std::vector<CurlURLSession::Worker::Arrival> CurlURLSession::Worker::takeArrivals() {
  const std::scoped_lock guard(lock_);
  return std::exchange(arrivals_, {});
}

void CurlURLSession::Worker::begin(std::vector<Ending>& endings) {
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
void CurlURLSession::Worker::enter(void* handle, std::vector<Ending>& endings) {
  const CURLMcode code = curl_multi_add_handle(multi_, handle);
  if (code != CURLM_OK) retire(handle, curlError(CURLE_FAILED_INIT, curl_multi_strerror(code)), endings);
}

void CurlURLSession::Worker::finish(std::vector<Ending>& endings) {
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
void CurlURLSession::Worker::leaveConnection(void* failed) {
  const int port = running_.at(failed).transfer->localPort();
  const bool isShared = std::ranges::any_of(running_, [&](const auto& other) {
    return other.first != failed && other.second.transfer->localPort() == port;
  });
  if (port != 0 && !isShared) shared_.sockets.shutDown(port);
}

std::vector<void*> CurlURLSession::Worker::handlesWhere(
    const std::function<bool(const CurlTransfer&)>& isMeant) const {
  std::vector<void*> handles;
  for (const auto& [handle, running] : running_) {
    if (isMeant(*running.transfer)) handles.push_back(handle);
  }
  return handles;
}

// libcurl closes the connection, or resets the stream of an HTTP/2 connection, which can then be used
// again. But a silent connection may be dead, and the next requests would hang on it, too.
void CurlURLSession::Worker::endCancelled(std::vector<Ending>& endings) {
  for (void* const handle : handlesWhere([](const auto& each) { return each.isCancelled(); })) {
    if (running_.at(handle).transfer->isSilent()) leaveConnection(handle);
    endEarly(handle, cancelledError(), endings);
  }
}

void CurlURLSession::Worker::endOverdue(std::vector<Ending>& endings) {
  const auto now = Clock::now();
  for (void* const handle : handlesWhere([&](const auto& each) { return each.deadline() <= now; })) {
    leaveConnection(handle);
    running_.at(handle).transfer->noteWaitInVain();
    endEarly(handle, running_.at(handle).transfer->timeoutError(), endings);
  }
}

// Before 8.1, libcurl sends the reset of a stream only with other traffic of the connection. It may also
// have read, but not processed, replies to requests that share the connection.
void CurlURLSession::Worker::endEarly(void* handle, PlatformError reason, std::vector<Ending>& endings) {
  const int port = running_.at(handle).transfer->localPort();
  if (remembered_.size() >= maxSpare) leaveConnection(handle);
  curl_multi_remove_handle(multi_, handle);
  retire(handle, std::move(reason), endings);
  for (const auto& [other, running] : running_) {
    if (port != 0 && running.transfer->localPort() == port) running.transfer->wakeUp();
  }
}

void CurlURLSession::Worker::remind() {
  if (!shared_.rules.mayForgetReplies) return;
  for (const auto& [handle, running] : running_) running.transfer->remind();
}

int CurlURLSession::Worker::untilNextDeadline() const {
  using namespace std::chrono;
  const auto now = Clock::now();
  milliseconds wait = minutes(1);
  if (shared_.rules.mayForgetReplies && !running_.empty()) wait = CurlTransfer::reminder;
  for (const auto& [handle, running] : running_) {
    wait = std::min(wait, ceil<milliseconds>(running.transfer->deadline() - now));
  }
  return std::max(0, static_cast<int>(wait.count()));
}

// Queues the outcome of a handle that has been removed from `multi_`. Frees the handle, or keeps it for
// another transfer or until its connection is closed.
void CurlURLSession::Worker::retire(void* handle, CurlTransfer::Outcome outcome,
                                    std::vector<Ending>& endings) {
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

void CurlURLSession::Worker::freeRemembered() {
  std::erase_if(remembered_, [this](const Remembered& each) { return !shared_.sockets.isOpen(each.port); });
}

// Reusing a handle is cheaper than making one.
CurlHandle CurlURLSession::Worker::takeSpare() {
  if (spare_.empty()) return nullptr;
  CurlHandle handle = std::move(spare_.back());
  spare_.pop_back();
  return handle;
}

// Ends all requests. Connections are closed here and not in the destructor, because closing can raise
// SIGPIPE, and only this thread is certain to have it blocked.
void CurlURLSession::Worker::end(std::vector<Ending>& endings) {
  const auto closed = curlError(CURLE_ABORTED_BY_CALLBACK, "The session was closed before the reply arrived");
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
void CurlURLSession::Worker::report(std::vector<Ending>& endings, const std::atomic<bool>& stop) {
  for (auto& [completion, outcome] : endings) {
    if (stop && !closed_) return;
    callHost([&] { completion(std::move(outcome)); });
    completion = nullptr;
  }
  endings.clear();
}

}  // namespace TalvoConsentSDK

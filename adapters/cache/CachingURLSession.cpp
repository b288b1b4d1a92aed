#include "adapters/cache/CachingURLSession.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <utility>

#include "TalvoConsentSDK/base/Deadline.h"
#include "TalvoConsentSDK/platform/Printer.h"

#include "adapters/cache/CacheRules.h"
#include "adapters/cache/Freshness.h"
#include "adapters/cache/RequestTarget.h"

namespace TalvoConsentSDK {

using namespace platform;

namespace {

using SteadyClock = std::chrono::steady_clock;

constexpr std::size_t maxUnkept = 1'000;
constexpr std::chrono::milliseconds removalPause(100);

bool isCancelled(const URLRequest& request) {
  return request.cancellation && request.cancellation->isCancelled();
}

URLResponse answer(StoredReply kept, const URLRequest& request, ReplySource source, const CacheTime& now) {
  URLResponse response;
  response.statusCode = 200;
  const auto age = currentAge(kept, now).value_or(kept.ageOnArrival);
  response.body = std::move(kept.body);
  response.headers = std::move(kept.headers);
  response.headers["Age"] = std::to_string(age.count());
  response.url = request.url;
  response.source = source;
  return response;
}

/// The storage, which is used on the executor only. The jobs that change it do not keep the executor: it
/// drops jobs when the process exits, and then nothing would free either.
struct Kept {
  explicit Kept(std::shared_ptr<CacheStorage> cacheStorage) : storage(std::move(cacheStorage)) {}

  const std::shared_ptr<CacheStorage> storage;
  std::unordered_set<std::string> suspects;  // keys whose latest change failed: remove before reading
};

}  // namespace

/// What the session and its requests under way share. `kept_` is used on the executor only, everything else
/// on any thread.
class CachingURLSession::Cache : public std::enable_shared_from_this<Cache> {
 public:
  Cache(std::weak_ptr<URLSession> inner, std::shared_ptr<CacheStorage> storage,
        std::shared_ptr<Executor> executor, std::shared_ptr<CacheClock> clock)
      : inner_(std::move(inner)),
        kept_(std::make_shared<Kept>(std::move(storage))),
        executor_(std::move(executor)),
        clock_(std::move(clock)) {}

  void get(URLRequest request, Completion completion);
  void forgetWhatChanged(const URL& requested, const Result<URLResponse>& outcome);

 private:
  struct Exchange;
  using ExchangePointer = std::shared_ptr<Exchange>;

  void lookUp(const ExchangePointer& exchange);
  void findKept(Exchange& exchange);
  static bool hasSubstitute(const Exchange& exchange, const CacheTime& now);
  void send(const ExchangePointer& exchange);
  void arrive(const ExchangePointer& exchange, Result<URLResponse> outcome);
  std::optional<Result<URLResponse>> keptInstead(Exchange& exchange, const Result<URLResponse>& outcome);
  Result<URLResponse> confirmed(Exchange& exchange, const URLResponse& reply);
  void keep(const ExchangePointer& exchange, const Result<URLResponse>& outcome);
  bool isUnkept(const std::string& key);
  void change(const std::string& key, std::function<Result<void>(CacheStorage&)> change);
  void remove(const std::string& key);

  const std::weak_ptr<URLSession> inner_;  // weak: destroying a CachingURLSession must end its requests
  const std::shared_ptr<Kept> kept_;
  const std::shared_ptr<Executor> executor_;
  const std::shared_ptr<CacheClock> clock_;
  std::mutex underWayLock_;
  std::unordered_set<Exchange*> underWay_;
  std::mutex changesLock_;  // held while a change is posted: `unkept_` is what the storage will not hold
  // Keys under which nothing is kept, and when they were last removed. These need not be looked up.
  std::unordered_map<std::string, SteadyClock::time_point> unkept_;
};

/// One GET. Only one thread at a time uses it, except for `isOutdated`.
struct CachingURLSession::Cache::Exchange {
  Exchange(std::shared_ptr<Cache> owner, URLRequest asked, Completion done)
      : cache(std::move(owner)),
        request(std::move(asked)),
        completion(std::move(done)),
        key(cacheKey(request.url)) {
    if (request.totalTimeout) deadline = deadlineAfter(*request.totalTimeout);
    const std::scoped_lock guard(cache->underWayLock_);
    cache->underWay_.insert(this);
  }
  ~Exchange() {
    const std::scoped_lock guard(cache->underWayLock_);
    cache->underWay_.erase(this);
  }
  Exchange(const Exchange&) = delete;

  void report(Result<URLResponse> outcome) {
    const Completion taken = std::exchange(completion, nullptr);
    if (taken) taken(std::move(outcome));
  }

  const std::shared_ptr<Cache> cache;
  const URLRequest request;
  Completion completion;
  const std::string key;
  std::optional<SteadyClock::time_point> deadline;
  std::optional<StoredReply> kept;
  std::string keptHead;  // as it is in the storage
  bool isConditional = false;
  CacheTime sent;
  // Whether its URL was changed since it was asked for.
  const std::shared_ptr<std::atomic<bool>> isOutdated = std::make_shared<std::atomic<bool>>(false);
};

void CachingURLSession::Cache::get(URLRequest request, Completion completion) {
  const auto exchange =
      std::make_shared<Exchange>(shared_from_this(), std::move(request), std::move(completion));
  if (isUnkept(exchange->key)) return send(exchange);
  try {
    return executor_->post([exchange] { exchange->cache->lookUp(exchange); });
  } catch (...) {
    send(exchange);
  }
}

void CachingURLSession::Cache::lookUp(const ExchangePointer& exchange) try {
  findKept(*exchange);
  if (isCancelled(exchange->request)) return exchange->report(cancelledError());
  const CacheTime now = clock_->now();
  if (exchange->kept && isFresh(*exchange->kept, now) && !demandsValidation(exchange->request))
    return exchange->report(answer(*std::move(exchange->kept), exchange->request, ReplySource::cache, now));
  send(exchange);
} catch (...) {
  exchange->report(Error::current());
}

void CachingURLSession::Cache::findKept(Exchange& exchange) try {
  if (kept_->suspects.contains(exchange.key)) {
    if (!kept_->storage->remove(exchange.key)) return;
    kept_->suspects.erase(exchange.key);
  }
  auto entry = kept_->storage->read(exchange.key);
  if (!entry || !*entry) return;
  exchange.keptHead = (*entry)->head;
  exchange.kept = decodedReply(**std::move(entry));
  const bool isUsable = exchange.kept && matches(*exchange.kept, exchange.request) && !*exchange.isOutdated;
  if (!isUsable) exchange.kept.reset();
} catch (...) {
  exchange.kept.reset();  // the same as if nothing were kept
}

// Whether the kept reply may take the place of an error.
bool CachingURLSession::Cache::hasSubstitute(const Exchange& exchange, const CacheTime& now) {
  return exchange.kept && !*exchange.isOutdated && !demandsValidation(exchange.request) &&
         mayReplaceError(*exchange.kept, now);
}

void CachingURLSession::Cache::send(const ExchangePointer& exchange) {
  URLRequest request = exchange->request;
  exchange->isConditional = exchange->kept && addConditions(request, *exchange->kept);
  if (exchange->deadline) {
    auto left = std::chrono::ceil<std::chrono::milliseconds>(*exchange->deadline - SteadyClock::now());
    if (hasSubstitute(*exchange, clock_->now())) left -= left / 8;  // so that it does not come too late
    request.totalTimeout = std::max(left, std::chrono::milliseconds(1));
  }
  exchange->sent = clock_->now();
  const auto inner = inner_.lock();
  if (!inner) return exchange->report(PlatformError("URLSession", -2, "The session was closed"));
  inner->run(std::move(request), [exchange](Result<URLResponse> outcome) {
    exchange->cache->arrive(exchange, std::move(outcome));
  });
}

void CachingURLSession::Cache::arrive(const ExchangePointer& exchange, Result<URLResponse> outcome) {
  if (!exchange->completion) return;  // the session has reported before
  std::optional<Result<URLResponse>> instead;
  try {
    if (outcome && outcome->statusCode == 304 && exchange->isConditional &&
        !confirms(exchange->request, *outcome, *exchange->kept)) {
      exchange->kept.reset();
      return send(exchange);
    }
    instead = keptInstead(*exchange, outcome);
    if (!instead) keep(exchange, outcome);
  } catch (...) {
    instead.emplace(Error::current());
  }
  exchange->report(instead ? *std::move(instead) : std::move(outcome));
}

// What the caller receives instead of the outcome, if the kept reply answers the request.
std::optional<Result<URLResponse>> CachingURLSession::Cache::keptInstead(Exchange& exchange,
                                                                         const Result<URLResponse>& outcome) {
  if (!exchange.kept) return std::nullopt;
  if (outcome && outcome->statusCode == 304 && exchange.isConditional) return confirmed(exchange, *outcome);
  const CacheTime now = clock_->now();
  if (isCancelled(exchange.request) || !isError(outcome) || !hasSubstitute(exchange, now))
    return std::nullopt;
  return answer(*std::move(exchange.kept), exchange.request, ReplySource::cache, now);
}

Result<URLResponse> CachingURLSession::Cache::confirmed(Exchange& exchange, const URLResponse& reply) {
  StoredReply& kept = *exchange.kept;
  const CacheTime now = clock_->now();
  if (mayRefresh(kept, reply)) {
    refresh(kept, exchange.request, reply, exchange.sent, now);
    if (mayStay(kept.headers)) {
      change(exchange.key, [key = exchange.key, former = exchange.keptHead, head = encodedHead(kept)](
                               CacheStorage& storage) { return storage.replaceHead(key, former, head); });
    } else {
      remove(exchange.key);
    }
  }
  return answer(std::move(kept), exchange.request, ReplySource::validatedCache, now);
}

// Keeps the reply. If it may not be kept but shows that the kept reply is no longer current, removes that.
//
// If the URL is changed meanwhile, the exchange is marked as outdated before the removal is posted. So the
// write either sees the mark, or comes before the removal.
void CachingURLSession::Cache::keep(const ExchangePointer& exchange, const Result<URLResponse>& outcome) {
  if (!outcome) return;
  const int status = outcome->statusCode.value_or(0);
  const CacheTime now = clock_->now();
  const std::string& key = exchange->key;
  if (mayKeep(exchange->request, *outcome, now)) {
    StoredReply reply = storedReply(exchange->request, *outcome, exchange->sent, now);
    const std::scoped_lock guard(changesLock_);
    unkept_.erase(key);
    return change(key,
                  [key, isOutdated = exchange->isOutdated, head = encodedHead(reply),
                   body = std::move(reply.body)](CacheStorage& storage) -> Result<void> {
                    if (*isOutdated) return {};
                    return storage.write(key, {head, body});
                  });
  }
  if (isUnkept(key)) return;
  const bool isGone = status == 404 || status == 410;
  const bool isCurrent = status == 200 && hasExpectedType(exchange->request, outcome->headers);
  if ((isCurrent || isGone) && isFromItsURL(exchange->request, *outcome)) remove(key);
}

void CachingURLSession::Cache::forgetWhatChanged(const URL& requested, const Result<URLResponse>& outcome) {
  if (!outcome) return;
  for (const std::string& key : changedKeys(requested, *outcome)) {
    std::unique_lock guard(underWayLock_);
    for (Exchange* const exchange : underWay_)
      if (exchange->key == key) *exchange->isOutdated = true;
    guard.unlock();
    remove(key);
  }
}

bool CachingURLSession::Cache::isUnkept(const std::string& key) {
  const std::scoped_lock guard(changesLock_);
  return unkept_.contains(key);
}

// Removes also what another process may have kept since this one removed it last, but at most once in
// `removalPause`: waking the executor for each of many changes would make them a quarter slower. So a reply
// may stay that another process received within this time before a change. One that it receives after a
// change may stay anyhow, although it was requested before.
void CachingURLSession::Cache::remove(const std::string& key) {
  const std::scoped_lock guard(changesLock_);
  const auto now = SteadyClock::now();
  const auto former = unkept_.find(key);
  if (former != unkept_.end() && now - former->second < removalPause) return;
  if (unkept_.size() >= maxUnkept) unkept_.clear();
  unkept_[key] = now;
  change(key, [key](CacheStorage& storage) { return storage.remove(key); });
}

void CachingURLSession::Cache::change(const std::string& key,
                                      std::function<Result<void>(CacheStorage&)> change) {
  postOrRun(executor_, [kept = kept_, key, change = std::move(change)] {
    bool isDone = false;
    callHost([&] { isDone = change(*kept->storage).has_value(); });
    if (!isDone) kept->suspects.insert(key);
  });
}

CachingURLSession::CachingURLSession(std::shared_ptr<URLSession> inner, std::shared_ptr<CacheStorage> storage,
                                     std::shared_ptr<Executor> executor, std::shared_ptr<CacheClock> clock)
    : inner_(std::move(inner)),
      cache_(std::make_shared<Cache>(inner_, std::move(storage), std::move(executor), std::move(clock))) {}

CachingURLSession::~CachingURLSession() = default;

void CachingURLSession::run(URLRequest request, Completion completion) {
  if (mayUseCache(request)) return cache_->get(std::move(request), std::move(completion));
  if (!isUnsafe(request.method)) return inner_->run(std::move(request), std::move(completion));
  const URL url = request.url;
  inner_->run(std::move(request),
              [cache = cache_, url, completion = std::move(completion)](Result<URLResponse> outcome) {
                callHost([&] { cache->forgetWhatChanged(url, outcome); });
                completion(std::move(outcome));
              });
}

}  // namespace TalvoConsentSDK

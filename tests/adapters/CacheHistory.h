#pragma once

// Random histories of a cache: requests for several documents in two languages, some of them personal;
// changes; failures of the network and the storage; clocks that are set; restarts. A model checks every reply
// that the cache gives.

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "adapters/cache/CachingURLSession.h"

#include "testing/fakes/ManualExecutor.h"
#include "tests/adapters/CacheTest.h"

namespace TalvoConsentSDK {

/// A storage whose operations fail now and then, before or after they have done their work.
class FlakyStorage : public CacheStorage {
 public:
  FlakyStorage(std::shared_ptr<CacheStorage> inner, std::uint32_t seed)
      : inner_(std::move(inner)), random_(seed) {}

  Result<std::optional<CacheEntry>> read(std::string_view key) override {
    return flaky<std::optional<CacheEntry>>([&] { return inner_->read(key); });
  }
  Result<void> write(std::string_view key, const CacheEntry& entry) override {
    return flaky<void>([&] { return inner_->write(key, entry); });
  }
  Result<void> replaceHead(std::string_view key, std::string_view former, std::string_view head) override {
    return flaky<void>([&] { return inner_->replaceHead(key, former, head); });
  }
  Result<void> remove(std::string_view key) override {
    return flaky<void>([&] { return inner_->remove(key); });
  }

 private:
  template <class T>
  Result<T> flaky(const std::function<Result<T>()>& operation) {
    const PlatformError error("FlakyStorage", 1, "failed");
    if (random_() % 8 == 0) return error;
    Result<T> outcome = operation();
    if (random_() % 8 == 0) return error;
    return outcome;
  }

  const std::shared_ptr<CacheStorage> inner_;
  std::mt19937 random_;
};

class CacheHistory {
 public:
  /// `open` opens the storage, again after each restart.
  CacheHistory(std::uint32_t seed, std::function<std::shared_ptr<CacheStorage>()> open)
      : open_(std::move(open)), random_(seed), isFlaky_(seed % 4 == 0), flakySeed_(seed) {
    restart();
  }
  ~CacheHistory() { executor_->runAll(); }  // a request that is still to be looked up keeps its executor

  void play(int steps) {
    for (int step = 0; step < steps; ++step) {
      switch (below(16)) {
        case 0:
          change(path());
          break;
        case 1:
          clock_.set(seconds(below(401) - 200));
          break;
        case 2:
          isDown_ = below(2) == 0;
          break;
        case 3:
          if (!isFlaky_ && below(4) == 0) restart();
          break;
        case 4:
        case 5:
          clock_.wait(seconds(below(30)));
          break;
        case 6:
        case 7:
        case 8:
        case 9:
          deliver();
          break;
        default:
          get(path());
          break;
      }
      if (below(4) != 0) executor_->runAll();
    }
  }

  /// How many replies came from the cache, and how many of them the service had confirmed.
  int hits() const { return hits_; }
  int confirmed() const { return confirmed_; }

 private:
  using seconds = std::chrono::seconds;

  // What the model knows of a body that the service sent.
  struct Sent {
    std::string path, language;
    bool mayBeKept = true;
    std::int64_t version = 0, order = 0;
    seconds time{};          // when it was sent
    seconds fresh{};         // until when it may be used
    seconds stale{};         // until when it may be used in place of an error
    seconds clockSetBack{};  // by how much in total, before it was sent
    int run = 0;             // the run of the process that received it
  };
  struct Asked {
    std::string path, language;
    bool isPersonal = false;
    std::int64_t version = -1;  // of the document when the request arrived
    bool hasFailed = false;
  };
  struct Pending {
    URLSession::Completion completion;
    Result<URLResponse> outcome;
    std::string changed;  // the path that this request has changed; empty if none
    std::int64_t order;
  };

  class Service : public URLSession {
   public:
    explicit Service(CacheHistory& history) : history_(history) {}
    void run(URLRequest request, Completion completion) override {
      history_.serve(request, std::move(completion));
    }

   private:
    CacheHistory& history_;
  };

  int below(int limit) { return static_cast<int>(random_() % static_cast<unsigned>(limit)); }
  std::string path() { return std::string("/") + static_cast<char>('a' + below(3)); }

  void restart() {
    executor_->runAll();
    pending_.clear();
    session_ = nullptr;
    storage_ = nullptr;
    storage_ = open_();
    if (isFlaky_) storage_ = std::make_shared<FlakyStorage>(storage_, flakySeed_);
    session_ = std::make_unique<CachingURLSession>(service_, storage_, executor_, clock_.cacheClock());
    ++run_;
  }

  void get(const std::string& path) {
    URLRequest request(*URL::parse("https://service.example" + path));
    Asked asked{path, below(2) == 0 ? "de" : "en", below(8) == 0};
    request.headers["Accept-Language"] = asked.language;
    request.isPersonal = asked.isPersonal;
    const std::size_t number = asked_.size();
    request.headers["Number"] = std::to_string(number);
    asked_.push_back(asked);
    session_->run(request, [this, number](const Result<URLResponse>& outcome) {
      if (outcome && outcome->source != ReplySource::network) check(asked_.at(number), *outcome);
    });
  }

  // The model: whether a reply may be used for a request now.
  void check(const Asked& asked, const URLResponse& reply) {
    ++hits_;
    const Sent& sent = sent_.at(reply.body.value());
    EXPECT_TRUE(sent.mayBeKept) << "personal, from elsewhere, or not to be stored";
    EXPECT_FALSE(asked.isPersonal);
    EXPECT_EQ(sent.path, asked.path);
    EXPECT_TRUE(sent.language.empty() || sent.language == asked.language);
    if (reply.source == ReplySource::validatedCache) {
      ++confirmed_;
      EXPECT_EQ(sent.version, asked.version) << "the service did not confirm this";
      return;
    }
    // A process cannot know how far the clock was set back before it started.
    const seconds unknown = sent.run == run_ ? seconds(0) : clockSetBack() - sent.clockSetBack;
    EXPECT_LT(clock_.steady() - unknown, asked.hasFailed ? sent.stale : sent.fresh) << "too old";
    EXPECT_GT(sent.order, changes_[asked.path]) << "changed since";
  }

  void change(const std::string& path) {
    URLRequest request(*URL::parse("https://service.example" + path));
    request.method = below(2) == 0 ? "POST" : "PUT";
    session_->run(request, [](const Result<URLResponse>&) {});
  }

  void deliver() {
    if (pending_.empty()) return;
    const auto next = pending_.begin() + below(static_cast<int>(pending_.size()));
    Pending taken = std::move(*next);
    pending_.erase(next);
    taken.completion(std::move(taken.outcome));
    if (!taken.changed.empty()) changes_[taken.changed] = std::max(changes_[taken.changed], taken.order);
  }

  void serve(const URLRequest& request, URLSession::Completion completion) {
    const std::string path = request.url.text().substr(request.url.text().rfind('/'));
    Pending pending{std::move(completion), PlatformError("net", 1, "down"), "", ++order_};
    URLResponse reply;
    reply.url = request.url;
    reply.body = "";
    const bool isGet = request.method == "GET";
    const bool fails = isDown_ || below(8) == 0;
    if (isGet && fails) asked_.at(numberOf(request)).hasFailed = true;
    if (fails && !isDown_) {
      reply.statusCode = 503;
      pending.outcome = std::move(reply);
    } else if (!fails && isGet) {
      document(path, request, reply);
      pending.outcome = std::move(reply);
    } else if (!fails) {
      reply.statusCode = 204;
      ++versions_[path];
      pending.changed = path;
      pending.outcome = std::move(reply);
    }
    pending_.push_back(std::move(pending));
  }

  static std::size_t numberOf(const URLRequest& request) { return std::stoul(request.headers.at("Number")); }

  void document(const std::string& path, const URLRequest& request, URLResponse& reply) {
    Asked& asked = asked_.at(numberOf(request));
    asked.version = versions_[path];
    const int maxAge = below(60), staleIfError = below(60), age = below(3) == 0 ? below(60) : 0;
    const bool noCache = below(8) == 0, noStore = below(8) == 0, mustRevalidate = below(4) == 0;
    const bool hasMaxAge = below(3) != 0, hasStale = below(2) == 0, varies = below(3) == 0;
    HTTPHeaders& headers = reply.headers;
    headers["Content-Type"] = "application/json";
    std::string& control = headers["Cache-Control"];
    control = "private";
    if (hasMaxAge) control += ", max-age=" + std::to_string(maxAge);
    if (hasStale) control += ", stale-if-error=" + std::to_string(staleIfError);
    if (noCache) control += ", no-cache";
    if (noStore) control += ", no-store";
    if (mustRevalidate) control += ", must-revalidate";
    if (age > 0) headers["Age"] = std::to_string(age);
    if (varies) headers["Vary"] = "Accept-Language";
    if (below(3) == 0) headers["Date"] = httpDate(clock_.wall() + seconds(below(400) - 200));
    if (below(8) == 0) headers["Date"] = "some time ago";

    const seconds now = clock_.steady();
    const seconds lifetime = seconds(hasMaxAge && !noCache ? maxAge - age : 0);
    Sent sent{path,
              varies ? asked.language : "",
              !noStore && !asked.isPersonal,
              asked.version,
              order_,
              now,
              now + lifetime,
              now,
              clockSetBack(),
              run_};
    if (hasStale && !noCache && !mustRevalidate)
      sent.stale = now + seconds((hasMaxAge ? maxAge : 0) - age + staleIfError);
    const std::string tag = '"' + path + asked.language + std::to_string(asked.version) + '"';
    const auto condition = request.headers.find("If-None-Match");
    if (condition != request.headers.end() && condition->second == tag && below(4) != 0) {
      reply.statusCode = 304;
      reply.body.reset();
      return confirm(tag, sent);
    }
    reply.statusCode = 200;
    reply.body = path + " " + std::to_string(order_);
    if (below(8) == 0) {
      reply.url = URL::parse("https://login.example/");
      sent.mayBeKept = false;
    }
    if (below(4) != 0) {
      headers["ETag"] = tag;
      tags_[tag].push_back(*reply.body);
    }
    sent_[*reply.body] = sent;
  }

  // The cache may have any of the bodies with this tag, and may use it again.
  void confirm(const std::string& tag, const Sent& now) {
    for (const std::string& body : tags_[tag]) {
      Sent& sent = sent_.at(body);
      sent.fresh = std::max(sent.fresh, now.fresh);
      sent.stale = std::max(sent.stale, now.stale);
    }
  }

  seconds clockSetBack() const { return clock_.setBack(); }

  const std::function<std::shared_ptr<CacheStorage>()> open_;
  std::mt19937 random_;
  const bool isFlaky_;
  const std::uint32_t flakySeed_;
  TestClock clock_;
  const std::shared_ptr<ManualExecutor> executor_ = std::make_shared<ManualExecutor>();
  const std::shared_ptr<URLSession> service_ = std::make_shared<Service>(*this);
  std::shared_ptr<CacheStorage> storage_;
  std::unique_ptr<CachingURLSession> session_;
  std::vector<Pending> pending_;
  std::vector<Asked> asked_;
  std::map<std::string, Sent> sent_;                        // by body
  std::map<std::string, Texts> tags_;                       // bodies by tag
  std::map<std::string, std::int64_t> versions_, changes_;  // by path
  std::int64_t order_ = 0;
  bool isDown_ = false;
  int run_ = 0, hits_ = 0, confirmed_ = 0;
};

}  // namespace TalvoConsentSDK

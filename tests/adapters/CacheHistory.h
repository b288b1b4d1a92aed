#pragma once

// Random histories of a cache: requests for several documents in two languages, some of them personal;
// changes; failures of the network and the storage; clocks that are set; restarts. A model checks every reply
// that the cache gives.

#include <algorithm>
#include <cstdint>
#include <map>
#include <random>
#include <vector>

#include "adapters/cache/CachingURLSession.h"

#include "testing/fakes/FailingSeams.h"
#include "testing/fakes/ManualExecutor.h"
#include "tests/adapters/CacheTest.h"

namespace TalvoConsentSDK {

/// Is also the service that the cache asks.
class CacheHistory : public URLSession {
 public:
  /// Plays one history for each seed, and expects that the caches are used often enough. `open` opens the
  /// storage of the history with this seed, again after each restart.
  static void playAll(int seeds, int steps, const std::function<std::shared_ptr<CacheStorage>(int)>& open) {
    int unconfirmed = 0, confirmed = 0;
    for (int seed = 1; seed <= seeds && !::testing::Test::HasFailure(); ++seed) {
      SCOPED_TRACE(seed);
      CacheHistory history(static_cast<std::uint32_t>(seed), [&] { return open(seed); });
      history.play(steps);
      unconfirmed += history.hits_ - history.confirmed_;
      confirmed += history.confirmed_;
    }
    EXPECT_GT(unconfirmed, seeds) << "the histories try too little";
    EXPECT_GT(confirmed, seeds);
  }

 private:
  CacheHistory(std::uint32_t seed, std::function<std::shared_ptr<CacheStorage>()> open)
      : open_(std::move(open)), random_(seed), isFlaky_(seed % 4 == 0) {
    restart();
  }
  ~CacheHistory() { executor_->runAll(); }  // a request that is still to be looked up keeps its executor

  void play(int steps) {
    for (int step = 0; step < steps; ++step) {
      const int action = below(16);
      if (action < 6) {
        get(path());
      } else if (action < 10) {
        deliver();
      } else if (action < 12) {
        clock_.wait(seconds(below(30)));
      } else if (action == 12) {
        clock_.set(seconds(below(401) - 200));
      } else if (action == 13) {
        isDown_ = below(2) == 0;
      } else if (action == 14) {
        session_->run(requestFor(path(), below(2) == 0 ? "POST" : "PUT"), [](const auto&) {});
      } else if (!isFlaky_ && below(4) == 0) {
        restart();
      }
      if (below(4) != 0) executor_->runAll();
    }
  }

  struct Asked {
    std::string path, language;
    bool isPersonal = false;
    int version = -1;  // of the document when the request arrived
    bool hasFailed = false;
  };
  // When the service sent or confirmed a body, and how long the body may be used: at all, and in place of an
  // error.
  struct Sent {
    int run;
    seconds steady, wall, lifetime, staleLifetime;
  };

  int below(int limit) { return static_cast<int>(random_() % static_cast<unsigned>(limit)); }
  std::string path() { return std::string("/") + static_cast<char>('a' + below(3)); }
  Asked& askedBy(const URLRequest& request) { return asked_.at(std::stoul(request.headers.at("Number"))); }

  static URLRequest requestFor(const std::string& path, const char* method) {
    URLRequest request(*URL::parse("https://service.example" + path));
    request.method = method;
    return request;
  }

  void restart() {
    executor_->runAll();
    pending_.clear();
    session_ = nullptr;
    const auto failing = std::make_shared<FailingCacheStorage>(open_());
    if (isFlaky_) {
      failing->before = [this, storage = failing.get()] {
        storage->fails = below(8) == 0;
        storage->failsAfterwards = below(8) == 0;
      };
    }
    const std::shared_ptr<URLSession> service(this, [](URLSession*) {});  // does not own this object
    ++run_;
    session_ = std::make_unique<CachingURLSession>(service, failing, executor_,
                                                   clock_.cacheClock(static_cast<std::uint64_t>(run_)));
  }

  void get(const std::string& path) {
    const Asked asked{path, below(2) == 0 ? "de" : "en", below(8) == 0};
    URLRequest request = requestFor(path, "GET");
    request.isPersonal = asked.isPersonal;
    request.headers = {{"Accept-Language", asked.language}, {"Number", std::to_string(asked_.size())}};
    asked_.push_back(asked);
    session_->run(request, [this, request](const Result<URLResponse>& outcome) {
      if (outcome && outcome->source != ReplySource::network) check(askedBy(request), *outcome);
    });
  }

  // The model: whether a reply may be used for a request now.
  void check(const Asked& asked, const URLResponse& reply) {
    ++hits_;
    const Texts body = words(reply.body.value());
    EXPECT_EQ(body.size(), 3U) << "personal, from elsewhere, or not to be stored";
    EXPECT_FALSE(asked.isPersonal);
    EXPECT_EQ(body[0], asked.path);
    EXPECT_TRUE(body[1] == "any" || body[1] == asked.language);
    if (reply.source == ReplySource::validatedCache) {
      ++confirmed_;
      EXPECT_EQ(std::stoi(body[2]), asked.version) << "the service did not confirm this";
      return;
    }
    EXPECT_GE(std::stoi(body[2]), changed_[asked.path]) << "changed since";
    const auto isUsable = [&](const Sent& sent) {
      const seconds age = sent.run == run_ ? clock_.steady() - sent.steady : clock_.wall() - sent.wall;
      return age < (asked.hasFailed ? sent.staleLifetime : sent.lifetime);
    };
    EXPECT_TRUE(std::ranges::any_of(sent_[*reply.body], isUsable)) << "too old";
  }

  void run(URLRequest request, Completion completion) override {
    const std::string path = request.url.text().substr(request.url.text().rfind('/'));
    const bool isGet = request.method == "GET", fails = isDown_ || below(8) == 0;
    if (isGet && fails) askedBy(request).hasFailed = true;
    Result<URLResponse> outcome = PlatformError("net", 1, "down");
    if (!isDown_)
      outcome = fails ? replyOf("503", "") : isGet ? document(request) : replyOf("204", "nothing");
    const int change = fails || isGet ? 0 : ++versions_[path];
    pending_.emplace_back([=, this] {
      completion(outcome);
      changed_[path] = std::max(changed_[path], change);
    });
  }

  void deliver() {
    if (pending_.empty()) return;
    const auto next = pending_.begin() + below(static_cast<int>(pending_.size()));
    const auto report = std::move(*next);
    pending_.erase(next);
    report();
  }

  // A body consists of the path, the language, the version, and "never" if it must not be kept.
  URLResponse document(const URLRequest& request) {
    Asked& asked = askedBy(request);
    asked.version = versions_[asked.path];
    const bool isNoStore = below(8) == 0, isNoCache = below(8) == 0, mustRevalidate = below(4) == 0;
    const bool isElsewhere = below(8) == 0, varies = below(3) == 0;
    const seconds maxAge(below(3) * 20), staleIfError(below(2) * 40);
    const std::string body = asked.path + (varies ? " " + asked.language : " any") + " " +
                             std::to_string(asked.version) +
                             (isNoStore || isElsewhere || asked.isPersonal ? " never" : "");
    URLResponse reply = replyOf("200", body);
    reply.url = isElsewhere ? URL::parse("https://login.example/") : request.url;
    reply.headers["Content-Type"] = "application/json";
    reply.headers["Cache-Control"] = "max-age=" + std::to_string(maxAge.count()) +
                                     ", stale-if-error=" + std::to_string(staleIfError.count()) +
                                     (isNoStore ? ", no-store" : "") + (isNoCache ? ", no-cache" : "") +
                                     (mustRevalidate ? ", must-revalidate" : "");
    if (varies) reply.headers["Vary"] = "Accept-Language";
    if (below(3) == 0) reply.headers["Date"] = httpDate(clock_.wall() + seconds(below(400) - 200));
    const std::string tag = '"' + body + '"';
    if (below(4) != 0) reply.headers["ETag"] = tag;
    const auto condition = request.headers.find("If-None-Match");
    if (condition != request.headers.end() && condition->second == tag) {
      reply.statusCode = 304;
      reply.body.reset();
    }
    sent_[body].push_back({run_, clock_.steady(), clock_.wall(), isNoCache ? seconds(0) : maxAge,
                           isNoCache || mustRevalidate ? seconds(0) : maxAge + staleIfError});
    return reply;
  }

  const std::function<std::shared_ptr<CacheStorage>()> open_;
  std::mt19937 random_;
  const bool isFlaky_;
  TestClock clock_;
  const std::shared_ptr<ManualExecutor> executor_ = std::make_shared<ManualExecutor>();
  std::unique_ptr<CachingURLSession> session_;
  std::vector<std::function<void()>> pending_;  // the service's replies
  std::vector<Asked> asked_;
  std::map<std::string, std::vector<Sent>> sent_;  // by body
  std::map<std::string, int> versions_, changed_;  // by path; `changed_` is the latest the cache heard of
  bool isDown_ = false;
  int run_ = 0, hits_ = 0, confirmed_ = 0;
};

}  // namespace TalvoConsentSDK

#pragma once

// Wrappers that pass every call on until a test makes them fail.

#include <atomic>
#include <functional>
#include <memory>
#include <type_traits>
#include <utility>
#include <vector>

#include "TalvoConsentSDK/base/Export.h"
#include "TalvoConsentSDK/platform/CacheStorage.h"
#include "TalvoConsentSDK/platform/Executor.h"
#include "TalvoConsentSDK/platform/URLSession.h"
#include "TalvoConsentSDK/platform/UserDefaults.h"

namespace TalvoConsentSDK TALVO_EXPORT {

/// A device store whose reads, writes or both can be made to fail, by returning an error or by throwing it. A
/// failed write changes nothing.
class FailingUserDefaults : public platform::UserDefaults {
 public:
  explicit FailingUserDefaults(std::shared_ptr<platform::UserDefaults> inner) : inner_(std::move(inner)) {}

  std::atomic<bool> failsToRead = false;
  std::atomic<bool> failsToWrite = false;
  std::atomic<bool> failsToSynchronize = false;
  std::atomic<bool> throws = false;

  /// Called before every operation on a key; may change what fails and what is stored.
  std::function<void(std::string_view key)> before = [](std::string_view) {};

  Result<std::optional<platform::Data>> data(std::string_view key) override {
    before(key);
    if (failsToRead) return failure();
    return inner_->data(key);
  }
  Result<std::optional<std::string>> string(std::string_view key) override {
    before(key);
    if (failsToRead) return failure();
    return inner_->string(key);
  }
  Result<void> set(std::string_view key, platform::Data value) override {
    before(key);
    if (failsToWrite) return failure();
    return inner_->set(key, std::move(value));
  }
  Result<void> set(std::string_view key, std::string value) override {
    before(key);
    if (failsToWrite) return failure();
    return inner_->set(key, std::move(value));
  }
  Result<bool> replace(std::string_view key, const std::optional<platform::Data>& expected,
                       platform::Data value) override {
    before(key);
    if (failsToRead || failsToWrite) return failure();
    return inner_->replace(key, expected, std::move(value));
  }
  Result<void> remove(std::string_view key) override {
    before(key);
    if (failsToWrite) return failure();
    return inner_->remove(key);
  }
  Result<void> commit(const std::vector<platform::StoreChange>& changes) override {
    bool fails = false;
    for (const platform::StoreChange& change : changes) {
      before(change.key);
      fails = fails || failsToWrite;
    }
    if (fails) return failure();
    return inner_->commit(changes);
  }
  Result<void> synchronize() override {
    if (failsToWrite || failsToSynchronize) return failure();
    return inner_->synchronize();
  }

 private:
  PlatformError failure() const {
    PlatformError error("FailingUserDefaults", 1, "The store is out of order");
    if (throws) throw error;
    return error;
  }

  const std::shared_ptr<platform::UserDefaults> inner_;
};

/// A cache's storage whose operations can be made to fail, before or after they have done their work.
class FailingCacheStorage : public platform::CacheStorage {
 public:
  explicit FailingCacheStorage(std::shared_ptr<platform::CacheStorage> inner) : inner_(std::move(inner)) {}

  std::atomic<bool> fails = false;
  std::atomic<bool> failsAfterwards = false;

  /// Called before every operation; may change what fails.
  std::function<void()> before = [] {};

  Result<std::optional<platform::CacheEntry>> read(std::string_view key) override {
    return run([&] { return inner_->read(key); });
  }
  Result<void> write(std::string_view key, const platform::CacheEntry& entry) override {
    return run([&] { return inner_->write(key, entry); });
  }
  Result<void> replaceHead(std::string_view key, std::string_view former, std::string_view head) override {
    return run([&] { return inner_->replaceHead(key, former, head); });
  }
  Result<void> remove(std::string_view key) override {
    return run([&] { return inner_->remove(key); });
  }

 private:
  template <class Operation>
  std::invoke_result_t<Operation> run(const Operation& operation) {
    const PlatformError error("FailingCacheStorage", 1, "The storage is out of order");
    before();
    if (fails) return error;
    auto outcome = operation();
    if (failsAfterwards) return error;
    return outcome;
  }

  const std::shared_ptr<platform::CacheStorage> inner_;
};

/// A URL session that can fail every request, as on a device without a network. It reports these failures on
/// `thread`, which stands for the session's own thread.
class FailingURLSession : public platform::URLSession {
 public:
  FailingURLSession(std::shared_ptr<platform::URLSession> inner, std::shared_ptr<platform::Executor> thread)
      : inner_(std::move(inner)), thread_(std::move(thread)) {}

  std::atomic<bool> fails = false;

  void run(platform::URLRequest request, Completion completion) override {
    if (!fails) return inner_->run(std::move(request), std::move(completion));
    thread_->post([completion = std::move(completion)] {
      completion(PlatformError("FailingURLSession", 1, "The network is out of order"));
    });
  }

 private:
  const std::shared_ptr<platform::URLSession> inner_;
  const std::shared_ptr<platform::Executor> thread_;
};

/// An executor that can throw instead of taking a job, or right after taking it.
class FailingExecutor : public platform::Executor {
 public:
  explicit FailingExecutor(std::shared_ptr<platform::Executor> inner) : inner_(std::move(inner)) {}

  std::atomic<bool> refuses = false;
  std::atomic<bool> throwsAfterwards = false;

  void post(std::function<void()> job) override {
    const PlatformError error("FailingExecutor", 1, "The executor is out of order");
    if (refuses) throw error;
    inner_->post(std::move(job));
    if (throwsAfterwards) throw error;
  }

 private:
  const std::shared_ptr<platform::Executor> inner_;
};

}  // namespace TalvoConsentSDK

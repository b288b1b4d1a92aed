#include "TalvoConsentSDK/core/ConsentObservers.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "TalvoConsentSDK/platform/Printer.h"

namespace TalvoConsentSDK {

using namespace platform;

int ConsentObservers::add(std::function<void()> observer) {
  const std::scoped_lock guard(lock_);
  observers_[next_] = std::make_shared<const std::function<void()>>(std::move(observer));
  return next_++;
}

// The removed observer is released outside the lock, because its destructor is host code.
void ConsentObservers::remove(int number) {
  decltype(observers_)::node_type removed;
  const std::scoped_lock guard(lock_);
  removed = observers_.extract(number);
}

void ConsentObservers::notify(const std::shared_ptr<ConsentObservers>& observers) {
  {
    const std::scoped_lock guard(observers->lock_);
    if (observers->observers_.empty()) return;
  }
  platform::postOrRun(observers->mainActor_, [observers] {
    std::unique_lock guard(observers->lock_);
    auto& all = observers->observers_;
    const int end = observers->next_;  // observers added from here on see the changed consent anyway
    for (auto entry = all.begin(); entry != all.end() && entry->first < end;) {
      const auto [number, observer] = *entry;
      guard.unlock();
      callHost(*observer);
      guard.lock();
      entry = all.upper_bound(number);
    }
  });
}

namespace {

class ObservedUserDefaults : public UserDefaults {
 public:
  ObservedUserDefaults(std::shared_ptr<UserDefaults> store, std::string key,
                       std::shared_ptr<ConsentObservers> observers)
      : store_(std::move(store)), key_(std::move(key)), observers_(std::move(observers)) {}

  Result<std::optional<Data>> data(std::string_view key) override { return store_->data(key); }
  Result<std::optional<std::string>> string(std::string_view key) override { return store_->string(key); }
  Result<void> set(std::string_view key, Data value) override {
    return notified(store_->set(key, std::move(value)), key == key_);
  }
  Result<void> set(std::string_view key, std::string value) override {
    return notified(store_->set(key, std::move(value)), key == key_);
  }
  Result<bool> replace(std::string_view key, const std::optional<Data>& expected, Data value) override {
    return notified(store_->replace(key, expected, std::move(value)), key == key_);
  }
  Result<void> remove(std::string_view key) override { return notified(store_->remove(key), key == key_); }
  Result<void> commit(const std::vector<StoreChange>& changes) override {
    const bool changesKey = std::ranges::find(changes, key_, &StoreChange::key) != changes.end();
    return notified(store_->commit(changes), changesKey);
  }
  Result<void> synchronize() override { return store_->synchronize(); }

 private:
  // Notifies after a failure too: a store without transactions may have changed the key before it failed.
  template <class T>
  Result<T> notified(Result<T> result, bool mayHaveChanged) const {
    if (mayHaveChanged) ConsentObservers::notify(observers_);
    return result;
  }

  const std::shared_ptr<UserDefaults> store_;
  const std::string key_;
  const std::shared_ptr<ConsentObservers> observers_;
};

}  // namespace

std::shared_ptr<UserDefaults> observed(std::shared_ptr<UserDefaults> store, std::string key,
                                       std::shared_ptr<ConsentObservers> observers) {
  return std::make_shared<ObservedUserDefaults>(std::move(store), std::move(key), std::move(observers));
}

}  // namespace TalvoConsentSDK

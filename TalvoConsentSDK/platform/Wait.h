#pragma once

// What a suspended coroutine waits for, shared by the coroutine and by whoever ends the wait.

#include <atomic>
#include <coroutine>
#include <exception>
#include <memory>
#include <utility>

#include "TalvoConsentSDK/base/Export.h"
#include "TalvoConsentSDK/platform/Executor.h"

namespace TalvoConsentSDK TALVO_EXPORT {

namespace detail {

/// A share in an object that counts its owners. Null only once moved from.
template <class T>
class Share {
 public:
  /// Takes over the share that the object was made with.
  static Share ofNew(T& object) noexcept { return Share(&object); }

  /// One more share.
  explicit Share(T& object) noexcept : object_(&object) { object_->retain(); }
  Share(const Share& other) noexcept : Share(*other.object_) {}
  Share(Share&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
  Share& operator=(Share other) noexcept {
    std::swap(object_, other.object_);
    return *this;
  }
  ~Share() {
    if (object_) object_->release();
  }

  T* operator->() const noexcept { return object_; }
  explicit operator bool() const noexcept { return object_; }

 private:
  explicit Share(T* object) noexcept : object_(object) {}

  T* object_;
};

/// One wait of one coroutine. The coroutine may be destroyed while it waits, on the thread that it would go
/// on on; it is then not resumed. Made with one share; `destroy` is called for the last. Not virtual: each
/// type of task would carry a table and its type's name.
class TALVO_EXPORT Wait {
 public:
  using Destroy = void (*)(Wait& wait) noexcept;

  explicit Wait(Destroy destroy) noexcept : destroy_(destroy) {}
  Wait(const Wait&) = delete;
  Wait& operator=(const Wait&) = delete;

  void retain() noexcept { owners_.fetch_add(1, std::memory_order_relaxed); }
  void release() noexcept {
    if (owners_.fetch_sub(1, std::memory_order_acq_rel) == 1) destroy_(*this);
  }

  /// Says who waits. Called before anything can end the wait.
  void begin(std::coroutine_handle<> awaiter) noexcept { awaiter_ = awaiter; }

  /// Called when all that leads to the end has been started. False: the wait is over, and the awaiter goes on
  /// at once, which neither suspends it nor deepens the stack (symmetric transfer would overflow it in builds
  /// without optimisation). True: `end` resumes it, maybe before this has returned.
  bool suspend() noexcept { return advance(Phase::starting, Phase::suspended); }

  /// Ends the wait, once: the awaiter goes on on `executor`, or here when there is none. An executor that
  /// throws instead of taking the job ends the wait with what it threw, here.
  static void end(Share<Wait> wait, const std::shared_ptr<platform::Executor>& executor) noexcept;

  /// The awaiter goes; whoever ends the wait finds nobody.
  void abandon() noexcept { phase_.store(Phase::over, std::memory_order_release); }

  /// Throws what the awaiter's executor threw.
  void rethrowRefusal() const {
    if (refusal_) std::rethrow_exception(refusal_);
  }

 protected:
  ~Wait() = default;

 private:
  enum class Phase { starting, suspended, over };

  bool advance(Phase from, Phase to) noexcept {
    return phase_.compare_exchange_strong(from, to, std::memory_order_acq_rel);
  }
  void resume(std::exception_ptr refusal) noexcept;

  const Destroy destroy_;
  std::atomic<int> owners_ = 1;
  std::atomic<Phase> phase_ = Phase::starting;
  std::coroutine_handle<> awaiter_;
  std::exception_ptr refusal_;
};

}  // namespace detail

}  // namespace TalvoConsentSDK

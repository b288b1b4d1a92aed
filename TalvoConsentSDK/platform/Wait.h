#pragma once

// The wait of a suspended coroutine. It is shared by the coroutine and by the code that ends the wait.

#include <atomic>
#include <coroutine>
#include <exception>
#include <memory>
#include <utility>

#include "TalvoConsentSDK/base/Export.h"
#include "TalvoConsentSDK/platform/Executor.h"

namespace TalvoConsentSDK TALVO_EXPORT {

namespace detail {

/// A reference to an object that counts its owners. Null only after it has been moved from.
template <class T>
class Share {
 public:
  /// Takes over the reference that a new object starts with.
  static Share ofNew(T& object) noexcept { return Share(&object); }

  /// Adds a reference.
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

/// One wait of one coroutine. The coroutine may be destroyed while it waits, but only on the thread on which
/// it would resume; it is then not resumed. The wait starts with one reference; releasing the last one calls
/// `destroy`. There are no virtual functions, because they would add a vtable and a type name to the binary
/// for each type of task.
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

  /// Sets the coroutine that waits. Called before anything can end the wait.
  void begin(std::coroutine_handle<> awaiter) noexcept { awaiter_ = awaiter; }

  /// Called once the work that will end the wait has been started. Returns false if the wait is already over:
  /// the awaiter then goes on without suspending, so the stack does not grow (symmetric transfer would
  /// overflow it in builds without optimisation). Otherwise returns true, and `end` resumes the awaiter,
  /// perhaps before `suspend` returns.
  bool suspend() noexcept { return advance(Phase::starting, Phase::suspended); }

  /// Ends the wait; called once. The awaiter resumes on `executor`, or on this thread if there is none. If
  /// the executor throws instead of taking the job, the awaiter resumes on this thread with that exception.
  static void end(Share<Wait> wait, const std::shared_ptr<platform::Executor>& executor) noexcept;

  /// Called when the awaiter is destroyed: the end of the wait then resumes nothing.
  void abandon() noexcept { phase_.store(Phase::over, std::memory_order_release); }

  /// If the awaiter's executor threw instead of taking the job, throws that exception.
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

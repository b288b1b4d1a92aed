#pragma once

// Collects the body of a reply while it arrives.

#include <cstddef>
#include <list>
#include <string>
#include <string_view>
#include <utility>

namespace TalvoConsentSDK {

/// Stores the body in pieces, so that while it arrives it takes little more memory than its bytes need. A
/// single string would be copied each time it grows, and the old and new copies together can take twice the
/// memory.
class CurlBody {
 public:
  std::size_t size() const noexcept { return size_; }

  /// Throws `std::bad_alloc`.
  void append(std::string_view bytes) {
    while (!bytes.empty()) {
      if (pieces_.empty() || pieces_.back().size() == pieceSize) {
        const bool isFirst = pieces_.empty();
        pieces_.emplace_back();
        if (!isFirst) pieces_.back().reserve(pieceSize);  // the first piece is often the only one, and small
      }
      std::string& last = pieces_.back();
      const std::string_view taken = bytes.substr(0, pieceSize - last.size());
      last += taken;
      size_ += taken.size();
      bytes.remove_prefix(taken.size());
    }
  }

  /// Moves the whole body out. Throws `std::bad_alloc`.
  std::string take() {
    if (pieces_.size() < 2) return pieces_.empty() ? std::string() : std::move(pieces_.front());
    std::string whole;
    whole.reserve(size_);
    for (; !pieces_.empty(); pieces_.pop_front()) whole += pieces_.front();
    return whole;
  }

 private:
  static constexpr std::size_t pieceSize = 1U << 20U;

  std::list<std::string> pieces_;
  std::size_t size_ = 0;
};

}  // namespace TalvoConsentSDK

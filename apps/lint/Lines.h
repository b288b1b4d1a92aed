#pragma once

// The lines of a document's keys and entries.

#include <cstddef>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace TalvoConsentSDK::linting {

class Lines {
 public:
  struct RepeatedKey {
    std::string path;
    std::size_t firstLine;
  };

  Lines() = default;

  /// `text` must be JSON.
  explicit Lines(std::string_view text);

  /// Returns the line of the key or entry at `path`, such as "customization.colors.font". If there is none,
  /// returns the line of the innermost one around it that exists. If a key is given twice, its last line
  /// counts, because the decoder reads the last value.
  std::size_t of(std::string path) const;

  const std::vector<RepeatedKey>& repeatedKeys() const { return repeatedKeys_; }

  /// From now on, a path that begins with `corrected` has the line of the path that begins with `misspelt`.
  void rename(std::string misspelt, std::string corrected);

 private:
  friend class LineScanner;

  std::map<std::string, std::size_t, std::less<>> lines_;
  std::vector<RepeatedKey> repeatedKeys_;
  std::vector<std::pair<std::string, std::string>> names_;  // misspelt and corrected path
};

}  // namespace TalvoConsentSDK::linting

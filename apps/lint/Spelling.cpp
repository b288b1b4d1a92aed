#include "apps/lint/Spelling.h"

#include <algorithm>

#include "TalvoConsentSDK/base/ASCII.h"

namespace TalvoConsentSDK::linting {

namespace {

std::string lettersOf(std::string_view word) {
  std::string letters = lowercased(word);
  std::erase_if(letters, [](char c) { return c == ' ' || c == '-' || c == '_'; });
  return letters;
}

std::optional<std::string> longer(const std::string& word, const std::vector<std::string>& names) {
  constexpr std::size_t shortest = 6;
  std::optional<std::string> found;
  for (const std::string& name : names) {
    const std::string letters = lettersOf(name);
    if (word.size() < shortest || !(letters.starts_with(word) || letters.ends_with(word))) continue;
    if (found) return std::nullopt;
    found = name;
  }
  return found;
}

}  // namespace

std::size_t editDistance(std::string_view a, std::string_view b) {
  using Row = std::vector<std::size_t>;
  Row beforeLast(b.size() + 1);
  Row last(b.size() + 1);
  Row row(b.size() + 1);
  for (std::size_t j = 0; j <= b.size(); ++j) row[j] = j;
  for (std::size_t i = 1; i <= a.size(); ++i) {
    beforeLast.swap(last);
    last.swap(row);
    row[0] = i;
    for (std::size_t j = 1; j <= b.size(); ++j) {
      const std::size_t replaced = last[j - 1] + (a[i - 1] != b[j - 1]);
      row[j] = std::min({replaced, last[j] + 1, row[j - 1] + 1});
      const bool isSwapped = i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1];
      if (isSwapped) row[j] = std::min(row[j], beforeLast[j - 2] + 1);
    }
  }
  return row[b.size()];
}

std::optional<std::string> closest(std::string_view word, const std::vector<std::string>& names) {
  std::optional<std::string> found;
  std::size_t smallest = 0;
  for (const std::string& name : names) {
    const std::size_t distance = editDistance(lettersOf(word), lettersOf(name));
    if (distance > std::max<std::size_t>(1, name.size() / 4) || (found && distance >= smallest)) continue;
    found = name;
    smallest = distance;
  }
  return found ? found : longer(lettersOf(word), names);
}

std::string didYouMean(std::string_view name) {
  return ": did you mean \"" + std::string(name) + "\"?";
}

std::string anyOf(const std::vector<std::string>& names) {
  std::string text;
  for (std::size_t i = 0; i < names.size(); ++i) {
    if (i > 0) text += i + 1 < names.size() ? ", " : " or ";
    text += '"' + names[i] + '"';
  }
  return text;
}

}  // namespace TalvoConsentSDK::linting

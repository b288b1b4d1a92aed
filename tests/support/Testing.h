#pragma once

// Helpers for the library's tests: short names, text utilities, and JSON that can be compared.

#include <algorithm>
#include <array>
#include <chrono>
#include <fstream>
#include <functional>
#include <iterator>
#include <map>
#include <memory>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "TalvoConsentSDK/models/JSONCoding.h"
#include "TalvoConsentSDK/models/JSONValue.h"
#include "TalvoConsentSDK/platform/URLSession.h"

#include "testing/fakes/MemoryPlatform.h"

namespace TalvoConsentSDK {

using namespace platform;
using namespace view;

using namespace std::chrono_literals;
using namespace std::string_literals;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Pair;
using ::testing::SizeIs;
using ::testing::StartsWith;
using ::testing::TestWithParam;
using ::testing::ValuesIn;

using Texts = std::vector<std::string>;

/// The content of a file; empty if there is none.
inline std::string contentOf(const std::string& file) {
  std::ifstream stream(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

/// An exception that a host may throw: its `what` returns null.
struct WithoutText : std::exception {
  const char* what() const noexcept override { return nullptr; }
};

/// The words of `text`, separated by white space.
inline Texts words(const std::string& text) {
  std::istringstream stream(text);
  return Texts(std::istream_iterator<std::string>(stream), {});
}

/// The parts of a text between separators, trimmed.
inline Texts split(const std::string& text, char separator) {
  Texts parts;
  std::istringstream stream(text);
  for (std::string part; std::getline(stream, part, separator);) {
    part.erase(0, part.find_first_not_of(' '));
    parts.push_back(part.erase(part.find_last_not_of(' ') + 1));
  }
  return parts;
}

/// The rows of a table, with cells separated by bars. Skips the first line of `text`.
template <std::size_t columns>
std::vector<std::array<std::string, columns>> rows(const std::string& text) {
  std::vector<std::array<std::string, columns>> all;
  for (const std::string& line : split(text.substr(text.find('\n') + 1), '\n')) {
    std::ranges::copy(split(line, '|'), all.emplace_back().begin());
  }
  return all;
}

/// The rows of a table in a file in tests/golden. Lines that begin with '#' are comments.
template <std::size_t columns>
std::vector<std::array<std::string, columns>> tableOf(const std::string& file) {
  std::ifstream stream(TALVO_TEST_DATA "/golden/" + file);
  std::string text;
  for (std::string line; std::getline(stream, line);)
    if (!line.empty() && line[0] != '#') text += '\n' + line;
  if (text.empty()) throw std::runtime_error("There is no table " + file);
  return rows<columns>(text);
}

/// Replaces the keys in a text by their values.
inline std::string filled(std::string text, const std::map<std::string, std::string>& values) {
  for (const auto& [name, value] : values) {
    for (auto at = text.find(name); at != text.npos; at = text.find(name, at + value.size()))
      text.replace(at, name.size(), value);
  }
  return text;
}

/// Replaces every "\xHH" in a text by that byte.
inline std::string unescaped(std::string text) {
  for (std::size_t at = 0; (at = text.find("\\x", at)) != text.npos; ++at)
    text.replace(at, 4, 1, static_cast<char>(std::stoi(text.substr(at + 2, 2), nullptr, 16)));
  return text;
}

/// Installs the platform again with another object in place of `member`.
template <class Seam>
void replaceSeam(std::shared_ptr<Seam> Platform::* member,
                 const std::type_identity_t<std::shared_ptr<Seam>>& seam) {
  Platform installed = Platform::current();
  installed.*member = seam;
  Platform::install(installed);
}

/// A reply with this status and body. "nothing" leaves either of them out. The body may contain "\xHH".
inline URLResponse replyOf(const std::string& status, const std::string& body) {
  URLResponse made;
  if (status != "nothing") made.statusCode = std::stoi(status);
  if (body != "nothing") made.body = unescaped(body);
  return made;
}

inline std::string joined(const Texts& texts, const std::string& separator = "; ") {
  std::string all;
  for (const std::string& each : texts) all += (all.empty() ? "" : separator) + each;
  return all;
}

template <class T>
T parsed(const std::string& json) {
  return JSONDecoder().decode<T>(json).value();
}

template <class T>
std::string written(const T& value) {
  return JSONEncoder().encode(value).value();
}

/// The document without white space and with sorted keys.
inline std::string canonical(const std::string& json) {
  return written(parsed<JSONValue>(json));
}

/// The error's text; empty for success.
template <class T>
std::string failure(const Result<T>& result) {
  return result ? "" : result.error().what();
}

/// Names the instances of a parameterized test by their member `name`.
inline constexpr auto byName = [](const auto& each) { return std::string(each.param.name); };
/// The same by the first cell of each row of a table.
inline constexpr auto byFirstCell = [](const auto& each) { return each.param[0]; };

}  // namespace TalvoConsentSDK

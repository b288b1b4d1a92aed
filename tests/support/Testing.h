#pragma once

// What the library's own tests share: short names, and JSON texts that can be compared.

#include <functional>
#include <iterator>
#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "TalvoConsentSDK/models/JSONCoding.h"
#include "TalvoConsentSDK/models/JSONValue.h"

#include "adapters/memory/MemoryPlatform.h"

namespace TalvoConsentSDK {

using namespace std::string_literals;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Pair;
using ::testing::StartsWith;
using ::testing::TestWithParam;
using ::testing::ValuesIn;

using Texts = std::vector<std::string>;

/// The pieces of `text` between white space.
inline Texts words(const std::string& text) {
  std::istringstream stream(text);
  return Texts(std::istream_iterator<std::string>(stream), {});
}

template <class T>
T parsed(const std::string& json) {
  return JSONDecoder().decode<T>(json).value();
}

template <class T>
std::string written(const T& value) {
  return JSONEncoder().encode(value).value();
}

/// The document without white space and with its keys sorted.
inline std::string canonical(const std::string& json) {
  return written(parsed<JSONValue>(json));
}

/// The error's text; empty for a success.
template <class T>
std::string failure(const Result<T>& result) {
  return result ? "" : result.error().what();
}

/// Names the instances of a parameterized test.
inline constexpr auto byName = [](const auto& each) { return std::string(each.param.name); };

}  // namespace TalvoConsentSDK

#pragma once

// Tests that every device store must pass. `Maker` has `open()`, which returns a store on the same values
// each time. If several store objects can share these values, `open()` returns a new object each time.

#include <atomic>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <variant>
#include <vector>

#include <gtest/gtest.h>

#include "TalvoConsentSDK/platform/UserDefaults.h"

namespace TalvoConsentSDK {

template <class Maker>
class UserDefaultsConformance : public ::testing::Test {
 protected:
  Maker maker;
  std::shared_ptr<platform::UserDefaults> store = maker.open();
};
TYPED_TEST_SUITE_P(UserDefaultsConformance);

TYPED_TEST_P(UserDefaultsConformance, GivesBackWhatWasStored) {
  const std::vector<std::string> texts{
      "",
      "plain",
      std::string("\0a\0", 3),
      "\xE2\x9A\xA0\xEF\xB8\x8F \xD8\xA7",
      "'; DROP TABLE defaults; --",
      "\xFF\xC0",
      std::string(1 << 20, 'x'),
  };
  for (const std::string& key : texts) {
    EXPECT_EQ(this->store->data(key).value(), std::nullopt);
    EXPECT_EQ(this->store->string(key).value(), std::nullopt);
  }
  for (const std::string& key : texts) {
    for (const std::string& value : texts) {
      this->store->set(key, platform::Data(value)).value();
      EXPECT_TRUE(this->store->data(key).value() == platform::Data(value));
      EXPECT_EQ(this->store->string(key).value(), std::nullopt);
      this->store->set(key, value).value();  // replaces the data
      EXPECT_TRUE(this->store->string(key).value() == value);
      EXPECT_EQ(this->store->data(key).value(), std::nullopt);
    }
  }
  EXPECT_EQ(this->store->string(std::string_view()).value(), this->store->string("").value());
  this->store->synchronize().value();
  for (const std::string& key : texts) {
    EXPECT_TRUE(this->store->string(key).value() == texts.back());
    this->store->remove(key).value();
    this->store->remove(key).value();  // already removed
    EXPECT_EQ(this->store->string(key).value(), std::nullopt);
  }
}

TYPED_TEST_P(UserDefaultsConformance, ReplacesOnlyWhatIsExpected) {
  using Value = std::optional<platform::Data>;
  const auto replaced = [this](const std::string& key, const Value& expected, const std::string& value) {
    return this->store->replace(key, expected, platform::Data(value)).value();
  };
  EXPECT_FALSE(replaced("k", platform::Data(""), "new")) << "missing is not empty";
  EXPECT_EQ(this->store->data("k").value(), std::nullopt);
  EXPECT_TRUE(replaced("k", std::nullopt, "first"));
  EXPECT_FALSE(replaced("k", std::nullopt, "other"));
  EXPECT_FALSE(replaced("k", platform::Data("FIRST"), "other"));
  EXPECT_EQ(this->store->data("k").value(), platform::Data("first"));
  EXPECT_TRUE(replaced("k", platform::Data("first"), "first")) << "an unchanged value is stored too";
  EXPECT_TRUE(replaced("k", platform::Data("first"), std::string("\0", 1)));
  EXPECT_TRUE(replaced("k", platform::Data(std::string("\0", 1)), ""));
  EXPECT_TRUE(replaced("k", platform::Data(""), "last"));
  EXPECT_EQ(this->store->data("k").value(), platform::Data("last"));

  this->store->set("s", std::string("text")).value();
  EXPECT_FALSE(replaced("s", platform::Data("text"), "new")) << "a string is not data";
  EXPECT_EQ(this->store->string("s").value(), "text");
  EXPECT_TRUE(replaced("s", std::nullopt, "new")) << "there is no data under the key";
  EXPECT_EQ(this->store->data("s").value(), platform::Data("new"));
}

TYPED_TEST_P(UserDefaultsConformance, CommitsSeveralChangesInOrder) {
  const std::monostate removed;
  this->store->set("gone", std::string("text")).value();
  this->store->set("other", platform::Data("stays")).value();
  this->store
      ->commit({{"first", platform::Data("1")},
                {"text", std::string("2")},
                {"gone", removed},
                {"missing", removed},
                {"first", platform::Data("3")},
                {"back", platform::Data("4")},
                {"back", removed}})
      .value();
  this->store->commit({}).value();
  this->store->synchronize().value();
  const auto other = this->maker.open();
  EXPECT_EQ(other->data("first").value(), platform::Data("3"));
  EXPECT_EQ(other->string("text").value(), "2");
  EXPECT_EQ(other->string("gone").value(), std::nullopt);
  EXPECT_EQ(other->data("back").value(), std::nullopt);
  EXPECT_EQ(other->data("other").value(), platform::Data("stays"));

  std::thread writer([&] {
    for (int round = 10; round < 60; ++round) {
      const platform::Data value(std::to_string(round));
      this->store->commit({{"first", value}, {"second", value}}).value();
    }
  });
  for (std::string second; second != "59";) {
    second = other->data("second").value().value_or(platform::Data()).bytes;
    EXPECT_GE(other->data("first").value()->bytes, second)
        << "a later change was visible before an earlier one";
  }
  writer.join();
}

TYPED_TEST_P(UserDefaultsConformance, ShowsEveryReaderWhatWasSet) {
  const auto other = this->maker.open();
  for (const char* value : {"1", "2"}) {
    this->store->set("k", platform::Data(value)).value();
    EXPECT_EQ(other->data("k").value(), platform::Data(value));
    std::thread([&] { EXPECT_EQ(other->data("k").value(), platform::Data(value)); }).join();
  }
  other->remove("k").value();
  EXPECT_EQ(this->store->data("k").value(), std::nullopt);
}

TYPED_TEST_P(UserDefaultsConformance, ServesManyThreads) {
  constexpr int threadCount = 8;
  constexpr int rounds = 25;
  std::atomic<int> increments = 0;
  std::vector<std::thread> threads;
  for (int number = 0; number < threadCount; ++number) {
    threads.emplace_back([&, number, mine = this->maker.open()] {
      const std::string key = "own " + std::to_string(number);
      for (int round = 0; round < rounds; ++round) {
        mine->set(key, std::to_string(round)).value();
        EXPECT_EQ(mine->string(key).value(), std::to_string(round));

        const auto before = mine->data("shared").value();
        const int count = before ? std::stoi(before->bytes) : 0;
        if (mine->replace("shared", before, platform::Data(std::to_string(count + 1))).value()) ++increments;
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_GE(increments, rounds);
  EXPECT_EQ(this->store->data("shared").value(), platform::Data(std::to_string(increments)))
      << "an update was lost";
}

REGISTER_TYPED_TEST_SUITE_P(UserDefaultsConformance, GivesBackWhatWasStored, ReplacesOnlyWhatIsExpected,
                            CommitsSeveralChangesInOrder, ShowsEveryReaderWhatWasSet, ServesManyThreads);

}  // namespace TalvoConsentSDK

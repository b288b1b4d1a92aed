#pragma once

// Tests that a storage of a cache must pass if several processes share it. A backend has what
// CacheStorageConformance.h describes, but its `open` returns a new object on the same entries each time, and
//   static int kills(): returns the number of kills to try

#include <csignal>
#include <memory>
#include <optional>
#include <string>

#include <gtest/gtest.h>

#include "TalvoConsentSDK/platform/CacheStorage.h"

#include "testing/ChildProcess.h"

namespace TalvoConsentSDK {

template <class Backend>
class CacheSharingConformance : public ::testing::Test {
 protected:
  static constexpr int count = 8;

  // Head and body repeat the number and the version, so that an entry that was written in part is noticed.
  static platform::CacheEntry entry(int number, int version) {
    const std::string name = std::to_string(number) + "." + std::to_string(version) + " ";
    std::string body;
    while (body.size() < 9'000) body += name;
    return {name, body};
  }

  // Whether each of the entries is there. Those that are there must have been written as a whole.
  static bool hasAll(platform::CacheStorage& storage) {
    int found = 0;
    for (int number = 0; number < count; ++number) {
      const auto read = storage.read(std::to_string(number));
      if (!read || !*read) continue;
      ++found;
      const std::string& head = (*read)->head;
      EXPECT_TRUE(**read == entry(number, std::stoi(head.substr(head.find('.') + 1)))) << head;
    }
    return found == count;
  }

  Backend backend;
};

TYPED_TEST_SUITE_P(CacheSharingConformance);

TYPED_TEST_P(CacheSharingConformance, SurvivesKilledProcesses) {
  constexpr std::size_t room = 1'000'000;
  const std::shared_ptr<platform::CacheStorage> storage = this->backend.open(room);
  const int kills = TypeParam::kills();
  for (int kill = 0; kill < kills; ++kill) {
    const auto writing = [&](const ProcessChannel& parent) {
      const std::shared_ptr<platform::CacheStorage> own = this->backend.open(room);
      for (int version = 1;; ++version) {
        for (int number = 0; number < this->count; ++number)
          own->write(std::to_string(number), this->entry(number, version)).value();
        if (!parent.send(version)) return;
      }
    };
    ChildProcess one(writing), two(writing);
    for (int report = 0; report < 3 + kill % 3; ++report) {
      ASSERT_TRUE(one.channel->receive<int>() && two.channel->receive<int>());
      this->hasAll(*storage);
    }
    for (ChildProcess* const child : {&one, &two}) {
      child->signal(SIGKILL);
      child->wait();
    }
    EXPECT_TRUE(this->hasAll(*this->backend.open(room)));
  }
}

REGISTER_TYPED_TEST_SUITE_P(CacheSharingConformance, SurvivesKilledProcesses);

}  // namespace TalvoConsentSDK

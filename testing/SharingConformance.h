#pragma once

// Tests that every device store must pass if several processes share it. `Maker` has `open()`, which returns
// a store on the same file each time, and `saves()`, which returns how many values each process saves.

#include <list>
#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "TalvoConsentSDK/platform/UserDefaults.h"

#include "testing/ChildProcess.h"

namespace TalvoConsentSDK {

template <class Maker>
class SharingConformance : public ::testing::Test {
 protected:
  Maker maker;
};
TYPED_TEST_SUITE_P(SharingConformance);

TYPED_TEST_P(SharingConformance, ServesSeveralProcessesFromTheStart) {
  constexpr int processes = 8;
  const int saves = TypeParam::saves();
  std::list<ChildProcess> children;
  for (int n = 0; n < processes; ++n) {
    children.emplace_back([&](const ProcessChannel&) {
      const std::shared_ptr<platform::UserDefaults> store = this->maker.open();
      for (int key = 0; key < saves; ++key)
        store->set(std::to_string(n * saves + key), platform::Data("v")).value();
      // The file grows and shrinks while others open it.
      for (int round = 0; round < 3; ++round) {
        this->maker.open()->set("large " + std::to_string(n), std::string(50'000, 'x')).value();
        this->maker.open()->remove("large " + std::to_string(n)).value();
      }
    });
  }
  for (ChildProcess& child : children) EXPECT_EQ(child.wait(), 0);
  const std::shared_ptr<platform::UserDefaults> store = this->maker.open();
  for (int key = 0; key < processes * saves; ++key)
    EXPECT_EQ(store->data(std::to_string(key)).value(), platform::Data("v"));
}

REGISTER_TYPED_TEST_SUITE_P(SharingConformance, ServesSeveralProcessesFromTheStart);

}  // namespace TalvoConsentSDK

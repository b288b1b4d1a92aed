#pragma once

// What every device store must do that several processes share. `Maker` has `open()`, which gives a store
// over the same file each time it is called, and `saves()`, which tells how many values each process saves.

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

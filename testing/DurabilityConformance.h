#pragma once

// Tests that every device store must pass if its process may be killed. `Maker` has `open()`, which returns a
// store on the same file each time, and `static int kills()`, which returns the number of kills to try.

#include <csignal>
#include <iostream>
#include <memory>
#include <optional>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "TalvoConsentSDK/platform/Platform.h"
#include "TalvoConsentSDK/platform/UserDefaults.h"

#include "testing/ChildProcess.h"
#include "testing/fakes/CapturingPrinter.h"

namespace TalvoConsentSDK {

template <class Maker>
class DurabilityConformance : public ::testing::Test {
 protected:
  DurabilityConformance() {
    Platform platform;
    platform.printer = printer;
    Platform::install(platform);
  }

  std::shared_ptr<CapturingPrinter> printer = std::make_shared<CapturingPrinter>();
  Maker maker;
};
TYPED_TEST_SUITE_P(DurabilityConformance);

// A change that was reported as stored survives killing the process at any point.
TYPED_TEST_P(DurabilityConformance, SurvivesBeingKilled) {
  const std::string padding(3000, '.');
  int last = 0;
  const int kills = TypeParam::kills();
  for (int kill = 0; kill < kills; ++kill) {
    ChildProcess child([&](const ProcessChannel& parent) {
      const std::shared_ptr<platform::UserDefaults> store = this->maker.open();
      for (int n = last + 1;; ++n) {
        const platform::Data value(std::to_string(n) + padding);
        store->commit({{"k", value}, {"twin", value}}).value();
        if (!parent.send(n)) return;
      }
    });
    int acknowledged = last;
    for (int report = 0; report < kill % 7; ++report) {
      const auto next = child.channel->receive<int>();
      ASSERT_TRUE(next) << "the child ended by itself";
      acknowledged = *next;
    }
    ::usleep(static_cast<useconds_t>(kill * 37 % 400));
    child.signal(SIGKILL);
    EXPECT_EQ(child.wait(), -SIGKILL);
    while (const auto next = child.channel->receive<int>()) acknowledged = *next;

    const std::shared_ptr<platform::UserDefaults> store = this->maker.open();
    const std::optional<platform::Data> stored = store->data("k").value();
    EXPECT_EQ(store->data("twin").value(), stored) << "half of a commit";
    last = stored ? std::stoi(stored->bytes) : 0;
    EXPECT_TRUE(!stored || stored->bytes == std::to_string(last) + padding);
    EXPECT_GE(last, acknowledged);
    EXPECT_LE(last, acknowledged + 1);
  }
  EXPECT_THAT(this->printer->take(), ::testing::IsEmpty());
  std::cout << kills << " kills, " << last << " saves\n";
}

REGISTER_TYPED_TEST_SUITE_P(DurabilityConformance, SurvivesBeingKilled);

}  // namespace TalvoConsentSDK

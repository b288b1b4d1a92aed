#pragma once

// Tests that every storage of a cache must pass. A backend is default-constructible and has
//   std::shared_ptr<CacheStorage> open(std::size_t maxBytes):
//     opens an empty storage that takes at most this much room, and keeps no entry larger than half of it.

#include <cstddef>
#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "TalvoConsentSDK/platform/CacheStorage.h"

namespace TalvoConsentSDK {

template <class Backend>
class CacheStorageConformance : public ::testing::Test {
 protected:
  static std::string url(int number) { return "https://service.example/" + std::to_string(number); }
  static platform::CacheEntry entry(int number, std::size_t size = 10) {
    return {"head " + std::to_string(number), std::string(size, static_cast<char>('a' + number % 26))};
  }

  Backend backend;
};

TYPED_TEST_SUITE_P(CacheStorageConformance);

TYPED_TEST_P(CacheStorageConformance, KeepsReplacesAndRemoves) {
  using platform::CacheEntry;
  const auto storage = this->backend.open(1'000'000);
  const std::string any("\0\xff'\n", 4);
  for (const std::string& key : {std::string("k"), any}) {
    EXPECT_EQ(storage->read(key).value(), std::nullopt);
    storage->remove(key).value();
    storage->replaceHead(key, "", "new").value();
    EXPECT_EQ(storage->read(key).value(), std::nullopt);
    storage->write(key, {any, ""}).value();
    EXPECT_EQ(storage->read(key).value(), (CacheEntry{any, ""}));
    storage->write(key, {"head", any}).value();
    storage->replaceHead(key, "another", "wrong").value();
    EXPECT_EQ(storage->read(key).value(), (CacheEntry{"head", any}));
    storage->replaceHead(key, "head", "new").value();
    EXPECT_EQ(storage->read(key).value(), (CacheEntry{"new", any}));
  }
  storage->remove("k").value();
  EXPECT_EQ(storage->read("k").value(), std::nullopt);
  EXPECT_TRUE(storage->read(any).value());
}

TYPED_TEST_P(CacheStorageConformance, ForgetsWhatWasNotUsedForLongest) {
  const auto storage = this->backend.open(1'000'000);
  for (int i = 0; i < 20; ++i) storage->write(this->url(i), this->entry(i, 40'000)).value();
  for (int i = 0; i < 3; ++i) EXPECT_TRUE(storage->read(this->url(i)).value());
  for (int i = 20; i < 35; ++i) storage->write(this->url(i), this->entry(i, 40'000)).value();
  for (int i = 0; i < 35; ++i) {
    const auto found = storage->read(this->url(i)).value();
    EXPECT_TRUE(found || (i >= 3 && i <= 25)) << i;
    EXPECT_FALSE(found && i >= 3 && i < 10) << i;
    EXPECT_TRUE(!found || *found == this->entry(i, 40'000)) << i;
  }
}

TYPED_TEST_P(CacheStorageConformance, KeepsNothingThatIsTooLarge) {
  const auto storage = this->backend.open(1'000'000);
  storage->write("other", this->entry(1)).value();
  storage->write("k", this->entry(2)).value();
  storage->write("k", this->entry(3, 600'000)).value();
  EXPECT_EQ(storage->read("k").value(), std::nullopt) << "the former entry is out of date";
  EXPECT_TRUE(storage->read("other").value());
}

// The backend of a storage in a file can check the size of the file in its destructor.
TYPED_TEST_P(CacheStorageConformance, MakesRoomForHeadsThatGrow) {
  const auto storage = this->backend.open(1'000'000);
  const std::string longer(2'000, 'h');
  for (int i = 0; i < 3'000; ++i) storage->write(this->url(i), this->entry(i)).value();
  for (int i = 0; i < 3'000; ++i) storage->replaceHead(this->url(i), this->entry(i).head, longer).value();
  int grown = 0;
  for (int i = 0; i < 3'000; ++i) {
    const auto found = storage->read(this->url(i)).value();
    EXPECT_TRUE(!found || found->body == this->entry(i).body) << i;
    grown += found && found->head == longer;
  }
  EXPECT_GT(grown, 100);
}

TYPED_TEST_P(CacheStorageConformance, KeepsTheLatestOfTenThousand) {
  const auto storage = this->backend.open(10'000'000);
  for (int i = 0; i < 10'000; ++i) storage->write(this->url(i), this->entry(i, 2'000)).value();
  int kept = 0;
  for (int i = 0; i < 10'000; ++i) {
    const auto found = storage->read(this->url(i)).value();
    EXPECT_TRUE(!found || *found == this->entry(i, 2'000)) << i;
    EXPECT_TRUE(found || i < 8'000) << i;
    kept += found.has_value();
  }
  EXPECT_LT(kept, 5'000);
}

REGISTER_TYPED_TEST_SUITE_P(CacheStorageConformance, KeepsReplacesAndRemoves, ForgetsWhatWasNotUsedForLongest,
                            KeepsNothingThatIsTooLarge, MakesRoomForHeadsThatGrow,
                            KeepsTheLatestOfTenThousand);

}  // namespace TalvoConsentSDK

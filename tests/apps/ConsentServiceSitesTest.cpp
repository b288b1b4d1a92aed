// The sites that come with the consent service: that clients can read them, in every language, and people
// too.

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "TalvoConsentSDK/models/BannerCustomization.h"
#include "TalvoConsentSDK/models/JSONCoding.h"
#include "TalvoConsentSDK/models/JSONValue.h"
#include "TalvoConsentSDK/models/Services.h"
#include "TalvoConsentSDK/models/ServicesByCategory.h"
#include "TalvoConsentSDK/models/SiteConfiguration.h"
#include "TalvoConsentSDK/platform/Color.h"

namespace TalvoConsentSDK::testing {
namespace {

namespace fs = std::filesystem;

std::string contentOf(const fs::path& file) {
  std::ifstream stream(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

template <class Record>
Record read(const fs::path& file) {
  auto record = JSONDecoder().decode<Record>(contentOf(file));
  EXPECT_TRUE(record) << file << ": " << record.error().what();
  return record ? *std::move(record) : Record();
}

// All files of the shipped sites whose names begin so, sorted.
std::vector<fs::path> documents(const std::string& prefix, const std::string& site = "") {
  std::vector<fs::path> found;
  for (const auto& each : fs::recursive_directory_iterator(fs::path(TALVO_SHIPPED_SITES) / site)) {
    if (each.path().filename().string().starts_with(prefix)) found.push_back(each.path());
  }
  std::ranges::sort(found);
  EXPECT_FALSE(found.empty()) << prefix;
  return found;
}

// The paths of all keys and elements below a value.
void collectShape(const JSONValue& value, const std::string& path, std::set<std::string>& shape) {
  shape.insert(path);
  if (const JSONObject* object = value.object()) {
    for (const auto& [key, member] : *object) collectShape(member, path + "." + key, shape);
  } else if (const JSONArray* array = value.array()) {
    for (std::size_t index = 0; index < array->size(); ++index) {
      collectShape((*array)[index], path + "[" + std::to_string(index) + "]", shape);
    }
  }
}

double luminance(const Color& color) {
  const auto linear = [](double channel) {
    return channel <= 0.03928 ? channel / 12.92 : std::pow((channel + 0.055) / 1.055, 2.4);
  };
  return 0.2126 * linear(color.red) + 0.7152 * linear(color.green) + 0.0722 * linear(color.blue);
}

double contrast(const std::string& one, const std::string& other) {
  const auto [darker, lighter] =
      std::minmax({luminance(colorFromText(one)), luminance(colorFromText(other))});
  return (lighter + 0.05) / (darker + 0.05);
}

TEST(ShippedSites, ReadOnEveryCardAndButton) {
  for (const fs::path& file : documents("customization.")) {
    const auto colors = read<BannerCustomization>(file).customization.value().colors;
    EXPECT_GE(contrast(colors.font, colors.background), 7) << file;
    EXPECT_GE(contrast(colors.buttonFontColor, colors.background), 4.5) << file << ": links";
    EXPECT_GE(contrast(colors.buttonFontColor, colors.buttonBackground), 4.5) << file << ": button titles";
    EXPECT_GE(contrast(colors.buttonBackground, colors.background), 3) << file << ": buttons";
  }
}

TEST(ShippedSites, HoldOnlyWhatTheBannerCanShow) {
  const std::set<std::string> buttons{"acceptAll", "rejectAll", "managePreferences", "savePreferences"};
  for (const fs::path& file : documents("customization.")) {
    const auto customization = read<BannerCustomization>(file).customization.value();
    const auto components = customization.components.value();
    const auto catalogues = documents("", file.parent_path().filename().string());
    const bool hasServices = std::ranges::any_of(
        catalogues, [](const fs::path& each) { return each.filename().string().starts_with("services"); });
    for (const auto& screen : {components.mainScreen, components.secondaryScreen}) {
      for (const auto& item : screen.value_or(std::vector<BannerCustomization::ComponentItem>())) {
        for (const auto& link : item.links.value_or(std::vector<std::string>())) {
          const auto& urls = customization.urls.value();
          EXPECT_TRUE(urls.contains(link == "dsr" ? "dsrForm" : link)) << file << ": " << link;
        }
        for (const auto& button : item.buttons.value_or(std::vector<BannerCustomization::ButtonItem>())) {
          EXPECT_TRUE(buttons.contains(button.id.value())) << file << ": " << *button.id;
        }
        for (const auto& tab : item.tabs.value_or(std::vector<BannerCustomization::TabItem>())) {
          EXPECT_EQ(tab.services, hasServices) << file << ": switches would leave the vendors behind";
        }
      }
    }
  }
}

TEST(ShippedSites, DescribeEveryVendor) {
  for (const fs::path& file : documents("configuration")) read<SiteConfiguration>(file);
  for (const fs::path& file : documents("services")) {
    const ServicesByCategory catalogue(read<Services>(file));
    std::size_t vendors = 0;
    for (const char* category : {"necessary", "preferences", "statistics", "marketing"}) {
      ASSERT_TRUE(catalogue.servicesByCategory().contains(category)) << file;
      for (const auto& group : catalogue.services().groupedByVendor(category)) {
        EXPECT_TRUE(group.details.processingCompanyName && group.details.privacyPolicyURL) << group.vendor;
        ++vendors;
      }
    }
    EXPECT_EQ(catalogue.servicesByCategory().size(), 4U) << file;
    if (file.parent_path().filename() == "large") {
      EXPECT_EQ(vendors, 1000U);
    }
  }
}

TEST(ShippedSites, SayTheSameInEveryLanguage) {
  for (const char* document : {"customization.", "services."}) {
    const auto languages = documents(document, "demo");
    ASSERT_EQ(languages.size(), 3U);
    std::set<std::string> expected;
    collectShape(read<JSONValue>(languages[0]), "", expected);
    for (const fs::path& file : languages) {
      std::set<std::string> shape;
      collectShape(read<JSONValue>(file), "", shape);
      EXPECT_EQ(shape, expected) << file;
    }
  }
  const auto names = [](const fs::path& file) {
    std::vector<std::string> found;
    const auto catalogue = read<Services>(file);
    for (const auto& each : catalogue.libraries.value()) {
      found.push_back(each.vendor.value() + each.category.value() + each.name.value());
    }
    return found;
  };
  const auto catalogues = documents("services.", "demo");
  for (const fs::path& file : catalogues) EXPECT_EQ(names(file), names(catalogues[0])) << file;
}

}  // namespace
}  // namespace TalvoConsentSDK::testing

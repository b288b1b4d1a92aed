#include "TalvoConsentSDK/ui/DrawnLength.h"

#include <cstddef>

#include "TalvoConsentSDK/ui/Labels.h"
#include "TalvoConsentSDK/ui/TabsComponentRenderer.h"

namespace TalvoConsentSDK {

using namespace view;

namespace {

using Messages = BannerCustomization::BannerMessages;

constexpr std::size_t maxLength = 4'000'000;
constexpr std::size_t itemLength = 100;

class DrawnLength {
 public:
  explicit DrawnLength(const Messages& messages) : messages_(messages) {}

  bool isTooLarge() const { return length_ > maxLength; }

  /// Adds the items of a list, and stops as soon as the length is too large.
  template <class List>
  void addAll(const List& list) {
    if (!list) return;
    for (auto item = list->begin(); item != list->end() && !isTooLarge(); ++item) {
      length_ += itemLength;
      add(*item);
    }
  }

 private:
  void add(const BannerCustomization::ComponentItem& item) {
    if (item.id == "title") length_ += messages_.title.size();
    if (item.id == "description") length_ += messages_.mainMessage.size();
    addAll(item.links);
    addAll(item.buttons);
    addAll(item.tabs);
  }
  void add(const std::string& link) { length_ += linkLabel(link, messages_).size(); }
  void add(const BannerCustomization::ButtonItem& button) {
    length_ += buttonLabel(button.id.value_or(""), messages_).size();
  }
  void add(const BannerCustomization::TabItem& tab) {
    for (const auto& category : TabsComponentRenderer::categories(tab, messages_))
      length_ += itemLength + category.name->size() + category.description.value_or("").size();
  }

  const Messages& messages_;
  std::size_t length_ = 0;
};

}  // namespace

bool drawsTooMuch(const BannerCustomization::Customization& customization) {
  DrawnLength length(customization.messages.bannerMessages);
  if (!customization.components) return false;
  length.addAll(customization.components->mainScreen);
  length.addAll(customization.components->secondaryScreen);
  return length.isTooLarge();
}

}  // namespace TalvoConsentSDK

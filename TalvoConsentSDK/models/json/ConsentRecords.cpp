// The JSON form of the consent records: what is sent, fetched and stored. Golden files keep it from changing.

#include "TalvoConsentSDK/models/BasicConsent.h"
#include "TalvoConsentSDK/models/ConsentResponse.h"
#include "TalvoConsentSDK/models/FullConsent.h"
#include "TalvoConsentSDK/models/json/Codec.h"

namespace TalvoConsentSDK {

namespace json {

template <>
struct Codec<ConsentValue> {
  static void read(const Node& node, const Path& path, ConsentValue& value) {
    if (node.type() == Type::boolean) {
      value = ConsentValue(node.boolean());
    } else if (std::vector<std::string> items; node.type() == Type::array && readStrings(node, path, items)) {
      value = items.empty() ? ConsentValue::none() : ConsentValue::partial(std::move(items));
    } else {
      throw CodingError(CodingError::Kind::dataCorrupted, path.text(),
                        "ConsentValue must be either Bool or [String]");
    }
  }

  static void write(Writer& writer, const ConsentValue& value) {
    if (value.isPartial()) {
      Codec<std::vector<std::string>>::write(writer, value.items());
    } else {
      writer.boolean(value.isAll());
    }
  }

 private:
  static bool readStrings(const Node& array, const Path& path, std::vector<std::string>& items) {
    Node element = array;
    Elements elements(array);
    path.claim(elements.count(), sizeof(std::string));
    items.reserve(elements.count());
    while (elements.next(element)) {
      if (element.type() != Type::string) return false;
      items.emplace_back(element.string());
    }
    return true;
  }
};

template <>
struct Fields<BasicConsent> {
  static constexpr Field table[] = {
      field<&BasicConsent::preferences>("preferences"), field<&BasicConsent::statistics>("statistics"),
      field<&BasicConsent::marketing>("marketing"),     field<&BasicConsent::id>("id"),
      field<&BasicConsent::optedIn>("optedIn"),
  };
};

template <>
struct Fields<ConsentDataAnalytics> {
  static constexpr Field table[] = {
      field<&ConsentDataAnalytics::bannerType>("bannerType"),
      field<&ConsentDataAnalytics::positioning>("positioning"),
      field<&ConsentDataAnalytics::blurred>("blurred"),
      field<&ConsentDataAnalytics::poweredBy>("poweredBy"),
  };
};

template <>
struct Fields<FullConsent> {
  static constexpr Field table[] = {
      field<&FullConsent::status>("status"),
      field<&FullConsent::categories>("categories"),
      field<&FullConsent::consentDataAnalytics>("consentDataAnalytics"),
      field<&FullConsent::typeConsent>("typeConsent"),
      field<&FullConsent::userId>("userId"),
      field<&FullConsent::id>("id"),
      field<&FullConsent::siteId>("siteId"),
  };
};

template <>
struct Fields<ConsentResponse> {
  static constexpr Field table[] = {field<&ConsentResponse::id>("id")};
};

}  // namespace json

template const json::Coding& json::codingOf<ConsentValue>();
template const json::Coding& json::codingOf<ConsentCategory>();
template const json::Coding& json::codingOf<ConsentStatus>();
template const json::Coding& json::codingOf<BasicConsent>();
template const json::Coding& json::codingOf<ConsentDataAnalytics>();
template const json::Coding& json::codingOf<FullConsent>();
template const json::Coding& json::codingOf<std::optional<FullConsent>>();
template const json::Coding& json::codingOf<ConsentResponse>();

}  // namespace TalvoConsentSDK

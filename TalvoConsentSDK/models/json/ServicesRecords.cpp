// The JSON form of the services catalogue. Frozen by golden files.

#include "TalvoConsentSDK/models/Services.h"
#include "TalvoConsentSDK/models/json/Codec.h"

namespace TalvoConsentSDK {

namespace json {

template <>
struct Fields<Services::Service> {
  using Record = Services::Service;
  static constexpr auto table = std::tuple{
      field("id", &Record::id),
      field("name", &Record::name),
      field("category", &Record::category),
      field("description", &Record::description),
      field("version", &Record::version),
      field("domain", &Record::domain),
      field("vendor", &Record::vendor),
      field("fullName", &Record::fullName),
  };
};

template <>
struct Fields<Services::SpecificServiceDetails> {
  using Record = Services::SpecificServiceDetails;
  static constexpr auto table = std::tuple{
      field("domain", &Record::domain),
      field("description", &Record::description),
      field("processingCompanyName", &Record::processingCompanyName),
      field("processingCompanyLocation", &Record::processingCompanyLocation),
      field("DTOProbableEmails", &Record::DTOProbableEmails),
      field("legalBasis", &Record::legalBasis),
      field("privacyPolicyURL", &Record::privacyPolicyURL),
      field("cookiePolicyURL", &Record::cookiePolicyURL),
      field("id", &Record::id),
  };
};

template <>
struct Fields<Services> {
  static constexpr auto table = std::tuple{
      field("model", &Services::model),
      field("libraries", &Services::libraries),
      field("services", &Services::services),
  };
};

}  // namespace json

template Result<Services> JSONDecoder::decode(std::string_view) const;
template Result<std::string> JSONEncoder::encode(const Services&) const;

}  // namespace TalvoConsentSDK

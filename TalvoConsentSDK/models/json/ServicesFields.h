#pragma once

// The keys of the services catalogue. Golden files keep them from changing.

#include "TalvoConsentSDK/models/Services.h"
#include "TalvoConsentSDK/models/json/Codec.h"

namespace TalvoConsentSDK::json {

template <>
struct Fields<Services::Service> {
  using Record = Services::Service;
  static constexpr Field table[] = {
      field<&Record::id>("id"),
      field<&Record::name>("name"),
      field<&Record::category>("category"),
      field<&Record::description>("description"),
      field<&Record::version>("version"),
      field<&Record::domain>("domain"),
      field<&Record::vendor>("vendor"),
      field<&Record::fullName>("fullName"),
  };
};

template <>
struct Fields<Services::SpecificServiceDetails> {
  using Record = Services::SpecificServiceDetails;
  static constexpr Field table[] = {
      field<&Record::domain>("domain"),
      field<&Record::description>("description"),
      field<&Record::processingCompanyName>("processingCompanyName"),
      field<&Record::processingCompanyLocation>("processingCompanyLocation"),
      field<&Record::DTOProbableEmails>("DTOProbableEmails"),
      field<&Record::legalBasis>("legalBasis"),
      field<&Record::privacyPolicyURL>("privacyPolicyURL"),
      field<&Record::cookiePolicyURL>("cookiePolicyURL"),
      field<&Record::id>("id"),
  };
};

template <>
struct Fields<Services> {
  static constexpr Field table[] = {
      field<&Services::model>("model"),
      field<&Services::libraries>("libraries"),
      field<&Services::services>("services"),
  };
};

}  // namespace TalvoConsentSDK::json

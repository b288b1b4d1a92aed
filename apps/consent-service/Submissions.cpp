#include "Submissions.h"

#include <array>
#include <functional>
#include <utility>

#include "TalvoConsentSDK/models/CodingError.h"
#include "TalvoConsentSDK/models/JSONCoding.h"
#include "TalvoConsentSDK/models/JSONValue.h"

namespace TalvoConsentSDK::service {

namespace {

using Kind = CodingError::Kind;

using Check = bool (*)(const JSONValue&);

// A member of a JSON object: its key, whether it is required, and its type.
struct Member {
  std::string_view key;
  bool isRequired;
  Check check;
  std::string_view expected;
};

bool isText(const JSONValue& value) {
  return value.string() && !value.string()->empty();
}
bool isWhole(const JSONValue& value) {
  return value.integer();
}
bool isBoolean(const JSONValue& value) {
  return value.boolean();
}
bool isArray(const JSONValue& value) {
  return value.array();
}
bool isEmail(const JSONValue& value) {
  return value.string() && *value.string() == "EMAIL";
}

constexpr std::array submissionMembers{
    Member{"collectionPointId", true, isText, "a string"},
    Member{"requesterId", true, isText, "a string"},
    Member{"requesterType", true, isEmail, "\"EMAIL\""},
    Member{"topicSelectionDtos", true, isArray, "an array"},
    Member{"token", false, isText, "a string"},
};

constexpr std::array selectionMembers{
    Member{"topicId", true, isWhole, "an integer"},
    Member{"selected", true, isBoolean, "a boolean"},
};

// Returns the object in `value`. Throws a CodingError if it is not an object with exactly these members.
template <class Members>
const JSONObject& require(const JSONValue& value, const Members& members, const std::string& path) {
  const JSONObject* object = value.object();
  if (!object) throw CodingError(Kind::typeMismatch, path, "expected an object");
  const std::string prefix = path.empty() ? "" : path + ".";
  std::size_t known = 0;
  for (const Member& member : members) {
    const std::string place = prefix + std::string(member.key);
    const auto found = object->find(member.key);
    if (found == object->end()) {
      if (member.isRequired) throw CodingError(Kind::keyNotFound, place, "");
      continue;
    }
    ++known;
    if (!member.check(found->second)) {
      throw CodingError(Kind::typeMismatch, place, "expected " + std::string(member.expected));
    }
  }
  if (known != object->size()) throw CodingError(Kind::dataCorrupted, path, "there are unknown keys");
  return *object;
}

TopicSubmission readTopics(std::string_view body) {
  const JSONValue document = JSONDecoder().decode<JSONValue>(body).value();
  const JSONObject& submission = require(document, submissionMembers, "");
  const JSONArray& selections = *submission.at("topicSelectionDtos").array();
  for (std::size_t index = 0; index < selections.size(); ++index) {
    require(selections[index], selectionMembers, "topicSelectionDtos[" + std::to_string(index) + "]");
  }
  return {*submission.at("collectionPointId").string(), selections.size()};
}

FullConsent readConsent(std::string_view body, std::string_view site) {
  FullConsent consent = JSONDecoder().decode<FullConsent>(body).value();
  if (!consent.status) throw CodingError(Kind::keyNotFound, "status", "");
  if (!fromRawValue<ConsentStatus>(*consent.status)) {
    throw CodingError(Kind::dataCorrupted, "status", "expected accepted, rejected or partial");
  }
  if (!consent.categories) throw CodingError(Kind::keyNotFound, "categories", "");
  if (!consent.typeConsent) throw CodingError(Kind::keyNotFound, "typeConsent", "");
  if (*consent.typeConsent != "explicit" && *consent.typeConsent != "implicit") {
    throw CodingError(Kind::dataCorrupted, "typeConsent", "expected explicit or implicit");
  }
  if (consent.siteId.value_or(std::string(site)) != site) {
    throw CodingError(Kind::dataCorrupted, "siteId", "the consent was sent to the site " + std::string(site));
  }
  return consent;
}

template <class T>
Result<T> caught(const std::function<T()>& read) {
  try {
    return read();
  } catch (...) {
    return Error::current();
  }
}

}  // namespace

Result<FullConsent> parseConsent(std::string_view body, std::string_view site) {
  return caught<FullConsent>([&] { return readConsent(body, site); });
}

Result<TopicSubmission> parseTopics(std::string_view body) {
  return caught<TopicSubmission>([&] { return readTopics(body); });
}

}  // namespace TalvoConsentSDK::service

#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include <rapidjson/document.h>

#include "benchmarks/PeerCodecs.h"

namespace TalvoConsentBenchmarks {

using namespace TalvoConsentSDK;

namespace {

using rapidjson::Value;

void require(bool holds) {
  if (!holds) throw std::runtime_error("type mismatch");
}

void read(const Value& node, std::string& text) {
  require(node.IsString());
  text.assign(node.GetString(), node.GetStringLength());
}

void read(const Value& node, Services::Service& service);
void read(const Value& node, Services::SpecificServiceDetails& details);

template <class T>
void read(const Value& node, std::vector<T>& values) {
  require(node.IsArray());
  values.reserve(node.Size());
  for (const Value& each : node.GetArray()) read(each, values.emplace_back());
}

template <class T>
void member(const Value& object, const char* key, std::optional<T>& value) {
  const auto found = object.FindMember(key);
  if (found != object.MemberEnd() && !found->value.IsNull()) read(found->value, value.emplace());
}

void read(const Value& node, Services::Service& service) {
  require(node.IsObject());
  member(node, "id", service.id);
  member(node, "name", service.name);
  member(node, "category", service.category);
  member(node, "description", service.description);
  member(node, "version", service.version);
  member(node, "domain", service.domain);
  member(node, "vendor", service.vendor);
  member(node, "fullName", service.fullName);
}

void read(const Value& node, Services::SpecificServiceDetails& details) {
  require(node.IsObject());
  member(node, "domain", details.domain);
  member(node, "description", details.description);
  member(node, "processingCompanyName", details.processingCompanyName);
  member(node, "processingCompanyLocation", details.processingCompanyLocation);
  member(node, "DTOProbableEmails", details.DTOProbableEmails);
  member(node, "legalBasis", details.legalBasis);
  member(node, "privacyPolicyURL", details.privacyPolicyURL);
  member(node, "cookiePolicyURL", details.cookiePolicyURL);
  member(node, "id", details.id);
}

}  // namespace

Services decodeWithRapidJSON(std::string_view text) {
  constexpr unsigned flags = rapidjson::kParseFullPrecisionFlag | rapidjson::kParseValidateEncodingFlag |
                             rapidjson::kParseIterativeFlag;
  rapidjson::Document document;
  document.Parse<flags>(text.data(), text.size());
  require(!document.HasParseError() && document.IsObject());
  Services services;
  member(document, "model", services.model);
  member(document, "libraries", services.libraries);
  member(document, "services", services.services);
  return services;
}

}  // namespace TalvoConsentBenchmarks

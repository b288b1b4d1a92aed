#include <optional>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "benchmarks/PeerCodecs.h"

namespace TalvoConsentBenchmarks {

using namespace TalvoConsentSDK;

namespace {

using nlohmann::json;

template <class T>
void read(const json& node, T& value) {
  node.get_to(value);
}

void read(const json& node, Services::Service& service);
void read(const json& node, Services::SpecificServiceDetails& details);

template <class T>
void read(const json& node, std::vector<T>& values) {
  for (const json& each : node.get_ref<const json::array_t&>()) read(each, values.emplace_back());
}

template <class T>
void member(const json& object, const char* key, std::optional<T>& value) {
  const auto found = object.find(key);
  if (found != object.end() && !found->is_null()) read(*found, value.emplace());
}

void read(const json& node, Services::Service& service) {
  member(node, "id", service.id);
  member(node, "name", service.name);
  member(node, "category", service.category);
  member(node, "description", service.description);
  member(node, "version", service.version);
  member(node, "domain", service.domain);
  member(node, "vendor", service.vendor);
  member(node, "fullName", service.fullName);
}

void read(const json& node, Services::SpecificServiceDetails& details) {
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

Services decodeWithNlohmann(std::string_view text) {
  const json document = json::parse(text);
  Services services;
  member(document, "model", services.model);
  member(document, "libraries", services.libraries);
  member(document, "services", services.services);
  return services;
}

}  // namespace TalvoConsentBenchmarks

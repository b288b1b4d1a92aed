#include "Endpoints.h"

#include <cstdint>
#include <utility>

#include "TalvoConsentSDK/models/JSONCoding.h"

#include "Caching.h"
#include "Identifier.h"
#include "Submissions.h"

namespace TalvoConsentSDK::service {

namespace {

Reply refusal(int status, const Error& error) {
  return errorReply(status, error.what());
}

Reply unknownSite(const Call& call) {
  return errorReply(404, "unknown site: " + call.site);
}

Reply keptConsent(const Result<std::string>& id) {
  return id ? personal(jsonReply(JSONObject{{"id", *id}})) : refusal(500, id.error());
}

}  // namespace

Reply Endpoints::index(const Call&) const {
  JSONArray identifiers;
  for (std::string& each : sites_.identifiers()) identifiers.emplace_back(std::move(each));
  return jsonReply(JSONObject{{"sites", std::move(identifiers)}});
}

Reply Endpoints::siteFile(const Call& call) const {
  auto content = sites_.file(call.site, call.rest);
  if (!content) return errorReply(404, "no such file");
  Reply reply = jsonReply(*std::move(content));
  reply.contentType = contentTypeOf(call.rest);
  return cacheable(std::move(reply), sites_.keepFor(call.site));
}

Reply Endpoints::document(const Call& call, std::string text) const {
  return cacheable(jsonReply(withBase(std::move(text), call.base)), sites_.keepFor(call.site));
}

Reply Endpoints::configuration(const Call& call) const {
  if (!sites_.has(call.site)) return unknownSite(call);
  return document(call, sites_.configuration(call.site));
}

Reply Endpoints::customization(const Call& call) const {
  if (!sites_.has(call.site)) return unknownSite(call);
  auto text = sites_.customization(call.site, call.language);
  if (!text) return errorReply(404, "the site has no customization: " + call.site);
  return document(call, *std::move(text));
}

Reply Endpoints::services(const Call& call) const {
  if (!sites_.has(call.site)) return unknownSite(call);
  return document(call, sites_.services(call.site, call.language));
}

Reply Endpoints::createConsent(const Call& call) const {
  if (!sites_.has(call.site)) return unknownSite(call);
  auto consent = parseConsent(call.body, call.site);
  if (!consent) return refusal(400, consent.error());
  return keptConsent(store_->create(call.site, *std::move(consent)));
}

Reply Endpoints::updateConsent(const Call& call) const {
  if (!sites_.has(call.site)) return unknownSite(call);
  auto consent = parseConsent(call.body, call.site);
  if (!consent) return refusal(400, consent.error());
  return keptConsent(store_->update(call.site, *std::move(consent)));
}

Reply Endpoints::identifiedConsent(const Call& call) const {
  if (!sites_.has(call.site)) return unknownSite(call);
  const auto consent = store_->newest(call.site, call.rest);
  if (!consent) return refusal(500, consent.error());
  return personal(jsonReply(JSONEncoder().encode(*consent).value()));
}

Reply Endpoints::submitTopics(const Call& call) const {
  const auto submission = parseTopics(call.body);
  if (!submission) return refusal(400, submission.error());
  return personal(jsonReply(JSONObject{
      {"receiptId", newIdentifier()},
      {"collectionPointId", submission->collectionPointId},
      {"topics", static_cast<std::int64_t>(submission->topics)},
  }));
}

}  // namespace TalvoConsentSDK::service

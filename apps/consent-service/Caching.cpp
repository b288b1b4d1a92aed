#include "Caching.h"

#include <algorithm>
#include <array>
#include <string>
#include <utility>

#include <openssl/evp.h>

namespace TalvoConsentSDK::service {

namespace {

// Different bodies have different tags, also after the service has been restarted.
std::string entityTagOf(std::string_view body) {
  std::array<unsigned char, EVP_MAX_MD_SIZE> digest{};
  unsigned int size = 0;
  if (EVP_Digest(body.data(), body.size(), digest.data(), &size, EVP_sha256(), nullptr) != 1) return "";
  constexpr std::string_view hex = "0123456789abcdef";
  std::string tag = "\"";
  for (unsigned int i = 0; i < size / 2; ++i) tag += {hex[digest[i] >> 4], hex[digest[i] & 15]};
  return tag + '"';
}

// Removes the first tag of a list and returns it without the prefix of weak tags. Returns an empty text at
// the end of the list, and if the list is malformed. Quotes enclose a tag, and a comma may be part of it.
std::string_view nextTag(std::string_view& list) {
  list.remove_prefix(std::min(list.find_first_not_of(" \t,"), list.size()));
  if (list.starts_with("W/")) list.remove_prefix(2);
  const auto end = list.starts_with('"') ? list.find('"', 1) : list.npos;
  if (end == list.npos) return {};
  const auto tag = list.substr(0, end + 1);
  list.remove_prefix(tag.size());
  return tag;
}

}  // namespace

Reply cacheable(Reply reply, std::optional<std::chrono::seconds> keepFor) {
  if (reply.status != 200) return reply;
  reply.cacheControl = keepFor ? "max-age=" + std::to_string(keepFor->count()) : "no-cache";
  reply.entityTag = entityTagOf(reply.body);
  return reply;
}

Reply personal(Reply reply) {
  reply.cacheControl = "no-store";
  return reply;
}

Reply validated(Reply reply, std::string_view ifNoneMatch) {
  if (reply.entityTag.empty()) return reply;
  bool isCurrent = ifNoneMatch == "*";
  while (!isCurrent) {
    const auto tag = nextTag(ifNoneMatch);
    if (tag.empty()) return reply;
    isCurrent = tag == reply.entityTag;
  }
  reply.status = 304;
  reply.body.clear();
  return reply;
}

}  // namespace TalvoConsentSDK::service

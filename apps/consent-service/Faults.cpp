#include "Faults.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <utility>

namespace TalvoConsentSDK::service {

namespace {

constexpr std::string_view errorPage =
    "<!DOCTYPE html>\n<html><head><title>Internal Server Error</title></head>\n"
    "<body><h1>Internal Server Error</h1><p>Please try again later.</p></body></html>\n";

std::optional<int> parseStatus(std::string_view text) {
  int status = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), status);
  const bool isWhole = error == std::errc() && end == text.data() + text.size();
  return isWhole && status >= 200 && status <= 599 ? std::optional(status) : std::nullopt;
}

PlatformError unreadable(std::string_view text, const std::string& reason) {
  return {"Fault", 1, "\"" + std::string(text) + "\": " + reason};
}

Reply bodyReply(std::string_view body, std::string contentType = std::string(jsonType)) {
  Reply reply;
  reply.body = body;
  reply.contentType = std::move(contentType);
  return reply;
}

Reply statusReply(int status, const std::function<Reply()>& answer) {
  if (status >= 400) return errorReply(status, "this failure was asked for");
  if (status >= 300 || status == 204 || status == 205) return bodyReply("");
  return answer();
}

}  // namespace

Result<Fault> Fault::parse(std::string_view text) {
  static constexpr std::array<std::pair<std::string_view, Kind>, 8> kinds{{
      {"reset", Kind::reset},
      {"stall", Kind::stall},
      {"truncated", Kind::truncated},
      {"empty", Kind::empty},
      {"null", Kind::null},
      {"array", Kind::array},
      {"notutf8", Kind::notutf8},
      {"html500", Kind::html500},
  }};

  const auto equals = text.rfind('=');
  if (equals == std::string_view::npos || equals == 0) return unreadable(text, "expected PATHPART=KIND");
  Fault fault;
  fault.part_ = text.substr(0, equals);
  std::string_view kind = text.substr(equals + 1);
  fault.kindText_ = kind;

  if (const auto colon = kind.find(':'); colon != std::string_view::npos) {
    fault.status_ = parseStatus(kind.substr(0, colon));
    if (!fault.status_) return unreadable(text, "the status must be from 200 to 599");
    kind.remove_prefix(colon + 1);
  } else if (const auto status = parseStatus(kind)) {
    fault.status_ = status;
    return fault;
  }
  const auto known = std::ranges::find(kinds, kind, &std::pair<std::string_view, Kind>::first);
  if (known == kinds.end()) return unreadable(text, "unknown kind \"" + std::string(kind) + "\"");
  fault.kind_ = known->second;
  return fault;
}

Reply Fault::reply(const std::function<Reply()>& answer) const {
  Reply reply;
  switch (kind_) {
    case Kind::status:
      reply = statusReply(status_.value_or(500), answer);
      break;
    case Kind::reset:
      reply.delivery = Delivery::reset;
      break;
    case Kind::stall:
      reply.delivery = Delivery::stall;
      break;
    case Kind::truncated:
      reply = answer();
      reply.delivery = Delivery::truncated;
      break;
    case Kind::empty:
      break;
    case Kind::null:
      reply = bodyReply("null");
      break;
    case Kind::array:
      reply = bodyReply("[]");
      break;
    case Kind::notutf8:
      reply = bodyReply("{\"text\":\"\xC3\x28\xFF\"}");
      break;
    case Kind::html500:
      reply = bodyReply(errorPage, "text/html");
      reply.status = 500;
      break;
  }
  if (status_) reply.status = *status_;
  return reply;
}

const Fault* findFault(const std::vector<Fault>& faults, std::string_view methodAndTarget) {
  const auto hit =
      std::ranges::find_if(faults, [&](const Fault& each) { return each.hits(methodAndTarget); });
  return hit == faults.end() ? nullptr : &*hit;
}

}  // namespace TalvoConsentSDK::service

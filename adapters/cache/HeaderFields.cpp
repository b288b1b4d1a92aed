#include "adapters/cache/HeaderFields.h"

#include <algorithm>
#include <cstdint>
#include <utility>

#include "TalvoConsentSDK/base/ASCII.h"

namespace TalvoConsentSDK {

using namespace platform;

namespace {

using std::chrono::seconds;

std::string_view trimmed(std::string_view text) {
  const auto first = text.find_first_not_of(" \t");
  if (first == text.npos) return {};
  return text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

// The end of the quoted string that begins at `begin`; npos if it does not end.
std::size_t endOfQuoted(std::string_view text, std::size_t begin) {
  for (std::size_t at = begin + 1; at < text.size(); ++at) {
    if (text[at] == '\\') {
      ++at;
    } else if (text[at] == '"') {
      return at + 1;
    }
  }
  return text.npos;
}

std::vector<std::string_view> parts(std::string_view value, char separator) {
  std::vector<std::string_view> found;
  std::size_t begin = 0;
  const auto endPart = [&](std::size_t end) {
    const std::string_view part = trimmed(value.substr(begin, end - begin));
    if (!part.empty()) found.push_back(part);
    begin = end + 1;
  };
  for (std::size_t at = 0; at < value.size(); ++at) {
    if (value[at] == separator) endPart(at);
    if (value[at] != '"') continue;
    if (const std::size_t end = endOfQuoted(value, at); end != value.npos) at = end - 1;
  }
  endPart(value.size());
  return found;
}

// A token, or the content of a quoted string. Leaves escapes as they are, because numbers have none.
std::string_view unquoted(std::string_view argument) {
  const bool isQuoted = argument.size() >= 2 && argument.front() == '"' && argument.back() == '"';
  return isQuoted ? argument.substr(1, argument.size() - 2) : argument;
}

bool matchesRange(std::string_view range, std::string_view type) {
  if (range == "*/*" || range == type) return true;
  return range.ends_with("/*") && type.starts_with(range.substr(0, range.size() - 1));
}

}  // namespace

std::optional<std::string_view> fieldValue(const HTTPHeaders& headers, std::string_view name) {
  const auto field = headers.find(name);
  if (field == headers.end()) return std::nullopt;
  return trimmed(field->second);
}

std::vector<std::string_view> listMembers(std::string_view value) {
  return parts(value, ',');
}

std::optional<seconds> deltaSeconds(std::string_view text) {
  constexpr std::int64_t most = std::int64_t{1} << 31U;
  if (text.empty()) return std::nullopt;
  std::int64_t value = 0;
  for (const char c : text) {
    if (c < '0' || c > '9') return std::nullopt;
    value = std::min(most, value * 10 + (c - '0'));
  }
  return seconds(value);
}

CacheControl::CacheControl(const HTTPHeaders& headers) {
  for (const std::string_view member : listMembers(fieldValue(headers, "Cache-Control").value_or(""))) {
    const auto equals = member.find('=');
    const std::string name = lowercased(trimmed(member.substr(0, equals)));
    const std::string_view argument = equals == member.npos ? "" : trimmed(member.substr(equals + 1));
    noStore |= name == "no-store";
    noCache |= name == "no-cache";
    mustRevalidate |= name == "must-revalidate";
    if (name == "max-age") {
      const seconds age = deltaSeconds(unquoted(argument)).value_or(seconds(0));
      maxAge = maxAge.value_or(age) == age ? age : seconds(0);
    } else if (name == "stale-if-error") {
      if (const auto time = deltaSeconds(unquoted(argument)))
        staleIfError = std::min(staleIfError.value_or(*time), *time);
    }
  }
}

std::string mediaType(std::string_view contentType) {
  return lowercased(trimmed(contentType.substr(0, contentType.find(';'))));
}

bool acceptsType(std::optional<std::string_view> accept, std::string_view contentType) {
  if (!accept) return true;
  const std::string type = mediaType(contentType);
  return std::ranges::any_of(listMembers(*accept),
                             [&](auto range) { return matchesRange(mediaType(range), type); });
}

}  // namespace TalvoConsentSDK

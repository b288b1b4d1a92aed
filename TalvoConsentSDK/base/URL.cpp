#include "TalvoConsentSDK/base/URL.h"

#include <charconv>

#include <uriparser/Uri.h>

#include "TalvoConsentSDK/base/ASCII.h"

namespace TalvoConsentSDK {

namespace {

std::string_view view(const UriTextRangeA& range) {
  if (!range.first) return {};
  return {range.first, static_cast<std::size_t>(range.afterLast - range.first)};
}

bool fitsPort(std::string_view digits) {
  unsigned port = 0;
  const auto end = digits.data() + digits.size();
  const auto [stop, error] = std::from_chars(digits.data(), end, port);
  return digits.empty() || (error == std::errc() && stop == end && port <= 65535);
}

}  // namespace

std::optional<URL> URL::parse(std::string_view text) {
  URL url;
  url.text_ = text;
  UriUriA uri;
  const char* const begin = url.text_.data();
  if (uriParseSingleUriExA(&uri, begin, begin + url.text_.size(), nullptr) != URI_SUCCESS)
    return std::nullopt;
  url.scheme_ = lowercased(view(uri.scheme));
  url.host_ = view(uri.hostText);
  url.requestable_ = !url.host_.empty() && fitsPort(view(uri.portText));
  uriFreeUriMembersA(&uri);
  if (url.scheme_.empty()) return std::nullopt;
  return url;
}

}  // namespace TalvoConsentSDK

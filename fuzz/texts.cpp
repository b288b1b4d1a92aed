// Checks the short texts of a document: colours, URLs of requests, and links. Parts: a text, a path.

#include "TalvoConsentSDK/base/Color.h"
#include "TalvoConsentSDK/base/NeverDestroyed.h"
#include "TalvoConsentSDK/network/Endpoint.h"
#include "TalvoConsentSDK/ui/ExternalLink.h"

#include "fuzz/Fuzzing.h"
#include "testing/fakes/MemoryPlatform.h"

using namespace TalvoConsentSDK;
using namespace TalvoConsentSDK::platform;
using namespace TalvoConsentSDK::fuzzing;

namespace {

void checkColor(const std::string& text) {
  const Color color = colorFromText(text);
  for (const double channel : {color.red, color.green, color.blue, color.alpha}) {
    require(channel >= 0 && channel <= 1, "a channel is from 0 to 1");
  }
  require(colorFromText("#" + text + ";") == color, "other characters around a colour are ignored");
  std::string upper = text;
  std::ranges::transform(upper, upper.begin(),
                         [](char c) { return c >= 'a' && c <= 'f' ? static_cast<char>(c - 32) : c; });
  require(colorFromText(upper) == color, "the case of digits does not matter");
  const bool isHex = text.find_first_not_of("0123456789abcdefABCDEF") == text.npos;
  if (isHex && text.size() == 3) {
    const std::string twice{text[0], text[0], text[1], text[1], text[2], text[2]};
    require(colorFromText(twice) == color && colorFromText("ff" + twice) == color,
            "three digits stand for six");
  }
  if (!isHex || (text.size() != 3 && text.size() != 6 && text.size() != 8)) return;
  require(text.size() == 8 || color.alpha == 1, "only eight digits can be translucent");
}

void checkURL(const std::optional<URL>& url, const std::string& text) {
  if (!url) return;
  require(url->text() == text, "a URL keeps its text");
  require(text.find_first_not_of(
              "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-._~:/?#[]@!$&'()*+,;=%") ==
              text.npos,
          "a URL is made of the characters of one");
  require(!url->scheme().empty() && text.size() > url->scheme().size() && text[url->scheme().size()] == ':',
          "a URL begins with its scheme");
  require(text.find(url->host()) != text.npos && url->isRequestable() <= !url->host().empty(),
          "its host is in it");
}

std::string percentDecoded(const std::string& text) {
  std::string decoded;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const std::string digits = text[i] == '%' ? text.substr(i + 1, 2) : "";
    const bool isEncoded =
        digits.size() == 2 && digits.find_first_not_of("0123456789abcdefABCDEF") == digits.npos;
    decoded += isEncoded ? static_cast<char>(std::stoi(digits, nullptr, 16)) : text[i];
    if (isEncoded) i += 2;
  }
  return decoded;
}

void checkLink(MemoryPlatform& platform, const std::string& text) {
  openExternally("link", text);
  platform.settle();
  const auto lines = platform.printer->take();
  const auto opened = std::exchange(platform.application->opened, {});
  require(lines.size() + opened.size() == 1, "a link is opened or reported");
  if (opened.empty()) return;
  const auto url = URL::parse(opened.front());
  require(url && (url->scheme() == "http" || url->scheme() == "https"), "only web pages are opened");
  const std::string& link = opened.front();
  require(link.ends_with(text) ||
              (!URL::parse("https://" + text) && percentDecoded(link).ends_with(percentDecoded(text))),
          "a link is opened unchanged, or with its other characters encoded");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static MemoryPlatform& platform = neverDestroyed<MemoryPlatform>();
  static const bool isInstalled = (platform.install(), true);
  require(isInstalled, "the platform is installed");
  Input input(data, size);
  const std::string text = input.text();
  const std::string path = input.text();
  checkColor(text);
  checkURL(URL::parse(text), text);
  checkLink(platform, text);
  const std::string base = text.ends_with('/') ? text.substr(0, text.size() - 1) : text;
  const auto endpoint = endpointURL(text, path);
  checkURL(endpoint, base + "/public" + path);
  require(!endpoint || endpoint->isRequestable(), "a request can be sent to an endpoint");
  return 0;
}

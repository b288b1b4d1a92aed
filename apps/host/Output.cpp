#include "apps/host/Output.h"

#include <thread>

#include "TalvoConsentSDK/models/JSONCoding.h"
#include "TalvoConsentSDK/platform/Printer.h"

#include "adapters/qt/QtText.h"

namespace TalvoConsentHost {

using namespace TalvoConsentSDK;
using namespace TalvoConsentSDK::platform;

namespace {

const char* name(HTTPClientError::Case kind) {
  switch (kind) {
    case HTTPClientError::Case::httpError:
      return "httpError";
    case HTTPClientError::Case::decodingError:
      return "decodingError";
    case HTTPClientError::Case::networkError:
      return "networkError";
    case HTTPClientError::Case::invalidURL:
      return "invalidURL";
    case HTTPClientError::Case::invalidResponse:
      return "invalidResponse";
  }
  return "";
}

}  // namespace

void printObject(const JSONObject& object) {
  const auto line = JSONEncoder().encode(JSONValue(object));
  StandardOutput().print(line ? *line : R"({"error":{"type":"output"}})");
}

void ObjectPrinter::print(std::string_view line) {
  printObject({{"printed", toQString(line).toStdString()}});  // toQString replaces invalid UTF-8
}

std::string threadName() {
  static const auto mainThread = std::this_thread::get_id();
  return std::this_thread::get_id() == mainThread ? "main" : "background";
}

JSONValue toJSON(const std::optional<BasicConsent>& consent) {
  if (!consent) return {};
  const auto json = JSONEncoder().encode(*consent);
  return json ? JSONDecoder().decode<JSONValue>(*json).value() : JSONValue();
}

JSONValue toJSON(const Error& error) {
  JSONObject object{{"description", error.what()}};
  if (const auto* http = error.as<HTTPClientError>()) {
    object["type"] = name(http->kind());
    if (http->kind() == HTTPClientError::Case::httpError) object["statusCode"] = http->statusCode();
  } else if (const auto* platform = error.as<PlatformError>()) {
    object["type"] = "platform";
    object["domain"] = platform->domain();
    object["code"] = platform->code();
  } else {
    object["type"] = "other";
  }
  return object;
}

}  // namespace TalvoConsentHost

#include "RequestLog.h"

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <utility>

#include <fcntl.h>
#include <unistd.h>

#include "TalvoConsentSDK/models/JSONCoding.h"

#include "Reply.h"

namespace TalvoConsentSDK::service {

namespace {

std::string now() {
  using namespace std::chrono;
  const auto time = system_clock::now();
  const std::time_t seconds = system_clock::to_time_t(time);
  const auto milliseconds = duration_cast<std::chrono::milliseconds>(time.time_since_epoch()).count() % 1000;
  std::tm utc{};
  gmtime_r(&seconds, &utc);
  char text[40];
  const std::size_t length = std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%S", &utc);
  std::snprintf(text + length, sizeof text - length, ".%03dZ", static_cast<int>(milliseconds));
  return text;
}

JSONValue bodyValue(const std::string& body) {
  auto parsed = JSONDecoder().decode<JSONValue>(body);
  return parsed ? *std::move(parsed) : textValue(body);
}

}  // namespace

Result<std::unique_ptr<RequestLog>> RequestLog::open(const std::string& file) {
  int descriptor = -1;
  if (!file.empty()) {
    descriptor = ::open(file.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644);
    if (descriptor < 0) return PlatformError("RequestLog", errno, file + ": " + std::strerror(errno));
  }
  return std::unique_ptr<RequestLog>(new RequestLog(descriptor));
}

RequestLog::~RequestLog() {
  if (descriptor_ >= 0) ::close(descriptor_);
}

void RequestLog::write(const RequestLogEntry& entry) {
  if (descriptor_ < 0) return;
  JSONObject headers;
  if (!entry.clientName.empty()) headers["x-client-name"] = textValue(entry.clientName);
  if (!entry.contentType.empty()) headers["content-type"] = textValue(entry.contentType);
  JSONObject line{
      {"time", now()},
      {"method", textValue(entry.method)},
      {"path", textValue(entry.target)},
      {"headers", std::move(headers)},
      {"status", entry.status ? JSONValue(*entry.status) : JSONValue()},
  };
  if (!entry.body.empty()) line["body"] = bodyValue(entry.body);
  if (!entry.fault.empty()) line["fault"] = entry.fault;

  auto encoded = JSONEncoder().encode(line);
  if (!encoded) {  // a body nested as deeply as the parser allows is too deep inside the line
    line["body"] = textValue(entry.body);
    encoded = JSONEncoder().encode(line);
  }
  const std::string text = encoded.value() + "\n";
  const std::scoped_lock guard(lock_);
  for (std::size_t written = 0; written < text.size();) {
    const auto count = ::write(descriptor_, text.data() + written, text.size() - written);
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) return;
    written += static_cast<std::size_t>(count);
  }
}

}  // namespace TalvoConsentSDK::service

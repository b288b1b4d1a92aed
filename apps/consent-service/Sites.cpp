#include "Sites.h"

#include <algorithm>
#include <array>
#include <fstream>
#include <iterator>
#include <system_error>
#include <utility>

#include "TalvoConsentSDK/models/JSONCoding.h"
#include "TalvoConsentSDK/models/JSONValue.h"

#include "Reply.h"

namespace TalvoConsentSDK::service {

namespace {

namespace fs = std::filesystem;

// Names come from requests, so only plain names may reach the file system.
bool isPlainName(std::string_view name) {
  constexpr std::string_view allowed = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789._-";
  return !name.empty() && name.size() <= 128 && name.front() != '.' &&
         name.find_first_not_of(allowed) == std::string_view::npos;
}

}  // namespace

std::vector<std::string> Sites::identifiers() const {
  std::vector<std::string> found;
  std::error_code error;
  for (fs::directory_iterator each(folder_, error), end; !error && each != end; each.increment(error)) {
    if (auto name = each->path().filename().string(); has(name)) found.push_back(std::move(name));
  }
  std::ranges::sort(found);
  return found;
}

bool Sites::has(std::string_view site) const {
  std::error_code error;
  return isPlainName(site) && fs::is_directory(folder_ / site, error);
}

std::string Sites::configuration(std::string_view site) const {
  return file(site, "configuration.json").value_or("{}");
}

std::optional<std::string> Sites::customization(std::string_view site, std::string_view language) const {
  return translated(site, "customization", language);
}

std::string Sites::services(std::string_view site, std::string_view language) const {
  auto document = translated(site, "services", language);
  if (!document) document = file(site, "services.json");
  return std::move(document).value_or("{}");
}

std::optional<std::chrono::seconds> Sites::keepFor(std::string_view site) const {
  const auto settings = JSONDecoder().decode<JSONValue>(file(site, "site.json").value_or("{}"));
  const JSONObject* object = settings ? settings->object() : nullptr;
  if (!object || !object->contains("keepFor")) return std::nullopt;
  const std::int64_t* seconds = object->at("keepFor").integer();
  if (!seconds || *seconds < 1 || *seconds > 31'536'000) return std::nullopt;
  return std::chrono::seconds(*seconds);
}

std::optional<std::string> Sites::file(std::string_view site, std::string_view name) const {
  if (!has(site) || !isPlainName(name)) return std::nullopt;
  const fs::path path = folder_ / site / name;
  std::error_code error;
  if (!fs::is_regular_file(path, error)) return std::nullopt;
  std::ifstream stream(path, std::ios::binary);
  if (!stream) return std::nullopt;
  return std::string(std::istreambuf_iterator<char>(stream), {});
}

std::optional<std::string> Sites::translated(std::string_view site, std::string_view document,
                                             std::string_view language) const {
  const std::string exact(language);
  for (const std::string& each :
       {exact, exact.substr(0, exact.find('-')), defaultLanguage(file(site, "site.json").value_or("{}"))}) {
    if (auto found = file(site, std::string(document) + "." + each + ".json")) return found;
  }
  return std::nullopt;
}

std::string defaultLanguage(std::string_view settings) {
  const auto json = JSONDecoder().decode<JSONValue>(settings);
  const JSONObject* object = json ? json->object() : nullptr;
  if (!object || !object->contains("languages")) return "en";
  const JSONArray* languages = object->at("languages").array();
  const std::string* first = languages && !languages->empty() ? languages->front().string() : nullptr;
  return first ? *first : "en";
}

std::string withBase(std::string document, std::string_view base) {
  constexpr std::string_view placeholder = "{{base}}";
  for (auto at = document.find(placeholder); at != std::string::npos; at = document.find(placeholder, at)) {
    document.replace(at, placeholder.size(), base);
    at += base.size();
  }
  return document;
}

std::string contentTypeOf(std::string_view fileName) {
  static constexpr std::array<std::pair<std::string_view, std::string_view>, 6> types{{
      {".json", jsonType},
      {".png", "image/png"},
      {".jpg", "image/jpeg"},
      {".svg", "image/svg+xml"},
      {".webp", "image/webp"},
      {".html", "text/html"},
  }};
  for (const auto& [extension, type] : types) {
    if (fileName.ends_with(extension)) return std::string(type);
  }
  return "application/octet-stream";
}

}  // namespace TalvoConsentSDK::service

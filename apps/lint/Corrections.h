#pragma once

// Helps to correct a document while it is JSON.

#include <string>
#include <string_view>

#include "TalvoConsentSDK/models/JSONValue.h"

#include "apps/lint/Site.h"

namespace TalvoConsentSDK::linting {

inline std::string memberPath(const std::string& path, std::string_view key) {
  return path.empty() ? std::string(key) : path + "." + std::string(key);
}

/// Calls `visit` with each entry of a list and its path, and keeps the changes. Ignores other values.
template <class Visit>
void forEachEntry(JSONValue& list, const std::string& path, const Visit& visit) {
  if (!list.array()) return;
  JSONArray entries = *list.array();
  for (std::size_t i = 0; i < entries.size(); ++i) visit(entries[i], at(path, i));
  list = std::move(entries);
}

/// Reports `key` as misspelt and replaces it by `meant`.
void renameKey(JSONObject& object, const std::string& key, const std::string& meant, const std::string& path,
               const std::string& document, Report& report);

// Report and correct misspelt identifiers of components, buttons, links, categories and URLs, and of
// categories and vendors in a catalogue.
void correctNames(JSONValue& customization, const std::string& document, Report& report);
void correctCatalogue(JSONValue& services, const std::string& document, Report& report);

}  // namespace TalvoConsentSDK::linting

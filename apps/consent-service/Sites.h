#pragma once

// The sites that the service knows: a folder each, with the documents that the service hands out.

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace TalvoConsentSDK::service {

/// Reads a folder of sites. A site's folder is named after its identifier and holds
///   configuration.json           its switches; without the file, {}
///   customization.LANGUAGE.json  its banner, a file per language
///   services.LANGUAGE.json       its catalogue, or services.json for all languages; without either, {}
///   site.json                    {"languages": [...]}, the default one first; without the file, "en" is
/// and any other file, such as a logo. Everything is read anew for each request, so that edits show at once.
/// Safe from any thread.
class Sites {
 public:
  explicit Sites(std::filesystem::path folder) : folder_(std::move(folder)) {}

  /// The identifiers of all sites, sorted.
  std::vector<std::string> identifiers() const;

  bool has(std::string_view site) const;

  /// The documents of a site that exists. A language that the site lacks falls back to the language without
  /// its region ("de" for "de-AT"), then to the site's default. No customization: nothing.
  std::string configuration(std::string_view site) const;
  std::optional<std::string> customization(std::string_view site, std::string_view language) const;
  std::string services(std::string_view site, std::string_view language) const;

  /// A file of a site, whatever it is; nothing when there is none of that name.
  std::optional<std::string> file(std::string_view site, std::string_view name) const;

 private:
  std::optional<std::string> translated(std::string_view site, std::string_view document,
                                        std::string_view language) const;
  std::string defaultLanguage(std::string_view site) const;

  std::filesystem::path folder_;
};

/// A document with the URL that clients reach the service by in place of {{base}}.
std::string withBase(std::string document, std::string_view base);

/// The content type of a file, by its name's extension.
std::string contentTypeOf(std::string_view fileName);

}  // namespace TalvoConsentSDK::service

#pragma once

// The sites of the service: one folder per site, with the documents that the service serves.

#include <chrono>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace TalvoConsentSDK::service {

/// Reads a folder of sites. A site's folder is named after its identifier and holds
///   configuration.json           its switches; without the file, {}
///   customization.LANGUAGE.json  its banner, one file per language
///   services.LANGUAGE.json       its catalogue, or services.json for all languages; without either, {}
///   site.json                    {"languages": [...], "keepFor": SECONDS}: the default language comes first;
///                                without the file, it is "en". For keepFor see `Sites::keepFor`
/// and any other files, such as a logo. Files are read again for each request, so that edits take effect at
/// once. Thread-safe.
class Sites {
 public:
  explicit Sites(std::filesystem::path folder) : folder_(std::move(folder)) {}

  /// The identifiers of all sites, sorted.
  std::vector<std::string> identifiers() const;

  bool has(std::string_view site) const;

  /// The documents of a site, which must exist. A language that the site lacks falls back to the language
  /// without its region ("de" for "de-AT"), then to the site's default. `customization` returns nothing if
  /// the site has none.
  std::string configuration(std::string_view site) const;
  std::optional<std::string> customization(std::string_view site, std::string_view language) const;
  std::string services(std::string_view site, std::string_view language) const;

  /// How long clients may use documents and files of a site without asking whether they are current. Nothing
  /// if site.json has no `keepFor`, or if that is not a whole number from 1 to 31,536,000 (a year).
  std::optional<std::chrono::seconds> keepFor(std::string_view site) const;

  /// The content of any file of a site; nothing if there is no file of that name.
  std::optional<std::string> file(std::string_view site, std::string_view name) const;

 private:
  std::optional<std::string> translated(std::string_view site, std::string_view document,
                                        std::string_view language) const;
  std::filesystem::path folder_;
};

/// Returns the default language of a site whose site.json has this text.
std::string defaultLanguage(std::string_view settings);

/// Replaces {{base}} in a document by the URL at which clients reach the service.
std::string withBase(std::string document, std::string_view base);

/// The content type of a file, from the extension of its name.
std::string contentTypeOf(std::string_view fileName);

}  // namespace TalvoConsentSDK::service

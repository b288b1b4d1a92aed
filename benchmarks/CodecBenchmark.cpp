// Measures decoding and encoding of records, compared with other libraries and with the lower limit: parsing
// the text once and copying the records once.

#include <cstring>
#include <fstream>
#include <iterator>
#include <map>
#include <string>

#include <benchmark/benchmark.h>
#include <nlohmann/json.hpp>
#include <simdjson.h>

#include "TalvoConsentSDK/models/ConsentResponse.h"
#include "TalvoConsentSDK/models/FullConsent.h"
#include "TalvoConsentSDK/models/JSONCoding.h"
#include "TalvoConsentSDK/models/ServicesByCategory.h"
#include "TalvoConsentSDK/models/SiteConfiguration.h"

#include "benchmarks/Documents.h"
#include "benchmarks/PeerCodecs.h"

namespace TalvoConsentBenchmarks {
namespace {

using namespace TalvoConsentSDK;
using benchmark::DoNotOptimize;
using benchmark::State;

// Measures `operation`, which processes `bytes` bytes each time.
template <class Operation>
void measure(const std::string& name, std::size_t bytes, Operation operation) {
  benchmark::RegisterBenchmark(name.c_str(), [=](State& state) {
    for (auto _ : state) DoNotOptimize(operation());
    state.SetBytesProcessed(static_cast<std::int64_t>(bytes) * state.iterations());
  });
}

std::string contents(const std::string& file) {
  std::ifstream stream(file, std::ios::binary);
  std::string text{std::istreambuf_iterator<char>(stream), {}};
  if (text.empty()) std::abort();
  return text;
}

template <class Record>
void measureRecord(const char* name) {
  const std::string text = contents(std::string(TALVO_GOLDEN "/") + name + "/normal.json");
  const auto record = JSONDecoder().decode<Record>(text).value();
  const auto document = nlohmann::json::parse(text);
  const std::string of = std::string("/") + name;
  measure("decode/ours" + of, text.size(), [=] { return JSONDecoder().decode<Record>(text).has_value(); });
  measure("decode/nlohmann-untyped" + of, text.size(), [=] { return nlohmann::json::parse(text).size(); });
  measure("decode/parse" + of, text.size(), [=] {
    static simdjson::dom::parser parser;
    return parser.parse(text).error();
  });
  measure("encode/ours" + of, text.size(), [=] { return JSONEncoder().encode(record)->size(); });
  measure("encode/nlohmann-untyped" + of, text.size(), [=] { return document.dump().size(); });
}

// The texts and records have up to 120 MB each, so they are made when their benchmark begins.
struct Catalogue {
  explicit Catalogue(std::size_t count)
      : records(fullCatalogue(count)), text(JSONEncoder().encode(records).value()) {}

  Services records;
  std::string text;

  static const Catalogue& of(std::size_t count) {
    static std::map<std::size_t, Catalogue> made;
    const auto known = made.find(count);
    return known != made.end() ? known->second : made.emplace(count, count).first->second;
  }
};

template <class Operation>
void measureCatalogue(const std::string& name, Operation operation,
                      std::initializer_list<std::int64_t> counts = {100, 10'000, 200'000}) {
  auto* const entry = benchmark::RegisterBenchmark(name.c_str(), [=](State& state) {
    const Catalogue& catalogue = Catalogue::of(static_cast<std::size_t>(state.range(0)));
    for (auto _ : state) DoNotOptimize(operation(catalogue));
    state.SetBytesProcessed(static_cast<std::int64_t>(catalogue.text.size()) * state.iterations());
  });
  for (const auto count : counts) entry->Arg(count);
}

void measureAll() {
  measureRecord<BannerCustomization>("BannerCustomization");
  measureRecord<BannerCustomization::CategoryItem>("CategoryItem");
  measureRecord<BasicConsent>("BasicConsent");
  measureRecord<ConsentResponse>("ConsentResponse");
  measureRecord<FullConsent>("FullConsent");
  measureRecord<Services>("Services");
  measureRecord<SiteConfiguration>("SiteConfiguration");

  measureCatalogue("services/decode/ours",
                   [](const Catalogue& from) { return JSONDecoder().decode<Services>(from.text).value(); });
  measureCatalogue("services/decode/nlohmann",
                   [](const Catalogue& from) { return decodeWithNlohmann(from.text); });
  measureCatalogue("services/decode/rapidjson",
                   [](const Catalogue& from) { return decodeWithRapidJSON(from.text); });
  measureCatalogue("services/decode/limit", [](const Catalogue& from) {
    simdjson::dom::parser parser;
    if (parser.parse(from.text).error()) std::abort();
    return Services(from.records);
  });
  measureCatalogue("services/decode/limit-warm-parser", [](const Catalogue& from) {
    static simdjson::dom::parser parser;
    if (parser.parse(from.text).error()) std::abort();
    return Services(from.records);
  });
  measureCatalogue("services/memcpy", [](const Catalogue& from) { return std::string(from.text); });
  measureCatalogue("services/encode/ours",
                   [](const Catalogue& from) { return JSONEncoder().encode(from.records)->size(); });
  measureCatalogue("services/encode/nlohmann-untyped", [](const Catalogue& from) {
    static std::map<const Catalogue*, nlohmann::json> parsed;
    auto& document = parsed[&from];
    if (document.is_null()) document = nlohmann::json::parse(from.text);
    return document.dump().size();
  });

  const auto sizes = {std::int64_t{10}, std::int64_t{100}, std::int64_t{1'000}, std::int64_t{10'000},
                      std::int64_t{100'000}};
  measureCatalogue(
      "index",
      [](const Catalogue& from) { return ServicesByCategory(from.records).servicesByCategory().size(); },
      sizes);
  measureCatalogue("index/limit-copy", [](const Catalogue& from) { return Services(from.records); }, sizes);
  measureCatalogue(
      "grouping", [](const Catalogue& from) { return from.records.groupedByVendor("marketing").size(); },
      sizes);
}

}  // namespace
}  // namespace TalvoConsentBenchmarks

int main(int argc, char* argv[]) {
  benchmark::Initialize(&argc, argv);
  TalvoConsentBenchmarks::measureAll();
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}

// Mutates half of all inputs as trees, so that they stay valid JSON and reach the code behind the parser.

#include <cstring>
#include <random>

#include "TalvoConsentSDK/models/JSONValue.h"

#include "fuzz/Fuzzing.h"

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t maximum);

namespace TalvoConsentSDK::fuzzing {
namespace {

std::string mutatedText(std::string text) {
  const std::size_t size = text.size();
  text.resize(size + 16);
  text.resize(LLVMFuzzerMutate(reinterpret_cast<std::uint8_t*>(text.data()), size, text.size()));
  return text;
}

void collect(const JSONValue& value, std::vector<const JSONValue*>& all) {
  all.push_back(&value);
  if (value.array()) {
    for (const JSONValue& element : *value.array()) collect(element, all);
  } else if (value.object()) {
    for (const auto& [key, member] : *value.object()) collect(member, all);
  }
}

class Mutation {
 public:
  Mutation(const JSONValue& document, unsigned seed) : random_(seed) {
    collect(document, all_);
    target_ = &any();
    change_ = random_() % 4;
  }

  /// A copy of the document, or of a part of it, with the change made.
  JSONValue applied(const JSONValue& value) {
    if (&value == target_) return changed(value);
    if (const JSONArray* array = value.array()) {
      JSONArray copy;
      for (const JSONValue& element : *array) copy.push_back(applied(element));
      return copy;
    }
    if (const JSONObject* object = value.object()) {
      JSONObject copy;
      for (const auto& [key, member] : *object) copy.emplace(key, applied(member));
      return copy;
    }
    return value;
  }

 private:
  const JSONValue& any() { return *all_[random_() % all_.size()]; }

  JSONValue changed(const JSONValue& value) {
    static const JSONValue simple[] = {JSONValue(), true, false, 0, -1, 1.5, "", JSONArray(), JSONObject()};
    if (change_ == 0) return any();
    if (change_ == 1) return simple[random_() % std::size(simple)];
    if (const auto* text = value.string()) return mutatedText(*text);
    if (const auto* array = value.array()) {
      JSONArray copy = *array;
      const auto at = copy.begin() + static_cast<std::ptrdiff_t>(random_() % (copy.size() + 1));
      if (change_ == 2 && at != copy.end()) {
        copy.erase(at);
      } else {
        copy.insert(at,
                    at == array->end() || array->empty() ? any() : JSONValue(copy[random_() % copy.size()]));
      }
      return copy;
    }
    if (const auto* object = value.object()) {
      JSONObject copy = *object;
      if (copy.empty()) return copy;
      const auto at = std::next(copy.begin(), static_cast<std::ptrdiff_t>(random_() % copy.size()));
      if (change_ == 2) {
        copy.erase(at);
      } else {
        copy.emplace(mutatedText(at->first), any());
      }
      return copy;
    }
    return any();
  }

  std::minstd_rand random_;
  std::vector<const JSONValue*> all_;
  const JSONValue* target_ = nullptr;
  unsigned long change_ = 0;
};

std::string mutated(std::string_view all, unsigned seed) {
  std::vector<std::size_t> starts{0};
  for (std::size_t at = all.find('\0'); at != all.npos; at = all.find('\0', at + 1)) starts.push_back(at + 1);
  const std::size_t start = starts[seed / 2 % starts.size()];
  const std::size_t end = std::min(all.find('\0', start), all.size());
  const auto document = JSONDecoder().decode<JSONValue>(all.substr(start, end - start));
  if (!document) return {};
  const auto text = JSONEncoder().encode(Mutation(*document, seed).applied(*document));
  if (!text) return {};
  return std::string(all.substr(0, start)) + *text + std::string(all.substr(end));
}

}  // namespace
}  // namespace TalvoConsentSDK::fuzzing

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t maximum,
                                               unsigned seed) {
  if (seed % 2 == 0) return LLVMFuzzerMutate(data, size, maximum);
  const std::string text =
      TalvoConsentSDK::fuzzing::mutated({reinterpret_cast<const char*>(data), size}, seed);
  if (text.empty() || text.size() > maximum) return LLVMFuzzerMutate(data, size, maximum);
  std::memcpy(data, text.data(), text.size());
  return text.size();
}

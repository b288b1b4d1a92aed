#include "adapters/cache/StoredReply.h"

#include <charconv>
#include <cstdint>
#include <system_error>
#include <utility>

namespace TalvoConsentSDK {

using namespace platform;

namespace {

constexpr std::string_view format = "1:";

// Each text is preceded by its length, and each list by the number of its fields, so any bytes are allowed.
void add(std::string& head, std::int64_t number) {
  head += std::to_string(number) + ":";
}

void add(std::string& head, std::string_view text) {
  add(head, static_cast<std::int64_t>(text.size()));
  head += text;
}

void add(std::string& head, const HTTPHeaders& headers) {
  add(head, static_cast<std::int64_t>(headers.size()));
  for (const auto& [name, value] : headers) {
    add(head, std::string_view(name));
    add(head, std::string_view(value));
  }
}

/// Reads a head from its beginning. Once something expected is missing, `isGood` stays false.
struct Reader {
  std::string_view rest;
  bool isGood = true;

  std::int64_t number() {
    std::int64_t value = 0;
    const auto [end, error] = std::from_chars(rest.data(), rest.data() + rest.size(), value);
    isGood = isGood && error == std::errc() && end != rest.data() + rest.size() && *end == ':';
    if (isGood) rest.remove_prefix(static_cast<std::size_t>(end - rest.data()) + 1);
    return isGood ? value : 0;
  }

  std::string text() {
    const auto size = static_cast<std::uint64_t>(number());
    isGood = isGood && size <= rest.size();
    if (!isGood) return {};
    std::string value(rest.substr(0, static_cast<std::size_t>(size)));
    rest.remove_prefix(value.size());
    return value;
  }

  HTTPHeaders headers() {
    HTTPHeaders values;
    for (std::int64_t left = number(); isGood && left > 0; --left) {
      std::string name = text();
      values[std::move(name)] = text();
    }
    return values;
  }
};

}  // namespace

std::string encodedHead(const StoredReply& reply) {
  std::string head(format);
  add(head, std::int64_t{reply.arrival.wall.time_since_epoch().count()});
  add(head, std::int64_t{reply.arrival.steady.count()});
  add(head, static_cast<std::int64_t>(reply.arrival.run));
  add(head, std::int64_t{reply.ageOnArrival.count()});
  add(head, reply.headers);
  add(head, reply.selecting);
  return head;
}

std::optional<StoredReply> decodedReply(CacheEntry entry) {
  Reader head{entry.head};
  head.isGood = head.rest.starts_with(format);
  if (head.isGood) head.rest.remove_prefix(format.size());
  StoredReply reply;
  reply.arrival.wall = std::chrono::sys_seconds(std::chrono::seconds(head.number()));
  reply.arrival.steady = std::chrono::seconds(head.number());
  reply.arrival.run = static_cast<std::uint64_t>(head.number());
  reply.ageOnArrival = std::chrono::seconds(head.number());
  reply.headers = head.headers();
  reply.selecting = head.headers();
  if (!head.isGood || !head.rest.empty()) return std::nullopt;
  reply.body = std::move(entry.body);
  return reply;
}

}  // namespace TalvoConsentSDK

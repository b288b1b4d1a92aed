#include "benchmarks/BareCurl.h"

#include <cstdlib>
#include <utility>

#include <curl/curl.h>

namespace TalvoConsentBenchmarks {

struct BareCurl::Transfer {
  CURL* easy = nullptr;
  std::string reply;
};

BareCurl::BareCurl(std::string url, std::string body)
    : url_(std::move(url)), body_(std::move(body)), multi_(curl_multi_init()) {
  if (!body_.empty()) headers_ = curl_slist_append(nullptr, "Content-Type: application/json");
}

BareCurl::~BareCurl() {
  for (const Transfer& each : transfers_) curl_easy_cleanup(each.easy);
  curl_multi_cleanup(multi_);
  curl_slist_free_all(static_cast<curl_slist*>(headers_));
}

void BareCurl::begin(Transfer& transfer) {
  if (!transfer.easy) {
    CURL* const easy = transfer.easy = curl_easy_init();
    curl_easy_setopt(easy, CURLOPT_URL, url_.c_str());
    curl_easy_setopt(easy, CURLOPT_NOSIGNAL, 1L);
    // Same as our session, so that the requests are equal.
    curl_easy_setopt(easy, CURLOPT_ACCEPT_ENCODING, "");
    if (!body_.empty()) {
      curl_easy_setopt(easy, CURLOPT_POSTFIELDS, body_.data());
      curl_easy_setopt(easy, CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(body_.size()));
      curl_easy_setopt(easy, CURLOPT_FRESH_CONNECT, 1L);
      curl_easy_setopt(easy, CURLOPT_HTTPHEADER, static_cast<curl_slist*>(headers_));
    }
    constexpr auto received = [](char* bytes, std::size_t, std::size_t count, void* self) {
      static_cast<Transfer*>(self)->reply.append(bytes, count);
      return count;
    };
    curl_easy_setopt(easy, CURLOPT_WRITEFUNCTION, static_cast<curl_write_callback>(received));
    curl_easy_setopt(easy, CURLOPT_WRITEDATA, &transfer);
    curl_easy_setopt(easy, CURLOPT_PRIVATE, &transfer);
  }
  transfer.reply.clear();
  curl_multi_add_handle(multi_, transfer.easy);
}

void BareCurl::run(int requests, int inFlight) {
  if (transfers_.empty()) transfers_.resize(static_cast<std::size_t>(inFlight));
  int begun = 0;
  int ended = 0;
  for (Transfer& each : transfers_) {
    begin(each);
    ++begun;
  }
  while (ended < requests) {
    int running = 0;
    curl_multi_perform(multi_, &running);
    int left = 0;
    while (const CURLMsg* const message = curl_multi_info_read(multi_, &left)) {
      CURL* const easy = message->easy_handle;
      Transfer* transfer = nullptr;
      long status = 0;
      curl_easy_getinfo(easy, CURLINFO_PRIVATE, &transfer);
      curl_easy_getinfo(easy, CURLINFO_RESPONSE_CODE, &status);
      if (message->data.result != CURLE_OK || status != 200 || transfer->reply.empty()) std::abort();
      curl_multi_remove_handle(multi_, easy);
      ++ended;
      if (begun < requests) {
        begin(*transfer);
        ++begun;
      }
    }
    if (ended < requests) curl_multi_poll(multi_, nullptr, 0, 1000, nullptr);
  }
}

}  // namespace TalvoConsentBenchmarks

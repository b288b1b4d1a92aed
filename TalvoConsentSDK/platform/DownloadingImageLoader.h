#pragma once

// Pictures from the network, for every toolkit that can decode them.

#include <functional>
#include <memory>
#include <string_view>
#include <utility>

#include "TalvoConsentSDK/base/Error.h"
#include "TalvoConsentSDK/base/Export.h"
#include "TalvoConsentSDK/platform/Executor.h"
#include "TalvoConsentSDK/platform/ImageLoader.h"
#include "TalvoConsentSDK/platform/URLSession.h"

namespace TalvoConsentSDK {
namespace platform TALVO_EXPORT {

/// Downloads pictures through a session, and decodes them with a function on a background executor.
class DownloadingImageLoader : public ImageLoader {
 public:
  using Loaded = Result<std::shared_ptr<const Image>>;

  /// Decodes a downloaded file. An exception counts as a failure.
  using Decode = std::function<Loaded(std::string_view bytes)>;

  DownloadingImageLoader(std::shared_ptr<URLSession> session, std::shared_ptr<Executor> mainActor,
                         std::shared_ptr<Executor> background, Decode decode)
      : session_(std::move(session)),
        mainActor_(std::move(mainActor)),
        background_(std::move(background)),
        decode_(std::move(decode)) {}

  void load(const URL& url, Completion completion) override {
    if (!url.isRequestable()) {
      mainActor_->post([completion] { completion(failure("The URL cannot be requested")); });
      return;
    }
    runOnce(*session_, URLRequest(url),
            [mainActor = mainActor_, background = background_, decode = decode_,
             completion = std::move(completion)](const Result<URLResponse>& outcome) {
              postOrRun(background, [mainActor, decode, completion, outcome] {
                mainActor->post([completion, loaded = received(outcome, decode)] { completion(loaded); });
              });
            });
  }

 private:
  static PlatformError failure(const char* description) { return {"ImageLoader", 1, description}; }

  static Loaded received(const Result<URLResponse>& outcome, const Decode& decode) try {
    if (!outcome) return outcome.error();
    const int status = outcome->statusCode.value_or(0);
    if (status < 200 || status > 299 || !outcome->body) return failure("No picture received");
    return decode(*outcome->body);
  } catch (...) {
    return Error::current();
  }

  const std::shared_ptr<URLSession> session_;
  const std::shared_ptr<Executor> mainActor_;
  const std::shared_ptr<Executor> background_;
  const Decode decode_;
};

}  // namespace platform
}  // namespace TalvoConsentSDK

#include "adapters/draw/DrawImageLoader.h"

#include <utility>

#include "adapters/draw/PictureDecoder.h"

namespace TalvoConsentSDK {

using namespace platform;

namespace {

using Loaded = Result<std::shared_ptr<const Image>>;

PlatformError failure(std::string description) {
  return {"DrawImageLoader", 1, std::move(description)};
}

Loaded decoded(const Result<URLResponse>& outcome) try {
  if (!outcome) return outcome.error();
  const int status = outcome->statusCode.value_or(0);
  if (status < 200 || status > 299 || !outcome->body) return failure("No picture received");
  return decodedPicture(*outcome->body);
} catch (...) {
  return Error::current();
}

}  // namespace

DrawImageLoader::DrawImageLoader(std::shared_ptr<URLSession> session, std::shared_ptr<Executor> mainActor,
                                 std::shared_ptr<Executor> background)
    : session_(std::move(session)), mainActor_(std::move(mainActor)), background_(std::move(background)) {}

void DrawImageLoader::load(const URL& url, Completion completion) {
  if (!url.isRequestable()) {
    mainActor_->post([completion] { completion(failure("The URL cannot be requested")); });
    return;
  }
  platform::runOnce(*session_, URLRequest(url),
                    [mainActor = mainActor_, background = background_,
                     completion = std::move(completion)](const Result<URLResponse>& outcome) {
                      platform::postOrRun(background, [mainActor, completion, outcome] {
                        mainActor->post([completion, loaded = decoded(outcome)] { completion(loaded); });
                      });
                    });
}

}  // namespace TalvoConsentSDK

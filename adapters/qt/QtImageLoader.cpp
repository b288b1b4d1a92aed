#include "adapters/qt/QtImageLoader.h"

#include <QBuffer>
#include <QByteArray>
#include <QImageReader>
#include <algorithm>
#include <iterator>
#include <string_view>
#include <utility>

namespace TalvoConsentSDK {

using namespace platform;

namespace {

using Loaded = Result<std::shared_ptr<const Image>>;

// Larger pictures are rejected as a mistake: no logo needs them, and decoding takes memory for every pixel.
constexpr qint64 maxPixels = 16'000'000;

// The usual formats on the web. Icons are excluded because the size in their header need not be the size of
// the picture in them, so `maxPixels` would not limit it. SVG, which Qt may be able to read, is excluded
// because it can take any amount of memory and include other files.
constexpr std::string_view formats[] = {"png", "jpeg", "gif", "webp"};

PlatformError failure(std::string description) {
  return {"QtImageLoader", 1, std::move(description)};
}

Loaded decoded(const Result<URLResponse>& outcome) try {
  if (!outcome) return outcome.error();
  const URLResponse& response = *outcome;
  if (response.statusCode.value_or(0) < 200 || response.statusCode.value_or(0) > 299 || !response.body) {
    return failure("No picture received");
  }
  QByteArray bytes =
      QByteArray::fromRawData(response.body->data(), static_cast<qsizetype>(response.body->size()));
  QBuffer buffer(&bytes);
  QImageReader reader(&buffer);
  if (std::ranges::find(formats, reader.format().toStdString()) == std::end(formats))
    return failure("The picture cannot be read: It is not PNG, JPEG, GIF or WebP");
  const QSize size = reader.size();
  if (!size.isValid()) return failure("The picture cannot be read: " + reader.errorString().toStdString());
  if (static_cast<qint64>(size.width()) * size.height() > maxPixels)
    return failure("The picture is too large");
  QImage content = reader.read().convertToFormat(QImage::Format_ARGB32_Premultiplied);
  if (content.isNull()) return failure("The picture cannot be read: " + reader.errorString().toStdString());
  return std::shared_ptr<const Image>(std::make_shared<QtImage>(std::move(content)));
} catch (...) {
  return Error::current();
}

}  // namespace

QtImageLoader::QtImageLoader(std::shared_ptr<URLSession> session, std::shared_ptr<Executor> mainActor,
                             std::shared_ptr<Executor> background)
    : session_(std::move(session)), mainActor_(std::move(mainActor)), background_(std::move(background)) {}

void QtImageLoader::load(const URL& url, Completion completion) {
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

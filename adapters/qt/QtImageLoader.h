#pragma once

// Pictures from the network, decoded by Qt.

#include <QImage>
#include <memory>

#include "TalvoConsentSDK/platform/DownloadingImageLoader.h"

namespace TalvoConsentSDK {

class QtImage : public platform::Image {
 public:
  explicit QtImage(QImage content) : content_(std::move(content)) {}

  platform::Size size() const override {
    return {static_cast<double>(content_.width()), static_cast<double>(content_.height())};
  }
  const QImage& content() const { return content_; }

 private:
  const QImage content_;
};

class QtImageLoader : public platform::DownloadingImageLoader {
 public:
  QtImageLoader(std::shared_ptr<platform::URLSession> session, std::shared_ptr<platform::Executor> mainActor,
                std::shared_ptr<platform::Executor> background);
};

}  // namespace TalvoConsentSDK

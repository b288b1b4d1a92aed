#pragma once

// Pictures from the network, decoded by Qt.

#include <QImage>
#include <memory>

#include "TalvoConsentSDK/platform/Executor.h"
#include "TalvoConsentSDK/platform/ImageLoader.h"
#include "TalvoConsentSDK/platform/URLSession.h"

namespace TalvoConsentSDK {

class QtImage : public Image {
 public:
  explicit QtImage(QImage content) : content_(std::move(content)) {}

  Size size() const override {
    return {static_cast<double>(content_.width()), static_cast<double>(content_.height())};
  }
  const QImage& content() const { return content_; }

 private:
  const QImage content_;
};

class QtImageLoader : public ImageLoader {
 public:
  QtImageLoader(std::shared_ptr<URLSession> session, std::shared_ptr<Executor> mainActor,
                std::shared_ptr<Executor> background);

  void load(const URL& url, Completion completion) override;

 private:
  const std::shared_ptr<URLSession> session_;
  const std::shared_ptr<Executor> mainActor_;
  const std::shared_ptr<Executor> background_;
};

}  // namespace TalvoConsentSDK

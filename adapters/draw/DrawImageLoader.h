#pragma once

// Pictures from the network, for surfaces.

#include <memory>

#include "TalvoConsentSDK/platform/Executor.h"
#include "TalvoConsentSDK/platform/ImageLoader.h"
#include "TalvoConsentSDK/platform/URLSession.h"

namespace TalvoConsentSDK {

class DrawImageLoader : public platform::ImageLoader {
 public:
  DrawImageLoader(std::shared_ptr<platform::URLSession> session,
                  std::shared_ptr<platform::Executor> mainActor,
                  std::shared_ptr<platform::Executor> background);

  void load(const URL& url, Completion completion) override;

 private:
  const std::shared_ptr<platform::URLSession> session_;
  const std::shared_ptr<platform::Executor> mainActor_;
  const std::shared_ptr<platform::Executor> background_;
};

}  // namespace TalvoConsentSDK

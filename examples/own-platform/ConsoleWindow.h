#pragma once

// The host's own toolkit: a "screen" that prints the banner as text and answers it with a single tap.

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <optional>
#include <sstream>
#include <string>

#include <TalvoConsentSDK/platform/Application.h>
#include <TalvoConsentSDK/view/HostingController.h>

namespace own {
using namespace TalvoConsentSDK;
using namespace TalvoConsentSDK::platform;
using namespace TalvoConsentSDK::view;

// Every character is half as wide as the font size.
class ConsoleMeasurer : public TextMeasurer {
 public:
  Size measure(std::string_view text, const Font& font, double width) override {
    const double whole = static_cast<double>(text.size()) * font.size() / 2;
    const double lines = std::max(1.0, std::ceil(whole / width));
    return {std::min(whole, width), lines * font.lineHeight()};
  }
  double widestWord(std::string_view text, const Font& font) override {
    double widest = 0;
    std::istringstream words{std::string(text)};
    for (std::string word; words >> word;) widest = std::max(widest, measure(word, font, 1e9).width);
    return widest;
  }
};

class ConsoleWindow : public platform::Window {
 public:
  explicit ConsoleWindow(std::string answer) : answer_(std::move(answer)) {}

  void setRootViewController(std::shared_ptr<RootViewController> controller) override {
    controller_ = HostingController::of(controller);
    ViewEnvironment environment;
    environment.textMeasurer = std::make_shared<ConsoleMeasurer>();
    environment.size = {390, 844};
    controller_->setEnvironment(std::move(environment));
  }
  void setWindowLevel(WindowLevel) override {}
  void setBackgroundColor(Color) override {}
  void makeKeyAndVisible() override {}
  void setAlpha(double) override {}
  void setHidden(bool) override {}
  // A console cannot fade. Once the banner is fully visible, prints it and answers it.
  void animateAlpha(double alpha, std::chrono::milliseconds, std::function<void()> completion) override {
    completion();
    if (alpha == 0) return;
    std::optional<ElementId> button;
    for (const auto& element : controller_->accessibleElements(Layout::Rows::all)) {
      std::printf("%s %s\n", element.isControl() ? "  [ ]" : "     ", element.name.c_str());
      if (element.isControl() && element.name == answer_) button = element.id;
    }
    if (button) controller_->activate(*button);
  }

 private:
  const std::string answer_;
  std::shared_ptr<HostingController> controller_;
};

class ConsoleScene : public platform::Scene {
 public:
  ActivationState activationState() const override { return ActivationState::foregroundActive; }
  bool isWindowScene() const override { return true; }
  std::shared_ptr<Window> makeWindow() override { return std::make_shared<ConsoleWindow>("Accept all"); }
};

class ConsoleApplication : public platform::Application {
 public:
  std::vector<std::shared_ptr<Scene>> connectedScenes() override {
    return {std::make_shared<ConsoleScene>()};
  }
  OperatingSystemVersion operatingSystemVersion() const override { return {17, 0}; }
  void open(const URL& url) override { std::printf("open %s\n", url.text().c_str()); }
  std::optional<LayoutDirection> layoutDirection() const override { return std::nullopt; }
  bool reducesMotion() const override { return false; }
};

}  // namespace own

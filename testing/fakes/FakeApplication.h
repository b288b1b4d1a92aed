#pragma once

// A host application without a screen: its scenes and windows only record the calls they receive.

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "TalvoConsentSDK/base/Export.h"
#include "TalvoConsentSDK/platform/Application.h"
#include "TalvoConsentSDK/view/HostingController.h"

namespace TalvoConsentSDK TALVO_EXPORT {

/// A window whose fades end when the test says so. FixedWidthMeasurer measures the text of its view.
class FakeWindow : public platform::Window {
 public:
  void setRootViewController(std::shared_ptr<platform::RootViewController> controller) override;
  void setWindowLevel(platform::WindowLevel newLevel) override { level = newLevel; }
  void setBackgroundColor(platform::Color color) override { backgroundColor = color; }
  void makeKeyAndVisible() override { isVisible = true; }
  void setAlpha(double newAlpha) override { alpha = newAlpha; }
  void setHidden(bool hidden) override { isVisible = !hidden; }
  void animateAlpha(double target, std::chrono::milliseconds duration,
                    std::function<void()> completion) override;

  /// Completes all running fades, in the order in which they began.
  void finishAnimations();

  /// Taps the first enabled control with this role and name, even if it is scrolled out of sight. Returns
  /// false if there is none.
  bool tap(view::Role role, const std::string& name);

  std::shared_ptr<view::HostingController> controller;
  platform::WindowLevel level = platform::WindowLevel::normal;
  platform::Color backgroundColor;
  bool isVisible = false;
  double alpha = 1;
  std::vector<std::chrono::milliseconds> fades;  // the durations of all fades so far

 private:
  struct Fade {
    double target;
    std::function<void()> completion;
  };
  std::vector<Fade> running_;
};

class FakeScene : public platform::Scene {
 public:
  explicit FakeScene(platform::ActivationState sceneState = platform::ActivationState::foregroundActive,
                     bool acceptsWindows = true)
      : state(sceneState), isForWindows(acceptsWindows) {}

  platform::ActivationState activationState() const override { return state; }
  bool isWindowScene() const override { return isForWindows; }
  std::shared_ptr<platform::Window> makeWindow() override;

  /// The windows made so far that are still alive.
  std::vector<std::shared_ptr<FakeWindow>> windows() const;

  platform::ActivationState state;
  bool isForWindows;

 private:
  std::vector<std::weak_ptr<FakeWindow>> windows_;
};

class FakeApplication : public platform::Application {
 public:
  std::vector<std::shared_ptr<platform::Scene>> connectedScenes() override { return scenes; }
  platform::OperatingSystemVersion operatingSystemVersion() const override { return version; }
  void open(const URL& url) override { opened.push_back(url.text()); }
  std::optional<platform::LayoutDirection> layoutDirection() const override { return direction; }
  bool reducesMotion() const override { return hasReducedMotion; }

  std::vector<std::shared_ptr<platform::Scene>> scenes;
  platform::OperatingSystemVersion version{17, 0};
  std::vector<std::string> opened;
  std::optional<platform::LayoutDirection> direction;
  bool hasReducedMotion = false;
};

}  // namespace TalvoConsentSDK

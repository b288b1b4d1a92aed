#pragma once

// The windows on a surface: what they show, and the list that draws them.

#include <chrono>
#include <functional>
#include <memory>
#include <vector>

#include "TalvoConsentSDK/platform/Executor.h"
#include "TalvoConsentSDK/view/HostingController.h"

#include "adapters/draw/SurfaceOptions.h"
#include "adapters/draw/VisualPainter.h"

namespace TalvoConsentSDK {

class SurfaceWindow;

/// Shared by a surface, its application and its windows. Main thread only.
class SurfaceStage {
 public:
  using Clock = view::HostingController::Clock;

  explicit SurfaceStage(SurfaceOptions options);

  /// Ends all fades, tells the controllers that their windows are lost, and shows nothing from here on,
  /// because the surface is gone.
  void close();
  bool isClosed() const { return isClosed_; }

  const SurfaceOptions& options() const { return options_; }
  Clock::time_point now() const { return options_.now ? options_.now() : Clock::now(); }
  void resize(const SurfaceSize& size);
  void setSettings(SurfaceSettings settings);
  void setPlatform(std::shared_ptr<platform::Executor> mainActor,
                   std::shared_ptr<platform::ImageLoader> imageLoader);

  /// Windows are added and removed by themselves; the one shown last is on top.
  void add(SurfaceWindow& window);
  void remove(SurfaceWindow& window);
  void raise(SurfaceWindow& window);

  /// The controllers of the visible windows, the topmost first.
  std::vector<std::shared_ptr<view::HostingController>> controllers() const;

  platform::Size pointSize() const;
  view::ViewEnvironment environment() const;

  void invalidate();
  bool needsFrame() const;
  const DrawList& frame();
  void forgetTextures();

 private:
  // What was drawn last for a window.
  struct Drawn {
    std::vector<view::Visual> visuals;
    double alpha = 1;
    friend bool operator==(const Drawn&, const Drawn&) = default;
  };

  void updateEnvironments();

  SurfaceOptions options_;
  std::shared_ptr<FontSet> fonts_;
  std::shared_ptr<Paragraphs> paragraphs_;
  VisualPainter painter_;
  std::shared_ptr<platform::TextMeasurer> measurer_;
  std::shared_ptr<platform::Executor> mainActor_;
  std::shared_ptr<platform::ImageLoader> imageLoader_;
  std::vector<SurfaceWindow*> windows_;  // the topmost last
  std::vector<Drawn> drawn_;
  bool isClosed_ = false;
  bool isStale_ = false;      // something may have changed
  bool isRepainted_ = false;  // the list must be made anew, even if the visuals are the same
  bool isMoving_ = false;
};

}  // namespace TalvoConsentSDK

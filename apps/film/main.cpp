// Films the banner's motions: draws it every 33 ms by a clock of its own, and saves the pictures of each
// motion in rows, to be read like a text. So they show what a user sees, however slow the machine is.
//
//   talvo-film SITE FOLDER LANGUAGE WIDTHxHEIGHT TEXTSCALE CATEGORY
//
// SITE is a folder with the documents of a site, and CATEGORY the name of the category that is opened and
// closed.

#include <QGuiApplication>
#include <QPainter>
#include <QQuickWindow>
#include <QStringList>
#include <algorithm>
#include <fstream>
#include <functional>
#include <iostream>
#include <iterator>
#include <memory>
#include <string>

#include "TalvoConsentSDK/models/JSONCoding.h"
#include "TalvoConsentSDK/ui/ConsentBannerPresenter.h"
#include "TalvoConsentSDK/view/HostingController.h"
#include "TalvoConsentSDK/view/TextDirection.h"

#include "adapters/qt/QtText.h"
#include "adapters/qt/VisualMount.h"

namespace {

using namespace TalvoConsentSDK;
using namespace TalvoConsentSDK::platform;
using namespace TalvoConsentSDK::view;

using Clock = HostingController::Clock;
constexpr std::chrono::milliseconds interval(33);

template <class Record>
Record read(const std::string& file) {
  std::ifstream stream(file);
  const std::string text{std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
  return JSONDecoder().decode<Record>(text).value();
}

class Film {
 public:
  Film(const ConsentBannerView& banner, const Size& size, double textScale)
      : controller_(bannerComposition(banner.view(), banner.customization()),
                    dominantDirection(banner.customization().messages.bannerMessages.mainMessage)),
        mount_(*window_.contentItem()) {
    mount_.setTextSettings({textScale});
    window_.resize(static_cast<int>(size.width), static_cast<int>(size.height));
    window_.setColor(Qt::lightGray);
    window_.show();
    ViewEnvironment environment;
    environment.textMeasurer = std::make_shared<QtTextMeasurer>(TextSettings{textScale});
    environment.textScale = textScale;
    environment.size = size;
    controller_.setEnvironment(environment);
    draw();
  }

  /// Runs `action` and films until nothing moves. Returns the pictures in rows, so that the whole is small
  /// enough for programs that show images.
  QImage shoot(const std::function<void()>& action) {
    constexpr std::size_t most = 100;  // a fling lasts up to three seconds
    std::vector<QImage> pictures{draw()};
    action();
    do {
      now_ += interval;
      pictures.push_back(draw());
    } while (controller_.isMoving() && pictures.size() < most);
    constexpr int gap = 6;
    constexpr int maxWidth = 4000;
    const int width = pictures.front().width() + gap;
    const int height = pictures.front().height() + gap;
    const int count = static_cast<int>(pictures.size());
    const int perRow = std::clamp(maxWidth / width, 1, count);
    QImage strip(perRow * width, (count + perRow - 1) / perRow * height, QImage::Format_RGB32);
    strip.fill(Qt::white);
    QPainter painter(&strip);
    for (int i = 0; i < count; ++i)
      painter.drawImage(i % perRow * width, i / perRow * height, pictures[static_cast<std::size_t>(i)]);
    return strip;
  }

  void tap(Role role, const std::string& name) {
    const auto& elements = controller_.accessibleElements();
    const auto control = std::ranges::find_if(elements, [&](const AccessibleElement& each) {
      return each.isControl() && each.role == role && (name.empty() || each.name == name);
    });
    if (control == elements.end()) throw std::runtime_error("There is no control " + name);
    controller_.reveal(*control);
    const auto id = control->id;
    draw();
    for (const AccessibleElement& each : controller_.accessibleElements()) {
      if (each.id != id) continue;
      const Point point = (each.clip ? each.frame.intersection(*each.clip) : each.frame).center();
      controller_.touchBegan(point, now_);
      controller_.touchEnded(point, now_);
      return;
    }
  }

  /// Moves a finger up by `distance` and lets go. It starts on the list, also on a low window.
  void fling(double distance) {
    Point point{window_.width() / 2.0, window_.height() * 0.4};
    controller_.touchBegan(point, now_);
    for (int i = 0; i < 6; ++i) {
      point.y -= distance / 6;
      now_ += std::chrono::milliseconds(8);
      controller_.touchMoved(point, now_);
    }
    controller_.touchEnded(point, now_);
  }

 private:
  QImage draw() {
    mount_.update(controller_.frame(now_));
    return window_.grabWindow();
  }

  HostingController controller_;
  QQuickWindow window_;
  VisualMount mount_;
  Clock::time_point now_{std::chrono::seconds(1)};
};

}  // namespace

int main(int argc, char* argv[]) {
  const QGuiApplication application(argc, argv);
  const QStringList arguments = QGuiApplication::arguments();
  if (arguments.size() != 7) {
    std::cerr << "talvo-film SITE FOLDER LANGUAGE WIDTHxHEIGHT TEXTSCALE CATEGORY\n";
    return 2;
  }
  try {
    const std::string site = arguments[1].toStdString() + "/";
    const std::string end = "." + arguments[3].toStdString() + ".json";
    const QStringList size = arguments[4].split(QLatin1Char('x'));
    const auto document = read<BannerCustomization>(site + "customization" + end);
    const ConsentBannerView banner(*document.customization, read<Services>(site + "services" + end), {}, {},
                                   {});
    Film film(banner, {size.at(0).toDouble(), size.at(1).toDouble()}, arguments[5].toDouble());
    banner.handleMainAction(std::string(preferencesAction));
    const std::string category = arguments[6].toStdString();
    const auto vendor = [&] { return banner.bindings().vendorStates->get().at("marketing").begin()->first; };
    const std::pair<const char*, std::function<void()>> motions[] = {
        {"1-preferences", [] {}},
        {"2-open", [&] { film.tap(Role::expander, category); }},
        {"3-switch", [&] { film.tap(Role::toggle, vendor()); }},
        {"4-scroll", [&] { film.fling(120); }},
        {"5-vendor", [&] { film.tap(Role::button, vendor()); }},
        {"6-back", [&] { film.tap(Role::button, "Back"); }},
        {"7-close", [&] { film.tap(Role::expander, category); }},
    };
    for (const auto& [name, action] : motions) {
      const QString file = QStringLiteral("%1/%2.png").arg(arguments[2], QLatin1String(name));
      if (!film.shoot(action).save(file)) throw std::runtime_error("Cannot write " + file.toStdString());
    }
  } catch (const std::exception& error) {
    std::cerr << error.what() << "\n";
    return 1;
  }
}

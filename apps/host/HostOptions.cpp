#include "apps/host/HostOptions.h"

#include <QCommandLineParser>
#include <QStandardPaths>
#include <cstdio>
#include <cstdlib>
#include <fstream>

namespace TalvoConsentHost {

namespace {

using TalvoConsentSDK::platform::LayoutDirection;
using TalvoConsentSDK::platform::SafeArea;

[[noreturn]] void fail(const QString& message) {
  std::fprintf(stderr, "talvo-host: %s\n", qPrintable(message));
  std::exit(2);
}

// Parses a number and returns whether it is in the range. NaN is in no range.
bool parse(const QString& text, double least, double most, double& value) {
  bool isNumber = false;
  value = text.toDouble(&isNumber);
  return isNumber && value >= least && value <= most;
}

double number(const QCommandLineParser& parser, const QString& option, double least, double most) {
  double value = 0;
  if (!parse(parser.value(option), least, most, value)) {
    fail(QStringLiteral("--%1 takes a number from %2 to %3").arg(option).arg(least).arg(most));
  }
  return value;
}

QSize size(const QString& text) {
  const QStringList sides = text.split(QLatin1Char('x'));
  const QSize size(sides.value(0).toInt(), sides.value(1).toInt());
  if (sides.size() != 2 || size.isEmpty()) fail(QStringLiteral("--size takes WIDTHxHEIGHT in points"));
  return size;
}

SafeArea safeArea(const QString& text) {
  const QStringList sides = text.split(QLatin1Char(','));
  double side[4] = {};
  bool isGood = sides.size() == 4;
  for (int i = 0; isGood && i < 4; ++i) isGood = parse(sides[i], 0, 10'000, side[i]);
  if (!isGood) fail(QStringLiteral("--safe-area takes TOP,LEFT,BOTTOM,RIGHT in points"));
  return {side[0], side[1], side[2], side[3]};
}

LayoutDirection direction(const QString& text) {
  if (text == QLatin1String("rtl")) return LayoutDirection::rightToLeft;
  if (text == QLatin1String("ltr")) return LayoutDirection::leftToRight;
  fail(QStringLiteral("--layout takes rtl or ltr"));
}

Toolkit toolkit(const QString& text) {
  if (text == QLatin1String("qt")) return Toolkit::qt;
#if defined(TALVO_HAS_DRAW)
  if (text == QLatin1String("draw")) return Toolkit::draw;
  fail(QStringLiteral("--toolkit takes qt or draw"));
#else
  fail(QStringLiteral("--toolkit takes qt; draw was not built in"));
#endif
}

std::filesystem::path defaultStore() {
  const QString folder = QStandardPaths::writableLocation(QStandardPaths::AppDataLocation);
  return std::filesystem::path(folder.toStdString()) / "consent.sqlite";
}

}  // namespace

HostOptions parseOptions(const QStringList& arguments) {
  HostOptions defaults;
  QCommandLineParser parser;
  parser.setApplicationDescription(
      QStringLiteral("A sample host of TalvoConsentSDK: a window to use, or a script to run."));
  const auto add = [&](const char* name, const char* help, const char* value,
                       const std::string& fallback = {}) {
    parser.addOption(
        {QLatin1String(name), QLatin1String(help), QLatin1String(value), QString::fromStdString(fallback)});
  };
  add("toolkit", "What draws the banner: qt, or draw for draw lists without a display.", "qt|draw", "qt");
  add("api-url", "URL of the consent service.", "URL", defaults.apiUrl);
  add("site", "Identifier of the site.", "ID", defaults.site);
  add("language", "Language of the banner.", "CODE", defaults.language);
  add("store", "File for the stored consents.", "FILE");
  add("cache", "Size in bytes of the HTTP cache beside the stored consents; 0 switches it off.", "BYTES",
      std::to_string(defaults.maxCacheBytes));
  add("ca", "PEM file of certificate authorities to trust, besides the system's.", "FILE");
  add("size", "Size of the window in points.", "WxH", "390x844");
  add("scale", "Pixels per point.", "N");
  add("text-scale", "Factor for the size of text, instead of the system's.", "F");
  add("layout", "Direction of the layout, regardless of the language.", "rtl|ltr");
  add("safe-area", "Insets of the window that the system covers, in points.", "T,L,B,R");
  add("script", "Commands to run, one per line; - reads them from standard input.", "FILE");
  const auto addSwitch = [&](const char* name, const char* help) {
    parser.addOption({QLatin1String(name), QLatin1String(help)});
  };
  addSwitch("high-contrast", "Draw the banner with solid lines and outlines.");
  addSwitch("reduced-motion", "Draw the banner without animations.");
  addSwitch("hidden", "Stay in the background, without a window.");
  addSwitch("empty", "Draw an empty window before the client is created.");
  parser.addHelpOption();

  if (!parser.parse(arguments)) fail(parser.errorText());
  if (parser.isSet(QStringLiteral("help"))) {
    // Qt knows the program's name only once an application object exists.
    std::printf("%s", qPrintable(parser.helpText().replace(QLatin1String("<executable_name>"),
                                                           QLatin1String("talvo-host"))));
    std::exit(0);
  }
  if (!parser.positionalArguments().isEmpty()) fail(QStringLiteral("Unexpected argument"));

  const auto text = [&](const char* name) { return parser.value(QLatin1String(name)).toStdString(); };
  HostOptions options;
  options.toolkit = toolkit(parser.value(QStringLiteral("toolkit")));
  options.apiUrl = text("api-url");
  options.site = text("site");
  options.language = text("language");
  options.store =
      parser.isSet(QStringLiteral("store")) ? std::filesystem::path(text("store")) : defaultStore();
  options.maxCacheBytes = static_cast<std::size_t>(number(parser, QStringLiteral("cache"), 0, 1e12));
  options.certificates = text("ca");
  if (!options.certificates.empty() && !std::ifstream(options.certificates))
    fail(QStringLiteral("--ca takes a file that can be read"));
  options.size = size(parser.value(QStringLiteral("size")));
  if (parser.isSet(QStringLiteral("scale")))
    options.pixelRatio = number(parser, QStringLiteral("scale"), 0.5, 8);
  if (parser.isSet(QStringLiteral("text-scale")))
    options.textScale = number(parser, QStringLiteral("text-scale"), 0.5, 4);
  if (parser.isSet(QStringLiteral("layout"))) {
    options.layoutDirection = direction(parser.value(QStringLiteral("layout")));
  }
  if (parser.isSet(QStringLiteral("safe-area"))) {
    options.safeArea = safeArea(parser.value(QStringLiteral("safe-area")));
  }
  if (parser.isSet(QStringLiteral("script"))) options.script = text("script");
  options.highContrast = parser.isSet(QStringLiteral("high-contrast"));
  options.reducesMotion = parser.isSet(QStringLiteral("reduced-motion"));
  options.isHidden = parser.isSet(QStringLiteral("hidden"));
  options.isEmpty = parser.isSet(QStringLiteral("empty"));
  return options;
}

}  // namespace TalvoConsentHost

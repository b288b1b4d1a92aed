#include "adapters/qt/QtImageLoader.h"

#include <QBuffer>
#include <QByteArray>
#include <QImageReader>
#include <QXmlStreamReader>
#include <algorithm>
#include <iterator>
#include <string_view>
#include <utility>

namespace TalvoConsentSDK {

using namespace platform;

namespace {

// Larger pictures are rejected as a mistake: no logo needs them, and decoding takes memory for every pixel.
constexpr qint64 maxPixels = 16'000'000;

// The usual formats on the web; Qt reads SVG if its plugin is installed. Icons are excluded because the size
// in their header need not be the size of the picture in them, so `maxPixels` would not limit it.
constexpr std::string_view formats[] = {"png", "jpeg", "gif", "webp", "svg"};

// SVG pictures are drawn at this size in pixels or smaller, which is sharp for a logo at four pixels per
// point.
constexpr QSize svgSize(4096, 4 * 46);

// SVG can take any amount of time and memory and include other files. Only documents without such parts are
// drawn: plain shapes and gradients, without references, dashes, imports or deep nesting.
constexpr qsizetype maxSVGBytes = qsizetype{256} * 1024;
constexpr int maxSVGDepth = 32;
constexpr std::string_view svgElements[] = {
    "svg",     "g",    "defs",     "title",   "desc",           "path",           "rect", "circle",
    "ellipse", "line", "polyline", "polygon", "linearGradient", "radialGradient", "stop", "style"};

bool isPlain(QStringView text) {
  return !text.contains(u"dash", Qt::CaseInsensitive) && !text.contains(u'@') && !text.contains(u'\\');
}

bool isPlainSVG(const QByteArray& bytes) {
  if (bytes.size() > maxSVGBytes) return false;
  QXmlStreamReader xml(bytes);
  int depth = 0;
  while (!xml.atEnd()) {
    switch (xml.readNext()) {
      case QXmlStreamReader::DTD:
        if (!xml.entityDeclarations().isEmpty()) return false;
        break;
      case QXmlStreamReader::EntityReference:
      case QXmlStreamReader::ProcessingInstruction:
        return false;
      case QXmlStreamReader::Characters:
        if (!isPlain(xml.text())) return false;
        break;
      case QXmlStreamReader::StartElement:
        if (++depth > maxSVGDepth ||
            std::ranges::find(svgElements, xml.name().toUtf8().toStdString()) == std::end(svgElements)) {
          return false;
        }
        for (const QXmlStreamAttribute& each : xml.attributes()) {
          if (each.name() == u"href" || !isPlain(each.name()) || !isPlain(each.value())) return false;
        }
        break;
      case QXmlStreamReader::EndElement:
        --depth;
        break;
      default:
        break;
    }
  }
  return !xml.hasError();
}

PlatformError failure(std::string description) {
  return {"QtImageLoader", 1, std::move(description)};
}

DownloadingImageLoader::Loaded decoded(std::string_view file) {
  QByteArray bytes = QByteArray::fromRawData(file.data(), static_cast<qsizetype>(file.size()));
  QBuffer buffer(&bytes);
  QImageReader reader(&buffer);
  if (std::ranges::find(formats, reader.format().toStdString()) == std::end(formats))
    return failure("The picture cannot be read: It is not PNG, JPEG, GIF, WebP or SVG");
  const bool isSVG = reader.format() == "svg";
  if (isSVG && !isPlainSVG(bytes)) return failure("The picture cannot be read: It is no plain SVG");
  const QSize size = reader.size();
  if (!size.isValid()) return failure("The picture cannot be read: " + reader.errorString().toStdString());
  if (static_cast<qint64>(size.width()) * size.height() > maxPixels)
    return failure("The picture is too large");
  if (isSVG) reader.setScaledSize(size.scaled(svgSize, Qt::KeepAspectRatio));
  QImage content = reader.read().convertToFormat(QImage::Format_ARGB32_Premultiplied);
  if (content.isNull()) return failure("The picture cannot be read: " + reader.errorString().toStdString());
  return std::shared_ptr<const Image>(std::make_shared<QtImage>(std::move(content)));
}

}  // namespace

QtImageLoader::QtImageLoader(std::shared_ptr<URLSession> session, std::shared_ptr<Executor> mainActor,
                             std::shared_ptr<Executor> background)
    : DownloadingImageLoader(std::move(session), std::move(mainActor), std::move(background), decoded) {}

}  // namespace TalvoConsentSDK

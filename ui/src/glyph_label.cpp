#include "ui/glyph_label.h"

#include <QtQml/qqml.h>
#include <QFile>
#include <QLineF>
#include <QQuickWindow>
#include <QSGImageNode>

#include <cmath>
#include <mutex>

#include "ui/line_raster.h"
#include "ui/views.h"

namespace zellick::ui {

namespace {

// Shared by every label; the mutex covers render threads of several windows.
struct SharedRaster {
  std::mutex mutex;
  LineRaster raster;

  static QByteArray fontData() {
    QFile file(QString::fromLatin1(kBundledFontResource));
    if (!file.open(QIODevice::ReadOnly)) return {};
    return file.readAll();
  }
  SharedRaster() : raster(fontData()) {
    if (!raster.isValid())
      qWarning("labels: cannot read the font %s; labels stay blank", kBundledFontResource);
  }
};

SharedRaster& sharedRaster() {
  static SharedRaster shared;
  return shared;
}

double pixelSizeOf(const QFont& font) {
  if (font.pixelSize() > 0) return font.pixelSize();
  // Points at the usual 96 dots per inch, without asking the font database.
  return font.pointSizeF() > 0 ? font.pointSizeF() * 96.0 / 72.0 : 12;
}

}  // namespace

GlyphLabel::GlyphLabel(QQuickItem* parent) : QQuickItem(parent) { setFlag(ItemHasContents, true); }

void GlyphLabel::registerType() {
  static const int id = qmlRegisterType<GlyphLabel>("Zellick", 1, 0, "GlyphLabel");
  (void)id;
}

void GlyphLabel::setText(const QString& text) {
  if (text == text_) return;
  text_ = text;
  update();
  emit textChanged();
}

void GlyphLabel::setColor(const QColor& color) {
  if (color == color_) return;
  color_ = color;
  update();
  emit colorChanged();
}

void GlyphLabel::setFont(const QFont& font) {
  if (font == font_) return;
  font_ = font;
  update();
  emit fontChanged();
}

double GlyphLabel::deviceScale() const {
  const QQuickWindow* w = window();
  if (!w) return 0;
  return w->effectiveDevicePixelRatio() * QLineF(mapToScene({0, 0}), mapToScene({1, 0})).length();
}

void GlyphLabel::itemChange(ItemChange change, const ItemChangeData& data) {
  if (change == ItemSceneChange) {
    disconnect(frames_);
    // Once per frame, before the frame's items are synchronised; the scale is cheap to check.
    if (data.window)
      frames_ = connect(data.window, &QQuickWindow::afterAnimating, this, &GlyphLabel::checkScale);
  }
  QQuickItem::itemChange(change, data);
}

void GlyphLabel::checkScale() {
  if (!text_.isEmpty() && std::abs(deviceScale() - drawnScale_) > 1e-9) update();
}

QSGNode* GlyphLabel::updatePaintNode(QSGNode* old, UpdatePaintNodeData*) {
  QQuickWindow* w = window();
  if (!w || text_.isEmpty()) {
    delete old;
    drawnText_.clear();
    return nullptr;
  }
  const double scale = deviceScale();
  drawnScale_ = scale;
  if (!(scale > 0) || !std::isfinite(scale)) {
    delete old;
    return nullptr;
  }
  const double pixelSize = pixelSizeOf(font_) * scale;
  const QSizeF frame = size();
  if (old && text_ == drawnText_ && color_ == drawnColor_ && pixelSize == drawnPixelSize_ &&
      frame == drawnFrame_)
    return old;
  delete old;

  RasterLine line;
  {
    SharedRaster& shared = sharedRaster();
    std::lock_guard<std::mutex> lock(shared.mutex);
    line = shared.raster.render(text_, pixelSize, color_);
  }
  drawnText_ = text_;
  drawnColor_ = color_;
  drawnPixelSize_ = pixelSize;
  drawnFrame_ = frame;
  if (line.image.isNull()) return nullptr;

  // Centred like a one-line text: the pen's travel across, the face's line box down; snapped
  // to whole device pixels so the image lands one pixel on one pixel.
  const double penX = std::round((frame.width() * scale - line.advance) / 2);
  const double baseline =
      std::round((frame.height() * scale - line.ascent - line.descent) / 2 + line.ascent);
  const QRectF rect((penX - line.penX) / scale, (baseline - line.baselineY) / scale,
                    line.image.width() / scale, line.image.height() / scale);

  QSGImageNode* node = w->createImageNode();
  node->setTexture(w->createTextureFromImage(line.image));
  node->setOwnsTexture(true);
  node->setRect(rect);
  node->setFiltering(QSGTexture::Nearest);
  return node;
}

}  // namespace zellick::ui

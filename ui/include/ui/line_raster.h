#pragma once

#include <QByteArray>
#include <QColor>
#include <QImage>
#include <QString>

#include <memory>

namespace zellick::ui {

// One line of text drawn in one colour, in device pixels.
struct RasterLine {
  QImage image;        // premultiplied ARGB; null for empty text
  double advance = 0;  // the pen's travel: the width the line is centred by
  int penX = 0;        // column of the image where the pen starts
  int baselineY = 0;   // row of the image the glyphs stand on
  double ascent = 0;   // the face's line box above and below the baseline
  double descent = 0;
};

// Rasterises single lines of text with FreeType straight from a font file's bytes, without
// the system font configuration. Grey-level antialiasing of the unhinted outlines, the face's
// kerning table. One instance per thread: FreeType faces are not shared between threads.
class LineRaster {
 public:
  // isValid() is false when FreeType cannot read `fontData` as a font.
  explicit LineRaster(QByteArray fontData);
  LineRaster(const LineRaster&) = delete;
  LineRaster& operator=(const LineRaster&) = delete;
  ~LineRaster();

  bool isValid() const;

  // `text` at `pixelSize` device pixels (the em size). The image holds the line box and any
  // ink beyond it; characters the face lacks draw as its missing-glyph box. An empty result
  // for an invalid face, empty text or a size outside 1-1000 pixels.
  RasterLine render(const QString& text, double pixelSize, QColor color) const;

 private:
  struct Face;
  std::unique_ptr<Face> face_;
};

}  // namespace zellick::ui

#include "ui/line_raster.h"

#include <ft2build.h>
#include FT_FREETYPE_H

#include <algorithm>
#include <cmath>
#include <vector>

namespace zellick::ui {

struct LineRaster::Face {
  QByteArray data;  // FreeType reads from it for as long as the face lives
  FT_Library library = nullptr;
  FT_Face face = nullptr;

  ~Face() {
    if (face) FT_Done_Face(face);
    if (library) FT_Done_FreeType(library);
  }
};

namespace {

// A rendered glyph's coverage, placed relative to the pen's start on the baseline.
struct Coverage {
  int left = 0, top = 0, width = 0, rows = 0;
  std::vector<unsigned char> alpha;
};

}  // namespace

LineRaster::LineRaster(QByteArray fontData) : face_(std::make_unique<Face>()) {
  face_->data = std::move(fontData);
  if (FT_Init_FreeType(&face_->library) != 0) {
    face_->library = nullptr;
    return;
  }
  if (FT_New_Memory_Face(face_->library, reinterpret_cast<const FT_Byte*>(face_->data.constData()),
                         static_cast<FT_Long>(face_->data.size()), 0, &face_->face) != 0 ||
      !FT_IS_SCALABLE(face_->face))
    face_->face = nullptr;
}

LineRaster::~LineRaster() = default;

bool LineRaster::isValid() const { return face_->face != nullptr; }

RasterLine LineRaster::render(const QString& text, double pixelSize, QColor color) const {
  RasterLine line;
  FT_Face face = face_->face;
  if (!face || text.isEmpty() || !(pixelSize >= 1 && pixelSize <= 1000)) return line;
  if (FT_Set_Char_Size(face, 0, static_cast<FT_F26Dot6>(std::lround(pixelSize * 64)), 72, 72) != 0)
    return line;
  const FT_Size_Metrics& metrics = face->size->metrics;
  line.ascent = metrics.ascender / 64.0;
  line.descent = -metrics.descender / 64.0;

  // Pen positions in 1/64 pixel; each glyph lands on the nearest whole pixel so its stems
  // stay crisp.
  std::vector<Coverage> glyphs;
  FT_Pos pen = 0;
  FT_UInt previous = 0;
  const bool kerning = FT_HAS_KERNING(face);
  for (const char32_t c : text.toUcs4()) {
    const FT_UInt index = FT_Get_Char_Index(face, c);
    if (kerning && previous && index) {
      FT_Vector delta{};
      if (FT_Get_Kerning(face, previous, index, FT_KERNING_UNFITTED, &delta) == 0) pen += delta.x;
    }
    previous = index;
    if (FT_Load_Glyph(face, index, FT_LOAD_NO_HINTING) != 0) continue;
    FT_GlyphSlot slot = face->glyph;
    if (FT_Render_Glyph(slot, FT_RENDER_MODE_NORMAL) == 0 && slot->bitmap.width > 0 &&
        slot->bitmap.rows > 0 && slot->bitmap.pixel_mode == FT_PIXEL_MODE_GRAY) {
      Coverage g;
      g.left = static_cast<int>((pen + 32) >> 6) + slot->bitmap_left;
      g.top = slot->bitmap_top;
      g.width = static_cast<int>(slot->bitmap.width);
      g.rows = static_cast<int>(slot->bitmap.rows);
      g.alpha.resize(static_cast<size_t>(g.width) * g.rows);
      for (int y = 0; y < g.rows; ++y)
        std::copy_n(slot->bitmap.buffer + y * slot->bitmap.pitch, g.width,
                    g.alpha.data() + y * g.width);
      glyphs.push_back(std::move(g));
    }
    // The unhinted advance: rounding each glyph's would add up along the line.
    pen += (slot->linearHoriAdvance + 512) >> 10;
  }
  line.advance = pen / 64.0;

  // The image spans the line box and whatever ink reaches past it.
  int left = 0, right = static_cast<int>(std::ceil(line.advance));
  int top = static_cast<int>(std::ceil(line.ascent)),
      bottom = -static_cast<int>(std::ceil(line.descent));
  for (const Coverage& g : glyphs) {
    left = std::min(left, g.left);
    right = std::max(right, g.left + g.width);
    top = std::max(top, g.top);
    bottom = std::min(bottom, g.top - g.rows);
  }
  if (right <= left || top <= bottom) return line;
  QImage image(right - left, top - bottom, QImage::Format_ARGB32_Premultiplied);
  if (image.isNull()) return line;
  image.fill(Qt::transparent);
  const QRgb rgb = color.rgba();
  for (const Coverage& g : glyphs) {
    for (int y = 0; y < g.rows; ++y) {
      auto* row = reinterpret_cast<QRgb*>(image.scanLine(top - g.top + y)) + (g.left - left);
      for (int x = 0; x < g.width; ++x) {
        const int a = g.alpha[static_cast<size_t>(y) * g.width + x] * qAlpha(rgb) / 255;
        if (a == 0) continue;
        // Source over what an overlapping neighbour already drew.
        const QRgb below = row[x];
        const int keep = 255 - a;
        row[x] =
            qRgba(qRed(rgb) * a / 255 + qRed(below) * keep / 255,
                  qGreen(rgb) * a / 255 + qGreen(below) * keep / 255,
                  qBlue(rgb) * a / 255 + qBlue(below) * keep / 255, a + qAlpha(below) * keep / 255);
      }
    }
  }
  line.image = std::move(image);
  line.penX = -left;
  line.baselineY = top;
  return line;
}

}  // namespace zellick::ui

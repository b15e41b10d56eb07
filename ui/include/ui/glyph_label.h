#pragma once

#include <QColor>
#include <QFont>
#include <QQuickItem>
#include <QString>

namespace zellick::ui {

// A one-line label centred in its frame, drawn with the bundled face through FreeType rather
// than Qt's text stack: the first frame then never waits for the system font configuration.
// The text may overflow the frame on both sides, as a centred text does. Only the font's pixel
// size is used; the face is always the bundled one. In QML: `import Zellick` and `GlyphLabel`.
// It earns its place: with the two labels as plain QML Text (the bundled font registered
// before the screen loads), the first frame came 3.8-4.1 ms later (median of 31 starts, three
// runs: GlyphLabel 24.4-24.7 ms, Text 28.2-28.8 ms, minimal window 19.2-19.7 ms), and still
// 2.7-3.1 ms later with the whole font set-up done before the screen.
class GlyphLabel : public QQuickItem {
  Q_OBJECT
  Q_PROPERTY(QString text READ text WRITE setText NOTIFY textChanged)
  Q_PROPERTY(QColor color READ color WRITE setColor NOTIFY colorChanged)
  Q_PROPERTY(QFont font READ font WRITE setFont NOTIFY fontChanged)

 public:
  explicit GlyphLabel(QQuickItem* parent = nullptr);

  // Makes the type available to QML; safe to call more than once.
  static void registerType();

  QString text() const { return text_; }
  void setText(const QString& text);
  QColor color() const { return color_; }
  void setColor(const QColor& color);
  QFont font() const { return font_; }
  void setFont(const QFont& font);

 signals:
  void textChanged();
  void colorChanged();
  void fontChanged();

 protected:
  QSGNode* updatePaintNode(QSGNode* old, UpdatePaintNodeData*) override;
  void itemChange(ItemChange change, const ItemChangeData& data) override;

 private:
  // Device pixels per unit of this item: the window's ratio times any scaling above it.
  double deviceScale() const;
  // A window or ancestor rescaled since the last drawing: draw again at the new resolution.
  void checkScale();

  QMetaObject::Connection frames_;
  QString text_;
  QColor color_{Qt::black};
  QFont font_;
  // What the node on screen shows, so an unchanged label is not drawn again.
  QString drawnText_;
  QColor drawnColor_;
  double drawnPixelSize_ = 0;
  double drawnScale_ = 0;
  QSizeF drawnFrame_;
};

}  // namespace zellick::ui

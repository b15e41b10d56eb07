#include "ui/views.h"

#include <QEasingCurve>
#include <QFile>
#include <QFontDatabase>
#include <QGuiApplication>
#include <QRectF>
#include <QVariantAnimation>

#include <cmath>

#include "ui/table.h"

namespace zellick::ui {

namespace {

QRectF toQRect(const Rect& r) { return {r.x, r.y, r.w, r.h}; }
Rect toRect(const QRectF& r) { return {r.x(), r.y(), r.width(), r.height()}; }

// The platform's default animation curve: ease in, ease out.
QEasingCurve easeInEaseOut() {
  QEasingCurve curve(QEasingCurve::BezierSpline);
  curve.addCubicBezierSegment(QPointF(0.42, 0.0), QPointF(0.58, 1.0), QPointF(1.0, 1.0));
  return curve;
}

}  // namespace

QUrl artworkUrl(const std::string& name) {
  QString base = QString::fromStdString(name).trimmed();
  for (const char* suffix : {".png", ".svg"})
    if (base.endsWith(QLatin1String(suffix), Qt::CaseInsensitive)) base.chop(4);
  if (base.endsWith(QLatin1String("@2x"))) base.chop(3);
  if (base.isEmpty() || base.contains(QLatin1Char('/')) || base.contains(QLatin1String("..")))
    return {};
  const QString path = QStringLiteral(":/images/%1.svg").arg(base);
  if (!QFile::exists(path)) return {};
  return QUrl(QStringLiteral("image://art/") + base);
}

Rect frameInRoot(const QQuickItem* item, const QQuickItem* root) {
  if (!item || !root) return {};
  const QPointF origin = item->mapToItem(root, QPointF(0, 0));
  return {origin.x(), origin.y(), item->width(), item->height()};
}

void placeInRoot(QQuickItem* item, const QQuickItem* root, const Rect& frame) {
  if (!item || !root) return;
  QPointF origin(frame.x, frame.y);
  if (QQuickItem* parent = item->parentItem()) origin = parent->mapFromItem(root, origin);
  item->setPosition(origin);
  item->setSize(QSizeF(frame.w, frame.h));
}

QColor toQColor(Color color) {
  switch (color) {
    case Color::White: return QColor(255, 255, 255);
    case Color::Gray: return QColor(128, 128, 128);
    case Color::Black: return QColor(0, 0, 0);
    case Color::Clear: return QColor(0, 0, 0, 0);
  }
  return QColor(128, 128, 128);
}

QFont labelFont(const Font& font, const FontAliases& aliases, Log& log) {
  QFont f(QString::fromLatin1(kBundledFamily));
  f.setBold(true);
  const auto alias = aliases.find(font.name);
  if (alias != aliases.end()) {
    f = QFont(QString::fromStdString(alias->second));
    f.setBold(true);
  } else if (font.name == kBoldSystemFontName) {
    f = QGuiApplication::font();
    f.setBold(true);
  } else if (!font.name.empty()) {
    const QString family = QString::fromStdString(font.name);
    if (QFontDatabase::hasFamily(family)) {
      f = QFont(family);
    } else {
      log.line("font " + font.name + " not available; using " + kBundledFamily);
    }
  }
  double size = font.size;
  if (!std::isfinite(size) || size <= 0 || size > 500) {
    log.line(format("font size %g not usable; using 17", font.size));
    size = 17;
  }
  // Logical points are the QML scene's units, scaled with the screen.
  f.setPixelSize(std::max(1, static_cast<int>(std::lround(size))));
  return f;
}

// --- image views ---

QtImageView::QtImageView(QQuickItem* item, QQuickItem* root, int tag, Log& log)
    : QtItemView<ImageView>(item, root, tag, false, log) {}

QtImageView::~QtImageView() {
  if (animation_) animation_->stop();
}

// Buttons and image views show artwork the same way: the item keeps the name and its URL.
static void showArtwork(QQuickItem* item, const std::string& name, Log& log) {
  const QUrl url = artworkUrl(name);
  if (url.isEmpty()) log.line("no artwork named \"" + name + "\"");
  if (item) item->setProperty("source", url);
}

void QtImageView::setFrame(const Rect& frame) {
  if (animation_) animation_->stop();
  QtItemView<ImageView>::setFrame(frame);
}

void QtImageView::setImage(const std::string& name) {
  image_ = name;
  showArtwork(item_, name, log_);
}

void QtImageView::animateFrame(const Rect& to, double seconds) {
  const Rect target = sanitized(to);
  if (!std::isfinite(seconds) || seconds <= 0 || !item_ || !root_) {
    setFrame(target);
    return;
  }
  if (!animation_) {
    animation_ = std::make_unique<QVariantAnimation>();
    animation_->setEasingCurve(easeInEaseOut());
    QObject::connect(animation_.get(), &QVariantAnimation::valueChanged, [this](const QVariant& v) {
      if (item_ && root_) placeInRoot(item_, root_, toRect(v.toRectF()));
    });
  }
  // Retarget from where the wheel is drawn now, not from the old target.
  const Rect from = frameInRoot(item_, root_);
  animation_->stop();
  frame_ = target;
  animation_->setDuration(static_cast<int>(std::lround(std::min(seconds, 3600.0) * 1000.0)));
  animation_->setStartValue(toQRect(from));
  animation_->setEndValue(toQRect(target));
  animation_->start();
}

bool QtImageView::isAnimating() const {
  return animation_ && animation_->state() == QAbstractAnimation::Running;
}

// --- buttons ---

QtButton::QtButton(QQuickItem* item, QQuickItem* root, int tag, Log& log)
    : QtItemView<Button>(item, root, tag, true, log) {}

void QtButton::setImage(const std::string& name) {
  image_ = name;
  showArtwork(item_, name, log_);
}

void QtButton::setHighlightedImage(const std::string& name) {
  if (item_) item_->setProperty("pressedSource", name.empty() ? QUrl() : artworkUrl(name));
}

void QtButton::setHighlighted(bool highlighted) {
  highlighted_ = highlighted;
  if (item_) item_->setProperty("highlighted", highlighted);
}

// --- labels ---

QtLabel::QtLabel(QQuickItem* item, QQuickItem* root, int tag, const FontAliases& fonts, Log& log)
    : QtItemView<Label>(item, root, tag, true, log), fonts_(fonts) {
  if (item) text_ = item->property("text").toString().toStdString();
}

void QtLabel::setText(const std::string& text) {
  text_ = text;
  if (item_) item_->setProperty("text", QString::fromStdString(text));
}

void QtLabel::setTextColor(Color color) {
  color_ = color;
  if (item_) item_->setProperty("color", toQColor(color));
}

void QtLabel::setFont(const Font& font) {
  font_ = font;
  if (item_) item_->setProperty("font", labelFont(font, fonts_, log_));
}

// --- the root view ---

QtRootView::QtRootView(QQuickItem* root, Log& log) : root_(root), log_(log) {}

QtRootView::~QtRootView() = default;

Rect QtRootView::bounds() const {
  if (!root_) return {};
  return {0, 0, root_->width(), root_->height()};
}

void QtRootView::setFrame(const Rect&) { log_.line("the root view keeps its frame"); }

void QtRootView::setBackgroundColor(Color color) {
  if (root_) root_->setProperty("backgroundColor", toQColor(color));
}

NavigationBar* QtRootView::addNavigationBar(const Rect& frame) {
  if (!root_) return nullptr;
  QVariant made;
  const bool ok = root_->metaObject()->indexOfMethod(
                      "addNavigationBar(QVariant,QVariant,QVariant,QVariant)") >= 0 &&
                  QMetaObject::invokeMethod(root_, "addNavigationBar", Q_RETURN_ARG(QVariant, made),
                                            Q_ARG(QVariant, frame.x), Q_ARG(QVariant, frame.y),
                                            Q_ARG(QVariant, frame.w), Q_ARG(QVariant, frame.h));
  auto* item = qobject_cast<QQuickItem*>(made.value<QObject*>());
  if (!ok || !item) {
    log_.line("the screen has no navigation bar");
    return nullptr;
  }
  bars_.push_back(std::make_unique<QtNavigationBar>(item, root_, log_));
  return bars_.back().get();
}

void QtRootView::addColorView(const Rect& frame, Color color) {
  if (!root_) return;
  const bool ok = QMetaObject::invokeMethod(
      root_, "addColorView", Q_ARG(QVariant, frame.x), Q_ARG(QVariant, frame.y),
      Q_ARG(QVariant, frame.w), Q_ARG(QVariant, frame.h), Q_ARG(QVariant, toQColor(color)));
  if (!ok) log_.line("the screen cannot add a colour view");
}

}  // namespace zellick::ui

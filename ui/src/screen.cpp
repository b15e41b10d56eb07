#include "ui/screen.h"

#include "ui/screen_reader.h"

#include "ui/artwork.h"
#include "ui/first_frame.h"
#include "ui/glyph_label.h"

#include <QFontDatabase>
#include <QGuiApplication>
#include <QMouseEvent>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QQuickItem>
#include <QQuickWindow>
#include <QStyleHints>
#include <QTouchEvent>

namespace zellick::ui {

namespace {

// How far apart, in logical points, two taps of one series may be.
constexpr double kTapSlop = 10;

bool contains(const Rect& r, QPointF p) {
  return p.x() >= r.x && p.x() < r.x + r.w && p.y() >= r.y && p.y() < r.y + r.h;
}

bool shownOnScreen(const QQuickItem* item) {
  for (const QQuickItem* i = item; i; i = i->parentItem())
    if (!i->isVisible()) return false;
  return item != nullptr;
}

}  // namespace

QStringList registerBundledFonts(Log& log) {
  const QString path = QString::fromLatin1(kBundledFontResource);
  const int id = QFontDatabase::addApplicationFont(path);
  if (id < 0) {
    log.line("could not load the label font " + path.toStdString() + "; using the default font");
    return {};
  }
  return QFontDatabase::applicationFontFamilies(id);
}

QtScreen::QtScreen(Log& log, QObject* parent)
    : QObject(parent),
      log_(log),
      taps_(QGuiApplication::styleHints()->mouseDoubleClickInterval(), kTapSlop) {}

QtScreen::~QtScreen() {
  if (window_) window_->removeEventFilter(this);
  // Views and the presenter go before the items they point at.
  alerts_.reset();
  controls_.clear();
  rootView_.reset();
  screen_.reset();
  engine_.reset();
}

bool QtScreen::load(const QUrl& url, const QVariantMap& windowProperties) {
  GlyphLabel::registerType();
  // A plain engine: the application engine's translations, file selectors and quit wiring
  // are not used here and cost start-up time.
  engine_ = std::make_unique<QQmlEngine>();
  engine_->addImageProvider(QStringLiteral("art"),
                            new ArtworkProvider(artworkCacheDir_, shippedArtworkDirs_));
  QQmlComponent component(engine_.get(), url);
  if (component.isReady()) screen_.reset(component.createWithInitialProperties(windowProperties));
  if (!screen_) {
    log_.line("could not load the screen " + url.toString().toStdString() + ": " +
              component.errorString().trimmed().toStdString());
    return false;
  }
  window_ = qobject_cast<QQuickWindow*>(screen_.get());
  if (!window_) {
    log_.line("the screen " + url.toString().toStdString() + " is not a window");
    return false;
  }
  root_ = findItem(window_->contentItem(), QStringLiteral("RootView"));
  if (!root_) {
    log_.line("the screen has no RootView item");
    return false;
  }
  rootView_ = std::make_unique<QtRootView>(root_, log_);

  questionLoader_ = findItem(root_, QStringLiteral("QuestionLoader"));
  if (!questionLoader_) log_.line("the screen has no question overlay");
  alerts_ = std::make_unique<QtAlertPresenter>([this] { return questionOverlay(); }, log_);
  alerts_->setBeforeShow(beforeQuestion_);

  window_->installEventFilter(this);
  // What the first frame does without (the pressed pictures) loads once it is out.
  afterFirstFrame(window_, this, [this] {
    if (root_) root_->setProperty("firstFrameShown", true);
  });
  return true;
}

Rect QtScreen::bounds() const { return rootView_ ? rootView_->bounds() : Rect{}; }

bool QtScreen::bind(const std::vector<ControlSpec>& controls) {
  if (!root_ || !controls_.bind(root_, controls)) return false;
  if (!readers_) {
    readers_ = new ScreenReaderNodes(*engine_, [this] {
      std::vector<QQuickItem*> items;
      for (const auto& [name, b] : controls_.buttons()) items.push_back(b->item());
      for (const auto& [name, l] : controls_.labels()) items.push_back(l->item());
      for (QQuickItem* clip : controls_.clipItems()) items.push_back(clip);
      return items;
    });
  }
  readers_->refresh();
  // A screen reader's press is a tap.
  for (const auto& [name, b] : controls_.buttons()) {
    if (b->item() && b->item()->metaObject()->indexOfSignal("accessiblePressed()") >= 0)
      connect(b->item(), SIGNAL(accessiblePressed()), this, SLOT(onAccessiblePress()),
              Qt::UniqueConnection);
  }
  return true;
}

void QtScreen::bindButton(const std::string& name, std::function<void()> press,
                          std::function<void()> release) {
  if (!controls_.buttons().count(name))
    log_.line("binding for missing button " + name + " ignored");
  bindings_[name] = Binding{std::move(press), std::move(release)};
}

void QtScreen::setTouchHandlers(TouchHandler began, TouchHandler ended) {
  began_ = std::move(began);
  ended_ = std::move(ended);
}

void QtScreen::setAccessibleText(const std::string& name, const std::string& text) {
  if (QQuickItem* item = controls_.item(name))
    item->setProperty("accessibleText", QString::fromStdString(text));
}

void QtScreen::setAccessibleChecked(const std::string& name, bool checked) {
  if (QQuickItem* item = controls_.item(name)) {
    item->setProperty("accessibleCheckable", true);
    item->setProperty("accessibleChecked", checked);
  }
}

void QtScreen::onAccessiblePress() {
  const std::string name = sender() ? sender()->objectName().toStdString() : std::string();
  auto it = controls_.buttons().find(name);
  if (it == controls_.buttons().end() || tracking_ || touchesGoAbove()) return;
  QtButton* b = it->second.get();
  if (!b->userInteractionEnabled()) return;
  auto binding = bindings_.find(name);
  if (binding == bindings_.end()) return;
  if (binding->second.press) binding->second.press();
  if (binding->second.release) binding->second.release();
}

namespace {

// The name a key event goes by among the screen's key names; empty for any other key.
std::string keyName(const QKeyEvent& e) {
  static const std::pair<int, const char*> named[] = {
      {Qt::Key_Space, "Space"},         {Qt::Key_Return, "Return"},
      {Qt::Key_Enter, "Return"},        {Qt::Key_Escape, "Escape"},
      {Qt::Key_Backspace, "Backspace"}, {Qt::Key_Up, "Up"},
      {Qt::Key_Down, "Down"},           {Qt::Key_Plus, "Plus"},
      {Qt::Key_Minus, "Minus"},         {Qt::Key_F1, "F1"},
      {Qt::Key_VolumeUp, "VolumeUp"},   {Qt::Key_VolumeDown, "VolumeDown"}};
  for (const auto& [key, name] : named)
    if (e.key() == key) return name;
  if (e.key() >= Qt::Key_A && e.key() <= Qt::Key_Z) {
    const std::string letter(1, static_cast<char>('A' + (e.key() - Qt::Key_A)));
    return (e.modifiers() & Qt::ShiftModifier ? "Shift+" : "") + letter;
  }
  return {};
}

}  // namespace

bool QtScreen::key(const QKeyEvent& e) {
  const std::string name = keyName(e);
  if (name.empty()) return false;
  const bool down = e.type() == QEvent::KeyPress;
  if (e.isAutoRepeat()) return true;  // a key held down is one press
  if (!down) {
    // A held button is released whatever came up meanwhile, as a finger's would be.
    auto held = heldKeys_.find(name);
    if (held == heldKeys_.end()) return questionShown();
    QtButton* b = held->second;
    heldKeys_.erase(held);
    b->setHighlighted(false);
    auto binding = bindings_.find(b->name());
    if (binding != bindings_.end() && binding->second.release) binding->second.release();
    return true;
  }
  if (covered() && !questionShown()) return keysAbove_ && keysAbove_(name, true);
  if (questionShown()) {
    if (const AlertView* question = alerts_->current())
      if (auto index = questionButtonForKey(*question, name)) alerts_->answer(*index);
    return true;
  }
  for (const KeyBinding& k : keys_) {
    if (k.key != name) continue;
    if (k.tapCount > 0) {
      const View* view = nullptr;
      if (auto it = controls_.labels().find(k.control); it != controls_.labels().end())
        view = it->second.get();
      if (auto it = controls_.images().find(k.control); it != controls_.images().end())
        view = it->second.get();
      if (view && !tracking_) {
        if (began_) began_(*view, k.tapCount);
        if (ended_) ended_(*view, k.tapCount);
      }
      return true;
    }
    auto it = controls_.buttons().find(k.control);
    // Refused where a finger would be: a locked button, or one a finger already holds.
    if (it == controls_.buttons().end() || !it->second->userInteractionEnabled() || tracking_)
      return true;
    for (const auto& [other, button] : heldKeys_)
      if (button == it->second.get()) return true;
    QtButton* b = it->second.get();
    heldKeys_[name] = b;
    b->setHighlighted(true);
    auto binding = bindings_.find(b->name());
    if (binding != bindings_.end() && binding->second.press) binding->second.press();
    return true;
  }
  return false;
}

QPointF QtScreen::toScreen(QPointF windowPos) const {
  return root_ ? root_->mapFromScene(windowPos) : windowPos;
}

QPointF QtScreen::toWindow(QPointF screenPoint) const {
  return root_ ? root_->mapToScene(screenPoint) : screenPoint;
}

QQuickItem* QtScreen::questionOverlay() {
  if (overlay_ || !questionLoader_) return overlay_;
  questionLoader_->setProperty("active", true);
  overlay_ = qobject_cast<QQuickItem*>(questionLoader_->property("item").value<QObject*>());
  if (!overlay_) {
    log_.line("the question overlay could not be built");
    questionLoader_ = nullptr;
  }
  return overlay_;
}

bool QtScreen::questionShown() const { return overlay_ && overlay_->property("shown").toBool(); }

const View* QtScreen::hitTest(QPointF p, QtButton** button) const {
  *button = nullptr;
  // Topmost first: labels lie above the controls, the controls above the body and wheels.
  // A view that ignores touches lets them through to what lies beneath.
  for (const auto& [name, label] : controls_.labels())
    if (label->userInteractionEnabled() && shownOnScreen(label->item()) &&
        contains(label->frame(), p))
      return label.get();
  for (const auto& [name, b] : controls_.buttons())
    if (b->userInteractionEnabled() && shownOnScreen(b->item()) && contains(b->frame(), p)) {
      *button = b.get();
      return b.get();
    }
  for (const auto& [name, image] : controls_.images())
    if (image->userInteractionEnabled() && shownOnScreen(image->item()) &&
        contains(image->frame(), p))
      return image.get();
  return rootView_.get();
}

void QtScreen::touch(Phase phase, QPointF windowPos, long long timeMs) {
  const QPointF p = toScreen(windowPos);
  if (phase == Phase::Begin) {
    QtButton* b = nullptr;
    const View* view = hitTest(p, &b);
    const int count = taps_.press(timeMs, Point{p.x(), p.y()});
    tracking_ = true;
    if (b) {
      pressedButton_ = b;
      b->setHighlighted(true);
      auto it = bindings_.find(b->name());
      if (it != bindings_.end() && it->second.press) it->second.press();
    } else {
      touchedView_ = view;
      touchTapCount_ = count;
      if (began_) began_(*view, count);
    }
    return;
  }
  if (!tracking_) return;
  if (pressedButton_) {
    QtButton* b = pressedButton_;
    const bool inside = contains(b->frame(), p);
    if (phase == Phase::Move) {
      b->setHighlighted(inside);
      return;
    }
    tracking_ = false;
    pressedButton_ = nullptr;
    b->setHighlighted(false);
    auto it = bindings_.find(b->name());
    if (it == bindings_.end() || !it->second.release) return;
    // A counting button's press locked other buttons: its release must always run.
    const bool counting = static_cast<bool>(it->second.press);
    if (counting || (phase == Phase::End && inside)) it->second.release();
    return;
  }
  if (phase == Phase::Move) return;
  tracking_ = false;
  const View* view = touchedView_;
  touchedView_ = nullptr;
  if (phase == Phase::End && ended_ && view) ended_(*view, touchTapCount_);
}

bool QtScreen::eventFilter(QObject* watched, QEvent* event) {
  if (watched != window_) return QObject::eventFilter(watched, event);
  switch (event->type()) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonRelease:
    case QEvent::MouseMove:
    case QEvent::MouseButtonDblClick: {
      auto* e = static_cast<QMouseEvent*>(event);
      // Touches come as touch events; their mouse echo would count twice.
      if (e->device() && e->device()->type() == QInputDevice::DeviceType::TouchScreen) return true;
      if (event->type() == QEvent::MouseButtonDblClick) return !touchesGoAbove() || tracking_;
      if (event->type() == QEvent::MouseButtonPress) {
        if (e->button() != Qt::LeftButton || tracking_) return tracking_;
        if (touchesGoAbove()) return false;  // the question or the screen above takes it
        touch(Phase::Begin, e->scenePosition(), static_cast<long long>(e->timestamp()));
        return true;
      }
      if (!tracking_) return false;
      if (event->type() == QEvent::MouseButtonRelease && e->button() != Qt::LeftButton) return true;
      touch(event->type() == QEvent::MouseMove ? Phase::Move : Phase::End, e->scenePosition(),
            static_cast<long long>(e->timestamp()));
      return true;
    }
    case QEvent::TouchBegin:
    case QEvent::TouchUpdate:
    case QEvent::TouchEnd:
    case QEvent::TouchCancel: {
      auto* e = static_cast<QTouchEvent*>(event);
      const long long t = static_cast<long long>(e->timestamp());
      if (event->type() == QEvent::TouchCancel) {
        if (tracking_) touch(Phase::Cancel, {}, t);
        touchPointId_ = -1;
        return true;
      }
      if (!tracking_ && touchesGoAbove()) return false;
      // One finger at a time: the first one down is followed, later ones are ignored.
      for (const QEventPoint& point : e->points()) {
        if (point.state() == QEventPoint::Pressed && !tracking_) {
          touchPointId_ = point.id();
          touch(Phase::Begin, point.scenePosition(), t);
        } else if (tracking_ && point.id() == touchPointId_) {
          if (point.state() == QEventPoint::Released) {
            touch(Phase::End, point.scenePosition(), t);
            touchPointId_ = -1;
          } else if (point.state() == QEventPoint::Updated) {
            touch(Phase::Move, point.scenePosition(), t);
          }
        }
      }
      event->accept();
      return true;
    }
    case QEvent::KeyPress:
    case QEvent::KeyRelease: return key(*static_cast<QKeyEvent*>(event));
    default: return QObject::eventFilter(watched, event);
  }
}

void ScreenWindow::makeKeyAndVisible() {
  if (root_ && !loaded_) {
    loaded_ = true;
    root_->viewDidLoad();
  }
  if (root_) root_->viewWillAppear(false);
  if (QQuickWindow* w = screen_.window()) {
    w->show();
    w->raise();
    w->requestActivate();
  }
}

}  // namespace zellick::ui

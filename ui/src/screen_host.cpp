#include "ui/screen_host.h"

#include <QEasingCurve>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QTimer>
#include <QVariantAnimation>

#include <algorithm>
#include <cmath>

namespace zellick::ui {

namespace {

// Above the screen's own controls and colour views, below its questions (z 1000): a question
// asked while another screen shows must still be seen and answered.
constexpr double kOverlayZ = 900;
constexpr double kSlideSeconds = 0.3;

template <class T>
void erase(std::vector<T*>& list, T* value) {
  list.erase(std::remove(list.begin(), list.end(), value), list.end());
}

}  // namespace

// --- the screens ---

QtOverlayScreen::QtOverlayScreen(QQuickItem* item, QtScreenHost& host, QtAlertPresenter& alerts,
                                 const FontAliases& fonts, Log& log)
    : host_(&host),
      item_(item),
      alerts_(alerts),
      log_(log),
      rootView_(item, log),
      controls_(fonts, log) {
  host.loaded_.push_back(this);
}

QtOverlayScreen::~QtOverlayScreen() {
  if (slide_) slide_->stop();
  if (host_) {
    if (covering_) host_->base_.uncover();
    erase(host_->loaded_, this);
    erase(host_->shown_, this);
  }
  // The views let go of their items before the items go.
  controls_.clear();
  delete item_.data();
}

void QtOverlayScreen::bindButton(const std::string& name, std::function<void()>,
                                 std::function<void()>) {
  log_.line("button " + name + " of a screen shown over another takes no touches");
}

// --- the host ---

void QtOverlayScreen::setAccessibleText(const std::string& name, const std::string& text) {
  if (QQuickItem* item = controls_.item(name))
    item->setProperty("accessibleText", QString::fromStdString(text));
}

void QtOverlayScreen::setAccessibleChecked(const std::string& name, bool checked) {
  if (QQuickItem* item = controls_.item(name)) item->setProperty("accessibleChecked", checked);
}

bool QtOverlayScreen::keyDown(const std::string& key) {
  if (key == "Escape") {
    QtNavigationBar* bar = rootView_.navigationBar();
    if (!bar || !bar->hasBackButton()) return false;
    bar->backTapped();
    return true;
  }
  if (controls_.tables().empty()) return false;
  QtTableView& table = *controls_.tables().begin()->second;
  if (key == "Up") return table.moveCurrent(-1);
  if (key == "Down") return table.moveCurrent(1);
  if (key == "Return") return table.tapCurrent();
  return false;
}

QtScreenHost::QtScreenHost(QtScreen& base, InterfaceFiles files, Log& log)
    : base_(base), files_(std::move(files)), log_(log) {
  // Keys the screen beneath gets while covered go to the screen in front.
  base_.setKeysAbove([this](const std::string& key, bool down) {
    return down && !shown_.empty() && shown_.back()->keyDown(key);
  });
}

QtScreenHost::~QtScreenHost() {
  base_.setKeysAbove(nullptr);
  // Screens that outlive the host keep their items but no longer report back.
  for (QtOverlayScreen* s : loaded_) s->host_ = nullptr;
}

void QtScreenHost::prepare(const std::string& nibName) {
  const QUrl url = files_ ? files_(nibName) : QUrl();
  if (url.isEmpty() || !base_.engine() || prepared_.count(url)) return;
  auto& component = prepared_[url] = std::make_unique<QQmlComponent>(base_.engine());
  connect(component.get(), &QQmlComponent::statusChanged, this,
          [this, url](QQmlComponent::Status s) {
            if (s == QQmlComponent::Error)
              log_.line("could not prepare the screen " + url.toString().toStdString() + ": " +
                        prepared_[url]->errorString().trimmed().toStdString());
          });
  component->loadUrl(url, QQmlComponent::Asynchronous);
}

std::unique_ptr<Screen> QtScreenHost::loadScreen(const std::string& nibName,
                                                 const std::vector<ControlSpec>& controls) {
  const QUrl url = files_ ? files_(nibName) : QUrl();
  QQuickItem* root = base_.rootItem();
  if (url.isEmpty() || !root || !base_.engine()) {
    log_.line("no interface file for the screen " + nibName);
    return nullptr;
  }
  if (beforeLoad_) beforeLoad_();
  const Rect bounds = base_.bounds();
  // One prepared ahead, once compiled; else compiled here (the engine keeps what it compiled).
  auto prepared = prepared_.find(url);
  std::unique_ptr<QQmlComponent> own;
  QQmlComponent* component =
      prepared != prepared_.end() && prepared->second->isReady() ? prepared->second.get() : nullptr;
  if (!component) {
    own = std::make_unique<QQmlComponent>(base_.engine(), url);
    component = own.get();
  }
  std::unique_ptr<QObject> made;
  if (component->isReady())
    made.reset(component->createWithInitialProperties(
        {{"visible", false}, {"width", bounds.w}, {"height", bounds.h}}));
  auto* item = qobject_cast<QQuickItem*>(made.get());
  if (!item) {
    log_.line(
        "could not load the screen " + url.toString().toStdString() + ": " +
        (made ? std::string("not an item") : component->errorString().trimmed().toStdString()));
    return nullptr;
  }
  made.release();
  item->setParentItem(root);
  item->setZ(kOverlayZ);
  auto screen =
      std::make_unique<QtOverlayScreen>(item, *this, base_.alerts(), base_.fontAliases(), log_);
  if (!screen->bind(controls)) {
    log_.line("the screen " + nibName + " is incomplete");
    return nullptr;
  }
  return screen;
}

QtOverlayScreen* QtScreenHost::ours(Screen& screen) {
  auto* s = dynamic_cast<QtOverlayScreen*>(&screen);
  if (s && std::find(loaded_.begin(), loaded_.end(), s) != loaded_.end() && s->item_) return s;
  log_.line("asked to show or hide a screen this host did not load");
  return nullptr;
}

void QtScreenHost::show(Screen& screen, bool animated) {
  QtOverlayScreen* s = ours(screen);
  if (!s) return;
  QQuickItem* item = s->item_;
  item->setEnabled(true);
  item->setVisible(true);
  if (!s->covering_) {
    s->covering_ = true;
    base_.cover();
  }
  erase(shown_, s);
  shown_.push_back(s);
  if (animated) {
    item->setY(item->height());
    slide(*s, 0, kSlideSeconds, {});
  } else {
    if (s->slide_) s->slide_->stop();
    item->setY(0);
  }
}

void QtScreenHost::hide(Screen& screen, bool animated, std::function<void()> gone) {
  // `gone` always comes later, from the event loop, and never once the host is gone.
  auto later = [this, gone = std::move(gone)] {
    QTimer::singleShot(0, this, [gone] {
      if (gone) gone();
    });
  };
  QtOverlayScreen* s = ours(screen);
  if (!s) {
    later();
    return;
  }
  erase(shown_, s);
  s->item_->setEnabled(false);  // no more touches while it goes
  if (!animated) {
    offScreen(*s);
    later();
    return;
  }
  slide(*s, s->item_->height(), kSlideSeconds, [this, s, later] {
    offScreen(*s);
    later();
  });
}

void QtScreenHost::slide(QtOverlayScreen& s, double toY, double seconds,
                         std::function<void()> done) {
  if (!s.slide_) {
    s.slide_ = std::make_unique<QVariantAnimation>();
    QPointer<QQuickItem> item = s.item_;
    connect(s.slide_.get(), &QVariantAnimation::valueChanged, s.slide_.get(),
            [item](const QVariant& y) {
              if (item) item->setY(y.toDouble());
            });
  }
  QVariantAnimation& a = *s.slide_;
  a.stop();  // a move under way is replaced; stop() does not finish it
  a.disconnect(this);
  a.setEasingCurve(toY > s.item_->y() ? QEasingCurve::InQuad : QEasingCurve::OutQuad);
  a.setStartValue(s.item_->y());
  a.setEndValue(toY);
  a.setDuration(static_cast<int>(std::lround(seconds * 1000)));
  if (done) connect(&a, &QVariantAnimation::finished, this, std::move(done));
  a.start();
}

void QtScreenHost::offScreen(QtOverlayScreen& s) {
  if (s.slide_) s.slide_->stop();
  if (s.item_) s.item_->setVisible(false);
  if (s.covering_) {
    s.covering_ = false;
    base_.uncover();
  }
}

}  // namespace zellick::ui

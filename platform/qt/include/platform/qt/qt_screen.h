#pragma once

#include <QObject>
#include <QPointF>
#include <QPointer>
#include <QQuickItem>
#include <QQuickWindow>
#include <QStringList>
#include <QUrl>
#include <QVariantMap>

#include <functional>
#include <map>
#include <memory>
#include <string>

#include "platform/log.h"
#include "platform/qt/qt_presenters.h"
#include "platform/qt/qt_views.h"
#include "platform/qt/tap_counter.h"

class QQmlEngine;

namespace zellick {

// Loads the bundled condensed face the labels use and returns the families it added; none
// (logged) when it cannot be loaded. Any thread: Qt's font database locks itself.
QStringList registerBundledFonts(Log& log);

// The counter screen on Qt Quick: loads the interface file, binds one view per control by
// objectName, and routes the window's touches to the buttons' actions or to the touch
// handlers. Main thread only.
class QtScreen : public QObject {
  Q_OBJECT
 public:
  // Label tags, by objectName; every other view is untagged.
  QtScreen(Log& log, std::map<std::string, int> labelTags, QObject* parent = nullptr);
  QtScreen(const QtScreen&) = delete;
  QtScreen& operator=(const QtScreen&) = delete;
  ~QtScreen() override;

  // Loads the interface file at `url` (a Window). False, with a log line, when it does not
  // load or has no "RootView" item; controls it lacks are logged and left null.
  // `windowProperties` are set on the window as it is created (e.g. width, height).
  bool load(const QUrl& url, const QVariantMap& windowProperties = {});
  // Where rendered artwork is kept between starts; empty (the default) keeps none. Takes
  // effect at the next load().
  void setArtworkCacheDir(const QString& dir) { artworkCacheDir_ = dir; }
  // Read-only folders of artwork rendered at build time, tried before the cache.
  void setShippedArtworkDirs(const QStringList& dirs) { shippedArtworkDirs_ = dirs; }
  // Run before each question shows (e.g. waiting for the fonts its text uses); before load().
  void setBeforeQuestion(std::function<void()> run) { beforeQuestion_ = std::move(run); }

  QQuickWindow* window() const { return window_; }
  QQuickItem* rootItem() const { return root_; }
  QtRootView* rootView() const { return rootView_.get(); }
  QtButton* button(const std::string& name) const;
  QtImageView* imageView(const std::string& name) const;
  QtLabel* label(const std::string& name) const;
  QtAlertPresenter* alerts() const { return alerts_.get(); }
  // The question overlay, built on the first call; null (logged) when it cannot be built.
  QQuickItem* questionOverlay();

  // What a button's touches run. A button with a press action runs `release` for every
  // press that ends, inside or outside; one without runs it on a release inside only.
  void bindButton(const std::string& name, std::function<void()> press,
                  std::function<void()> release);
  // Touches that begin on no button go here, with the view they lie on and their tap count.
  using TouchHandler = std::function<void(const View& view, int tapCount)>;
  void setTouchHandlers(TouchHandler began, TouchHandler ended);

  // The point of the logical screen under a window position.
  QPointF toScreen(QPointF windowPos) const;
  // The window position of a logical screen point (tests aim their clicks with it).
  QPointF toWindow(QPointF screenPoint) const;

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  struct Binding {
    std::function<void()> press;
    std::function<void()> release;
  };
  enum class Phase { Begin, Move, End, Cancel };
  void touch(Phase phase, QPointF windowPos, long long timeMs);
  const View* hitTest(QPointF p, QtButton** button) const;
  bool questionShown() const;

  Log& log_;
  std::map<std::string, int> labelTags_;
  QString artworkCacheDir_;
  QStringList shippedArtworkDirs_;
  std::function<void()> beforeQuestion_;
  std::unique_ptr<QQmlEngine> engine_;
  std::unique_ptr<QObject> screen_;  // the window the screen file made; goes before the engine
  QPointer<QQuickWindow> window_;
  QPointer<QQuickItem> root_;
  QPointer<QQuickItem> questionLoader_;
  QPointer<QQuickItem> overlay_;
  std::unique_ptr<QtRootView> rootView_;
  std::map<std::string, std::unique_ptr<QtButton>> buttons_;
  std::map<std::string, std::unique_ptr<QtImageView>> images_;
  std::map<std::string, std::unique_ptr<QtLabel>> labels_;
  std::unique_ptr<QtAlertPresenter> alerts_;
  std::map<std::string, Binding> bindings_;
  TouchHandler began_;
  TouchHandler ended_;
  TapCounter taps_;

  // The touch in progress: on a button, or on another view with its tap count.
  bool tracking_ = false;
  QtButton* pressedButton_ = nullptr;
  const View* touchedView_ = nullptr;
  int touchTapCount_ = 0;
  int touchPointId_ = -1;
};

}  // namespace zellick

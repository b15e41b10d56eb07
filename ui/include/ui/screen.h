#pragma once

#include <QObject>
#include <QPointF>
#include <QPointer>
#include <QQuickItem>
#include <QQuickWindow>
#include <QStringList>
#include <QUrl>
#include <QVariantMap>

#include <algorithm>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "platform/log.h"
#include "platform/views.h"
#include "ui/controls.h"
#include "ui/questions.h"
#include "ui/tap_counter.h"
#include "ui/views.h"

class QKeyEvent;
namespace zellick::ui {
class ScreenReaderNodes;
}
class QQmlEngine;

namespace zellick::ui {

// Loads the bundled label face and returns the families it added; none (logged) when it cannot
// be loaded. Any thread: Qt's font database locks itself.
QStringList registerBundledFonts(Log& log);

// A screen on Qt Quick: loads an interface file (a QML Window holding an item "RootView"),
// binds one view per control of a table by objectName, and routes the window's touches to the
// buttons' actions or to the touch handlers. Main thread only.
class QtScreen : public QObject, public Screen {
  Q_OBJECT
 public:
  explicit QtScreen(Log& log, QObject* parent = nullptr);
  QtScreen(const QtScreen&) = delete;
  QtScreen& operator=(const QtScreen&) = delete;
  ~QtScreen() override;

  // Where rendered artwork is kept between starts; empty (the default) keeps none. Read-only
  // folders of artwork rendered at build time are tried before it. Both before load().
  void setArtworkCacheDir(const QString& dir) { artworkCacheDir_ = dir; }
  void setShippedArtworkDirs(const QStringList& dirs) { shippedArtworkDirs_ = dirs; }
  // Run before each question shows (e.g. waiting for the fonts its text uses).
  void setBeforeQuestion(std::function<void()> run) { beforeQuestion_ = std::move(run); }
  // Font names the controller asks for and the families drawn instead.
  void setFontAliases(FontAliases aliases) { fontAliases_ = std::move(aliases); }

  // Loads the interface file at `url`. False, with a log line, when it does not load, is not
  // a window or has no "RootView" item. `windowProperties` are set as the window is created.
  bool load(const QUrl& url, const QVariantMap& windowProperties = {});
  // The logical screen the interface file laid out, once loaded.
  Rect bounds() const;
  // Binds `controls` in order: places each item named after a control, shows its first
  // pictures and makes its view. False, logged, when an item is missing.
  bool bind(const std::vector<ControlSpec>& controls);

  QQuickWindow* window() const { return window_; }
  QQuickItem* rootItem() const { return root_; }

  QtRootView* rootView() override { return rootView_.get(); }
  QtButton* button(const std::string& name) override { return controls_.button(name); }
  QtImageView* imageView(const std::string& name) override { return controls_.imageView(name); }
  QtLabel* label(const std::string& name) override { return controls_.label(name); }
  QtTableView* tableView(const std::string& name) override { return controls_.tableView(name); }
  QtAlertPresenter& alerts() override { return *alerts_; }
  void bindButton(const std::string& name, std::function<void()> press,
                  std::function<void()> release) override;
  void setTouchHandlers(TouchHandler began, TouchHandler ended) override;
  void setKeyBindings(std::vector<KeyBinding> keys) override { keys_ = std::move(keys); }
  void setAccessibleText(const std::string& name, const std::string& text) override;
  void setAccessibleChecked(const std::string& name, bool checked) override;

  // The question overlay, built on the first call; null (logged) when it cannot be built.
  QQuickItem* questionOverlay();

  // While another screen covers this one (each cover() until its uncover()), touches that begin
  // go to the QML items above, not to this screen's controls; one under way ends here.
  void cover() { ++covers_; }
  // Where keys go while the screen is covered: true when the screen in front took the key.
  void setKeysAbove(std::function<bool(const std::string& key, bool down)> keys) {
    keysAbove_ = std::move(keys);
  }
  void uncover() { covers_ = std::max(0, covers_ - 1); }
  bool covered() const { return covers_ > 0; }
  // The engine the screen file was loaded with, its image providers and types set up; null
  // before load().
  QQmlEngine* engine() const { return engine_.get(); }
  const FontAliases& fontAliases() const { return fontAliases_; }

  // The point of the logical screen under a window position.
  QPointF toScreen(QPointF windowPos) const;
  // The window position of a logical screen point (tests aim their clicks with it).
  QPointF toWindow(QPointF screenPoint) const;

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private slots:
  void onAccessiblePress();

 private:
  struct Binding {
    std::function<void()> press;
    std::function<void()> release;
  };
  enum class Phase { Begin, Move, End, Cancel };
  void touch(Phase phase, QPointF windowPos, long long timeMs);
  // A key event; true when the screen took it.
  bool key(const QKeyEvent& event);
  const View* hitTest(QPointF p, QtButton** button) const;
  bool questionShown() const;
  // Touches that begin now are for the items above this screen's controls.
  bool touchesGoAbove() const { return covered() || questionShown(); }

  Log& log_;
  QString artworkCacheDir_;
  QStringList shippedArtworkDirs_;
  std::function<void()> beforeQuestion_;
  FontAliases fontAliases_;
  std::unique_ptr<QQmlEngine> engine_;
  std::unique_ptr<QObject> screen_;  // the window the screen file made; goes before the engine
  QPointer<QQuickWindow> window_;
  QPointer<QQuickItem> root_;
  QPointer<QQuickItem> questionLoader_;
  QPointer<QQuickItem> overlay_;
  std::unique_ptr<QtRootView> rootView_;
  BoundControls controls_{fontAliases_, log_};
  std::unique_ptr<QtAlertPresenter> alerts_;
  std::map<std::string, Binding> bindings_;
  TouchHandler began_;
  TouchHandler ended_;
  TapCounter taps_;
  std::vector<KeyBinding> keys_;
  std::map<std::string, QtButton*> heldKeys_;  // key down -> the button it pressed
  int covers_ = 0;
  std::function<bool(const std::string&, bool)> keysAbove_;
  ScreenReaderNodes* readers_ = nullptr;  // owned by the engine

  // The touch in progress: on a button, or on another view with its tap count.
  bool tracking_ = false;
  QtButton* pressedButton_ = nullptr;
  const View* touchedView_ = nullptr;
  int touchTapCount_ = 0;
  int touchPointId_ = -1;
};

// The app's window as a QtScreen shows it: the first makeKeyAndVisible loads the root
// controller's view; each shows the window and brings it to the front.
class ScreenWindow : public Window {
 public:
  explicit ScreenWindow(QtScreen& screen) : screen_(screen) {}
  void setRootViewController(ViewController* controller) override { root_ = controller; }
  void makeKeyAndVisible() override;

 private:
  QtScreen& screen_;
  ViewController* root_ = nullptr;
  bool loaded_ = false;
};

}  // namespace zellick::ui

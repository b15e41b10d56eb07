#pragma once

#include <QObject>
#include <QPointer>
#include <QQuickItem>
#include <QUrl>

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "platform/log.h"
#include "platform/views.h"
#include "ui/controls.h"
#include "ui/questions.h"
#include "ui/screen.h"
#include "ui/views.h"

class QQmlComponent;
class QVariantAnimation;

namespace zellick::ui {

class QtScreenHost;

// A screen shown over a QtScreen: an item of its own interface file inside the other's logical
// screen, above its controls and below its questions, which it shares. Its touches go to its
// own QML items (lists, bars): buttons bound here get none, and its touch handlers are never
// called. Main thread.
class QtOverlayScreen final : public Screen {
 public:
  // Takes `item`, already placed in the logical screen; `fonts` must outlive the screen.
  QtOverlayScreen(QQuickItem* item, QtScreenHost& host, QtAlertPresenter& alerts,
                  const FontAliases& fonts, Log& log);
  QtOverlayScreen(const QtOverlayScreen&) = delete;
  QtOverlayScreen& operator=(const QtOverlayScreen&) = delete;
  ~QtOverlayScreen() override;

  bool bind(const std::vector<ControlSpec>& controls) { return controls_.bind(item_, controls); }

  QtRootView* rootView() override { return &rootView_; }
  QtButton* button(const std::string& name) override { return controls_.button(name); }
  QtImageView* imageView(const std::string& name) override { return controls_.imageView(name); }
  QtLabel* label(const std::string& name) override { return controls_.label(name); }
  QtTableView* tableView(const std::string& name) override { return controls_.tableView(name); }
  QtAlertPresenter& alerts() override { return alerts_; }
  void bindButton(const std::string& name, std::function<void()> press,
                  std::function<void()> release) override;
  void setTouchHandlers(TouchHandler, TouchHandler) override {}
  // Keys here are a list's: Up and Down move through the table's rows, Return taps one, Escape
  // taps the bar's back button; bindings are not used.
  void setKeyBindings(std::vector<KeyBinding>) override {}
  void setAccessibleText(const std::string& name, const std::string& text) override;
  void setAccessibleChecked(const std::string& name, bool checked) override;
  // A key went down; true when it did something.
  bool keyDown(const std::string& key);

  QQuickItem* item() const { return item_; }

 private:
  friend class QtScreenHost;
  QPointer<QtScreenHost> host_;
  QPointer<QQuickItem> item_;
  QtAlertPresenter& alerts_;
  Log& log_;
  QtRootView rootView_;
  BoundControls controls_;
  std::unique_ptr<QVariantAnimation> slide_;
  bool covering_ = false;  // while shown, the screen beneath takes no new touches
};

// Screens shown over a QtScreen, from the interface files the app names for them: each comes as
// an item in the same logical screen, so it is scaled and letterboxed alike. Shown at once or
// sliding up, taken away sliding down. Main thread.
class QtScreenHost : public QObject, public ModalScreenHost {
  Q_OBJECT
 public:
  // The interface file of a screen by its name; an empty URL for none.
  using InterfaceFiles = std::function<QUrl(const std::string& nibName)>;
  // `base` must outlive the host and the screens it loads.
  QtScreenHost(QtScreen& base, InterfaceFiles files, Log& log);
  ~QtScreenHost() override;

  // Run before each screen is loaded (e.g. waiting for the fonts its text uses).
  void setBeforeLoad(std::function<void()> run) { beforeLoad_ = std::move(run); }
  // Compiles the interface file of `nibName` on the engine's loader thread, so that loading the
  // screen later only builds it; returns at once. Logged when it fails.
  void prepare(const std::string& nibName);

  std::unique_ptr<Screen> loadScreen(const std::string& nibName,
                                     const std::vector<ControlSpec>& controls) override;
  Rect screenBounds() const override { return base_.bounds(); }
  void show(Screen& screen, bool animated) override;
  void hide(Screen& screen, bool animated, std::function<void()> gone) override;

  // The screens on show, the front one last.
  const std::vector<QtOverlayScreen*>& shown() const { return shown_; }

 private:
  friend class QtOverlayScreen;
  QtOverlayScreen* ours(Screen& screen);
  // Moves the screen's item to `toY` (in points) over `seconds`, then runs `done`.
  void slide(QtOverlayScreen& screen, double toY, double seconds, std::function<void()> done);
  void offScreen(QtOverlayScreen& screen);

  QtScreen& base_;
  InterfaceFiles files_;
  Log& log_;
  std::function<void()> beforeLoad_;
  std::vector<QtOverlayScreen*> loaded_;
  std::vector<QtOverlayScreen*> shown_;
  std::map<QUrl, std::unique_ptr<QQmlComponent>> prepared_;
};

}  // namespace zellick::ui

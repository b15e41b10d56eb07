#pragma once

#include <QAccessible>
#include <QObject>
#include <QPointer>
#include <QQuickItem>

#include <functional>
#include <memory>
#include <vector>

class QQmlComponent;
class QQmlEngine;

namespace zellick::ui {

// Gives the screen's controls their accessible nodes while a screen reader (or any assistive
// technology) listens, and none before, so a start without one pays nothing for them. A control
// gets a node when its item has a non-empty "accessibleName": a button (it has the signal
// accessiblePressed(); a radio button when "accessibleCheckable", "accessibleChecked" telling
// which) or else a text, read as its name and then its "text" or "accessibleText"; one with
// "accessibleFocus" holds the focus. Main thread.
class ScreenReaderNodes : public QObject, public QAccessible::ActivationObserver {
  Q_OBJECT
 public:
  // `controls` gives the items that may get nodes; asked each time nodes are made.
  ScreenReaderNodes(QQmlEngine& engine, std::function<std::vector<QQuickItem*>()> controls);
  ~ScreenReaderNodes() override;

  // Makes the nodes now if a reader listens (e.g. after more controls were bound).
  void refresh();
  void accessibilityActiveChanged(bool active) override;

 private:
  QQmlEngine& engine_;
  std::function<std::vector<QQuickItem*>()> controls_;
  std::unique_ptr<QQmlComponent> node_;
  std::vector<QPointer<QQuickItem>> made_;  // by the control it belongs to
  std::vector<QPointer<QQuickItem>> owners_;
};

}  // namespace zellick::ui

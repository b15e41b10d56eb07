#pragma once

#include <QObject>
#include <QPointer>
#include <QQuickItem>

#include <deque>
#include <functional>
#include <memory>
#include <utility>

#include "platform/log.h"
#include "platform/views.h"

namespace zellick::ui {

// Questions on the screen's question overlay (a QML item with title, message, buttons,
// shown, and a signal answered(int)). One at a time; later ones wait their turn.
class QtAlertPresenter : public QObject, public AlertPresenter {
  Q_OBJECT
 public:
  // `overlay` builds the question overlay when the first question is asked; it may return
  // null, and the questions are then answered with their first button (logged).
  QtAlertPresenter(std::function<QQuickItem*()> overlay, Log& log, QObject* parent = nullptr);
  QtAlertPresenter(const QtAlertPresenter&) = delete;
  QtAlertPresenter& operator=(const QtAlertPresenter&) = delete;

  void show(std::shared_ptr<AlertView> alert, AlertAnswer answer) override;
  // Run before each question is put on screen.
  void setBeforeShow(std::function<void()> run) { beforeShow_ = std::move(run); }

  // The question on screen, or null.
  const AlertView* current() const { return current_.first.get(); }
  // Answers the question on screen with button `index`, as a click on it would.
  void answer(int index) { onAnswered(index); }
  std::size_t waiting() const { return queue_.size(); }

 private slots:
  void onAnswered(int index);

 private:
  void present();

  std::function<QQuickItem*()> buildOverlay_;
  QPointer<QQuickItem> overlay_;
  Log& log_;
  std::function<void()> beforeShow_;
  std::pair<std::shared_ptr<AlertView>, AlertAnswer> current_;
  std::deque<std::pair<std::shared_ptr<AlertView>, AlertAnswer>> queue_;
};

}  // namespace zellick::ui

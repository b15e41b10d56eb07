#include "ui/questions.h"

#include <QStringList>

namespace zellick::ui {

QtAlertPresenter::QtAlertPresenter(std::function<QQuickItem*()> overlay, Log& log, QObject* parent)
    : QObject(parent), buildOverlay_(std::move(overlay)), log_(log) {}

void QtAlertPresenter::show(std::shared_ptr<AlertView> alert, AlertAnswer answer) {
  if (!alert) {
    log_.line("asked to show no question; ignored");
    return;
  }
  queue_.emplace_back(std::move(alert), std::move(answer));
  if (!current_.first) present();
}

void QtAlertPresenter::present() {
  if (queue_.empty()) return;
  current_ = std::move(queue_.front());
  queue_.pop_front();
  const AlertView& alert = *current_.first;
  QStringList buttons;
  for (const auto& b : alert.buttons) buttons << QString::fromStdString(b);
  if (buttons.isEmpty()) {
    // A question nobody can dismiss would block the screen for good.
    log_.line("question \"" + alert.title + "\" has no buttons; offering OK");
    buttons << QStringLiteral("OK");
  }
  if (!overlay_ && buildOverlay_) {
    overlay_ = buildOverlay_();
    buildOverlay_ = nullptr;
    if (overlay_) connect(overlay_, SIGNAL(answered(int)), this, SLOT(onAnswered(int)));
  }
  if (!overlay_) {
    log_.line("no question overlay on screen; \"" + alert.title + "\" answered with button 0");
    onAnswered(0);
    return;
  }
  if (beforeShow_) beforeShow_();
  overlay_->setProperty("title", QString::fromStdString(alert.title));
  overlay_->setProperty("message", QString::fromStdString(alert.message));
  overlay_->setProperty("buttons", buttons);
  overlay_->setProperty("shown", true);
}

void QtAlertPresenter::onAnswered(int index) {
  if (!current_.first) return;
  const int count = std::max<int>(1, static_cast<int>(current_.first->buttons.size()));
  if (index < 0 || index >= count) {
    log_.line(format("question answered with unknown button %d; ignored", index));
    return;
  }
  auto [alert, answer] = std::move(current_);
  current_ = {};
  if (overlay_) overlay_->setProperty("shown", false);
  // The answer may raise the next question itself; it then waits behind any queued ones.
  if (answer) answer(*alert, index);
  if (!current_.first) present();
}

}  // namespace zellick::ui

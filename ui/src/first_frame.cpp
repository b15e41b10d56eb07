#include "ui/first_frame.h"

#include <QMetaObject>
#include <QQuickWindow>
#include <QTimer>

#include <memory>

namespace zellick::ui {

namespace {

// Long enough for the frame to reach the screen (a compositor needs the processor too), short
// against the time before a first touch.
constexpr int kSettleMs = 100;

}  // namespace

void afterFirstFrame(QQuickWindow* window, QObject* context, std::function<void()> run) {
  if (!window || !context || !run) return;
  auto once = std::make_shared<QMetaObject::Connection>();
  // The signal may come from the render thread; the timer starts on the context's.
  *once = QObject::connect(
      window, &QQuickWindow::frameSwapped, context, [once, context, run = std::move(run)] {
        QObject::disconnect(*once);
        QMetaObject::invokeMethod(
            context, [context, run] { QTimer::singleShot(kSettleMs, context, run); },
            Qt::QueuedConnection);
      });
}

}  // namespace zellick::ui

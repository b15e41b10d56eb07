#include "platform/qt/first_frame.h"

#include <QMetaObject>
#include <QPointer>
#include <QQuickWindow>

#include <memory>

namespace zellick::qt {

void afterFirstFrame(QQuickWindow* window, QObject* context, std::function<void()> run) {
  if (!window || !context || !run) return;
  auto once = std::make_shared<QMetaObject::Connection>();
  // The signal may come from the render thread; the queued call lands on the context's.
  *once = QObject::connect(window, &QQuickWindow::frameSwapped, context, [once, context, run = std::move(run)] {
    QObject::disconnect(*once);
    QMetaObject::invokeMethod(context, run, Qt::QueuedConnection);
  });
}

}  // namespace zellick::qt

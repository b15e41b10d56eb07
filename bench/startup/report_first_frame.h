#pragma once

#include <QCoreApplication>
#include <QQuickWindow>
#include <QTimer>

#include <cstdio>
#include <memory>

// Prints "first frame" on stdout once `window` has shown its first frame, then quits: what the
// start-up bench times both programs by.
inline void reportFirstFrameAndQuit(QQuickWindow* window) {
  auto done = std::make_shared<bool>(false);
  QObject::connect(window, &QQuickWindow::frameSwapped, window, [done] {
    if (*done) return;
    *done = true;
    std::printf("first frame\n");
    std::fflush(stdout);
    QTimer::singleShot(0, qApp, &QCoreApplication::quit);
  });
}

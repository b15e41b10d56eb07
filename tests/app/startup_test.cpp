// The audio module is loaded only once the first frame is out, and tried only once.
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QQuickWindow>

#include <gtest/gtest.h>

#include "fakes.h"
#include "platform/qt/deferred_sound.h"

namespace zellick {
namespace {

TEST(DeferredSoundStart, ModuleIsTriedOnlyAfterTheFirstFrame) {
  test::RecordingLog log;
  // A detached output whose module is missing: the attempt shows as a log line.
  qt::DeferredSoundOutput sound(log, qt::DeferredSoundOutput::Device::Detached,
                                QStringLiteral("/nonexistent/libzellick_audio.so"));
  QQuickWindow window;
  window.resize(100, 100);
  sound.loadAfterFirstFrame(&window);
  QCoreApplication::processEvents();
  EXPECT_TRUE(log.lines.empty()) << "tried before any frame";

  bool swapped = false;
  QObject::connect(&window, &QQuickWindow::frameSwapped, [&] { swapped = true; });
  window.show();
  QElapsedTimer t;
  t.start();
  while ((!swapped || log.lines.empty()) && t.elapsed() < 5000)
    QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
  ASSERT_TRUE(swapped);
  ASSERT_EQ(log.lines.size(), 1u);
  EXPECT_TRUE(sound.isMuted());
  window.update();
  for (int i = 0; i < 10; ++i) QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
  EXPECT_EQ(log.lines.size(), 1u) << "later frames try again";
}

}  // namespace
}  // namespace zellick

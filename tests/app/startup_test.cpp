// What the app's start-up defers: the screen's hook between compiling and creating, and the
// audio module loaded once the first frame is out.
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QQuickWindow>

#include <gtest/gtest.h>

#include "fakes.h"
#include "platform/qt/deferred_sound.h"
#include "platform/qt/qt_screen.h"

namespace zellick {
namespace {

TEST(ScreenLoad, BeforeCreateRunsOnceBeforeTheWindowExists) {
  test::RecordingLog log;
  QtScreen screen(log, {});
  int runs = 0;
  bool windowExisted = false;
  screen.setBeforeCreate([&] {
    ++runs;
    windowExisted = screen.window() != nullptr;
  });
  ASSERT_TRUE(screen.load(QUrl(QStringLiteral("qrc:/qml/Main.qml")), {{"width", 360}, {"height", 640}}));
  EXPECT_EQ(runs, 1);
  EXPECT_FALSE(windowExisted);
  EXPECT_NE(screen.window(), nullptr);
}

TEST(DeferredSoundStart, ModuleIsTriedOnlyAfterTheFirstFrame) {
  test::RecordingLog log;
  // A detached output (never a device) whose module is missing: the attempt shows as a log line.
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
  EXPECT_NE(log.lines[0].find("no audio module"), std::string::npos) << log.lines[0];
  EXPECT_TRUE(sound.isMuted());
  // Later frames do not try again.
  window.update();
  for (int i = 0; i < 10; ++i) QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
  EXPECT_EQ(log.lines.size(), 1u);
}

}  // namespace
}  // namespace zellick

// Runs the real app offscreen in its default window with its artwork cache pointed at a folder,
// opens the More screen over the counter, and quits once every picture is in, pressed ones
// included: the folder then holds each rendering the default window asks for. The build ships
// them; a check runs it again with an empty folder and expects nothing rendered.
//   zellick-render-artwork CACHE_DIR
#include <QDir>
#include <QGuiApplication>
#include <QQuickWindow>
#include <QTemporaryDir>
#include <QTimer>

#include <cstdio>

#include "app/zellick_app.h"
#include "more/moreView.h"
#include "ui/first_frame.h"

namespace {
// The pressed pictures start loading a moment after the first frame, on a helper thread.
constexpr int kSettleMs = 1500;
}  // namespace

int main(int argc, char** argv) {
  qputenv("QT_QPA_PLATFORM", "offscreen");
  QGuiApplication app(argc, argv);
  if (app.arguments().size() != 2) {
    std::fprintf(stderr, "usage: zellick-render-artwork CACHE_DIR\n");
    return 2;
  }
  QTemporaryDir scratch;
  zellick::ZellickApp::identify();
  zellick::Environment environment = zellick::Environment::fromProcess();
  environment.artworkCacheDir = app.arguments()[1];
  environment.settingsPath = QDir(scratch.path()).filePath(QStringLiteral("defaults.ini"));
  environment.audioOff = true;
  if (!QDir().mkpath(environment.artworkCacheDir)) return 1;

  zellick::ZellickApp zellick(environment);
  if (zellick.launch() != zellick::ZellickApp::Launch::Shown) return 1;
  zellick::ui::afterFirstFrame(zellick.window(), zellick.window(), [&zellick] {
    zellick.counter().more().presentModalViewController(zellick::kMoreNibName);
    QTimer::singleShot(kSettleMs, qApp, &QCoreApplication::quit);
  });
  return app.exec();
}

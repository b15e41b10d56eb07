// The Zellick app: the counter screen on Qt Quick with the real platform.
#include <QGuiApplication>
#include <QQuickWindow>
#include <QStandardPaths>
#include <QDir>
#include <QTimer>

#include <cstdio>

#include "app/counter_app.h"
#include "app/launch_options.h"
#include "app/stress_driver.h"
#include "platform/qt/qt_bundle.h"
#include "platform/qt/lifecycle.h"
#include "platform/qt/qt_log.h"
#include "platform/qt/settings_defaults.h"
#include "platform/qt/deferred_sound.h"
#include "platform/qt/font_setup.h"

namespace {

QString settingsPath() {
  const QByteArray env = qgetenv("ZELLICK_SETTINGS");
  if (!env.isEmpty()) return QString::fromLocal8Bit(env);
  const QString dir = QStandardPaths::writableLocation(QStandardPaths::AppConfigLocation);
  QDir().mkpath(dir);
  return QDir(dir).filePath(QStringLiteral("defaults.ini"));
}

// Rendered artwork kept between starts; $ZELLICK_ARTWORK_CACHE overrides, "off" disables. The
// renderings shipped in the bundle's artwork folders are used either way.
QString artworkCacheDir() {
  const QByteArray env = qgetenv("ZELLICK_ARTWORK_CACHE");
  if (env == "off") return {};
  if (!env.isEmpty()) return QString::fromLocal8Bit(env);
  const QString dir = QStandardPaths::writableLocation(QStandardPaths::CacheLocation);
  return dir.isEmpty() ? QString() : QDir(dir).filePath(QStringLiteral("artwork"));
}

}  // namespace

int main(int argc, char** argv) {
  QGuiApplication app(argc, argv);
  QGuiApplication::setOrganizationName(QStringLiteral("Zellick"));
  QGuiApplication::setApplicationName(QStringLiteral("Zellick"));

  zellick::StderrLog log;
  const zellick::LaunchOptions options = zellick::parseLaunchOptions(app.arguments(), log);
  // The labels draw from the bundled face directly; Qt's text stack, which only the questions
  // use, is set up after the first frame, and a question waits for it.
  zellick::qt::FontSetupAhead fontSetup([&log] { return zellick::registerBundledFonts(log); });

  zellick::qt::QSettingsDefaults defaults(settingsPath(), log);
  // The audio stack is loaded after the first frame, or by the first click before it.
  using SoundDevice = zellick::qt::DeferredSoundOutput::Device;
  zellick::qt::DeferredSoundOutput sound(log, options.silent ? SoundDevice::None : SoundDevice::Default);
  zellick::DirectoryBundle bundle(zellick::bundleFolders());
  zellick::UnsentTracker tracker;

  zellick::CounterApp counter({defaults, sound, bundle, log, tracker});
  counter.setArtworkCacheDir(artworkCacheDir());
  QStringList shipped;
  for (const std::string& folder : zellick::bundleFolders())
    shipped << QDir(QString::fromStdString(folder)).filePath(QStringLiteral("artwork"));
  counter.setShippedArtworkDirs(shipped);
  counter.setBeforeQuestion([&fontSetup] { fontSetup.wait(); });
  QVariantMap windowProperties;
  if (options.width > 0) windowProperties = {{"width", options.width}, {"height", options.height}};
  if (!counter.load(QUrl(QStringLiteral("qrc:/qml/Main.qml")), windowProperties)) return 1;
  QQuickWindow* window = counter.screen().window();

  counter.start();
  // Becoming active comes after the screen is built; leaving it saves, however the app ends.
  zellick::qt::QtLifecycle lifecycle(counter.notifications(), log);
  lifecycle.watchWindow(window);
  lifecycle.start();
  sound.loadAfterFirstFrame(window);
  fontSetup.startAfterFirstFrame(window);

  if (options.stressLoop >= 0)
    zellick::startStressLoop(counter.controller(), counter.notifications(), options.stressLoop);

  if (options.exitAfterFirstFrame || !options.grab.isEmpty()) {
    auto done = std::make_shared<bool>(false);
    QObject::connect(window, &QQuickWindow::frameSwapped, window, [=, &options] {
      if (*done) return;
      *done = true;
      if (options.exitAfterFirstFrame) {
        std::printf("first frame after %.1f ms\n", zellick::msSinceProcessStart());
        std::fflush(stdout);
        QTimer::singleShot(0, qApp, &QCoreApplication::quit);
        return;
      }
      // Let the delayed redraw after activation and the wheels settle before the picture.
      QTimer::singleShot(1500, window, [=] {
        const QImage image = window->grabWindow();
        if (!image.save(options.grab)) std::fprintf(stderr, "could not save %s\n", qPrintable(options.grab));
        QCoreApplication::quit();
      });
    });
  }
  return app.exec();
}

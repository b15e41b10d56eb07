#include "app/zellick_app.h"

#include <QCoreApplication>
#include <QDir>
#include <QQuickWindow>

#include <csignal>

#include "ui/first_frame.h"

namespace zellick {

void ZellickApp::identify() {
  QCoreApplication::setOrganizationName(QStringLiteral("Zellick"));
  QCoreApplication::setApplicationName(QStringLiteral("Zellick"));
}

ZellickApp::ZellickApp(Environment environment)
    : environment_(std::move(environment)),
      fontSetup_([this] { return ui::registerBundledFonts(log_); }),
      sound_(log_, environment_.audioModule),
      bundle_(environment_.bundleFolders) {
  if (environment_.audioOff) sound_.mute("audio output disabled by ZELLICK_NO_AUDIO");
}

ZellickApp::~ZellickApp() {
  // The screen and its controller go before the services they use.
  lifecycle_.reset();
  counter_.reset();
}

ZellickApp::Launch ZellickApp::launch(const QVariantMap& windowProperties) {
  instance_ = qt::InstanceLock::acquire(environment_.settingsPath, log_);
  if (!instance_) return Launch::AlreadyRunning;
  // A file size limit must not kill the app in the middle of a save: the write fails instead.
  std::signal(SIGXFSZ, SIG_IGN);
  defaults_ = std::make_unique<qt::QSettingsDefaults>(environment_.settingsPath, log_);
  counter_ =
      std::make_unique<CounterScreen>(CounterParts{*defaults_, sound_, bundle_, log_, tracker_});

  CounterScreenOptions options;
  options.artworkCacheDir = environment_.artworkCacheDir;
  for (const std::string& folder : environment_.bundleFolders)
    options.shippedArtworkDirs
        << QDir(QString::fromStdString(folder)).filePath(QStringLiteral("artwork"));
  options.beforeQuestion = [this] { fontSetup_.wait(); };
  options.windowProperties = windowProperties;
  if (!counter_->load(options)) return Launch::Failed;

  counter_->start();
  // Becoming active comes after the screen is built; leaving it saves, however the app ends.
  lifecycle_ = std::make_unique<qt::QtLifecycle>(counter_->notifications(), log_);
  lifecycle_->watchWindow(window());
  lifecycle_->start();
  instance_->onRaise([this] { comeToTheFront(); });
  ui::afterFirstFrame(window(), window(), [this] { sound_.load(); });
  fontSetup_.startAfterFirstFrame(window());
  return Launch::Shown;
}

void ZellickApp::comeToTheFront() {
  QQuickWindow* w = window();
  if (w->windowStates() & Qt::WindowMinimized)
    w->setWindowStates(w->windowStates() & ~Qt::WindowMinimized);
  w->show();
  w->raise();
  w->requestActivate();
}

}  // namespace zellick

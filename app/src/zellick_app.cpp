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
      defaults_(environment_.settingsPath, log_),
      sound_(log_, environment_.audioModule),
      bundle_(environment_.bundleFolders),
      counter_({defaults_, sound_, bundle_, log_, tracker_}) {
  if (environment_.audioOff) sound_.mute("audio output disabled by ZELLICK_NO_AUDIO");
}

ZellickApp::~ZellickApp() = default;

bool ZellickApp::launch(const QVariantMap& windowProperties) {
  // A write past the file size limit must fail with EFBIG (the settings store copes), not kill us.
  std::signal(SIGXFSZ, SIG_IGN);
  CounterScreenOptions options;
  options.artworkCacheDir = environment_.artworkCacheDir;
  for (const std::string& folder : environment_.bundleFolders)
    options.shippedArtworkDirs
        << QDir(QString::fromStdString(folder)).filePath(QStringLiteral("artwork"));
  options.beforeQuestion = [this] { fontSetup_.wait(); };
  options.windowProperties = windowProperties;
  if (!counter_.load(options)) return false;

  counter_.start();
  // Becoming active comes after the screen is built; leaving it saves, however the app ends.
  lifecycle_ = std::make_unique<qt::QtLifecycle>(counter_.notifications(), log_);
  lifecycle_->watchWindow(window());
  lifecycle_->start();
  ui::afterFirstFrame(window(), window(), [this] { sound_.load(); });
  fontSetup_.startAfterFirstFrame(window());
  return true;
}

}  // namespace zellick

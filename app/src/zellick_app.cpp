#include "app/zellick_app.h"

#include <QCoreApplication>
#include <QDir>
#include <QGuiApplication>
#include <QQuickWindow>

#include <csignal>
#include <cstdio>
#include <cstdlib>

#include "platform/qt/device.h"
#include "ui/first_frame.h"

namespace zellick {

void ZellickApp::identify() {
  QCoreApplication::setOrganizationName(QStringLiteral("Zellick"));
  QCoreApplication::setApplicationName(QStringLiteral("Zellick"));
  QCoreApplication::setApplicationVersion(
      QString::fromStdString(Configuration::shipped().appVersion));
  // Shells match the window to the installed desktop entry by this name.
  QGuiApplication::setDesktopFileName(QStringLiteral(ZELLICK_APP_ID));
}

ZellickApp::ZellickApp(Environment environment, CommandLine commandLine)
    : environment_(std::move(environment)),
      commandLine_(commandLine),
      configuration_(Configuration::withOverrides(environment_.makerUrl.constData(),
                                                  environment_.adPrimaryUrl.constData(),
                                                  environment_.adFallbackUrl.constData(), log_)),
      fontSetup_([this] { return ui::registerBundledFonts(log_); }),
      sound_(log_, environment_.audioModule),
      bundle_(environment_.bundleFolders) {
  if (environment_.audioOff) sound_.mute("audio output disabled by ZELLICK_NO_AUDIO");
}

ZellickApp::~ZellickApp() {
  // The life cycle, the delegate, the ad network's client and the screen go before the
  // services they use.
  lifecycle_.reset();
  delegate_.reset();
  adConnect_.reset();
  counter_.reset();
}

ZellickApp::Launch ZellickApp::launch(const QVariantMap& windowProperties) {
  instance_ = qt::InstanceLock::acquire(environment_.settingsPath, log_);
  if (!instance_) return Launch::AlreadyRunning;
  // A file size limit must not kill the app in the middle of a save: the write fails instead.
  std::signal(SIGXFSZ, SIG_IGN);
  defaults_ = std::make_unique<qt::QSettingsDefaults>(environment_.settingsPath, log_);
  // Records wait for the network until the first frame is out.
  http_ = std::make_unique<qt::QtHttpClient>(false);
  const DeviceFacts device = qt::readDeviceFacts(environment_.vendorIdFile, log_);
  tracker_ = std::make_unique<orvtracker>(orvtracker::Services{*http_, *defaults_, log_}, device,
                                          configuration_.makerBaseUrl);
  tracker_->setSwitchedOff(commandLine_.usageRecordsOff);
  documents_ = std::make_unique<qt::FolderDocuments>(environment_.documentsFolder);
  apps_ = std::make_unique<orvapps>(
      orvapps::Services{*http_, *defaults_, *documents_, bundle_, clock_, log_}, configuration_);
  application_ = std::make_unique<qt::QtApplication>(log_);
  counter_ = std::make_unique<CounterScreen>(CounterParts{
      *defaults_, sound_, bundle_, log_, *tracker_, *application_, *apps_, configuration_});

  CounterScreenOptions options;
  options.artworkCacheDir = environment_.artworkCacheDir;
  for (const std::string& folder : environment_.bundleFolders)
    options.shippedArtworkDirs
        << QDir(QString::fromStdString(folder)).filePath(QStringLiteral("artwork"));
  options.beforeQuestion = [this] { fontSetup_.wait(); };
  options.windowProperties = windowProperties;
  if (!counter_->load(options)) return Launch::Failed;

  events_ = std::make_unique<LifecycleEvents>(counter_->notifications());
  adConnect_ = std::make_unique<AdConnect>(AdConnectServices{
      *http_, counter_->runLoop(), counter_->notifications(), log_, device, configuration_});
  delegate_ = std::make_unique<ZellickAppDelegate>(
      AppDelegateServices{*application_, counter_->runLoop(), counter_->notifications(), *defaults_,
                          log_, counter_->screen().alerts(), *tracker_, configuration_, *adConnect_,
                          [this] { apps_->updateApps(); }});
  delegate_->window = &counter_->window();
  delegate_->viewController = &counter_->controller();
  events_->setDelegate(delegate_.get());
  delegate_->applicationDidFinishLaunchingWithOptions();

  // Becoming active comes after the screen is built; leaving it saves, however the app ends.
  lifecycle_ = std::make_unique<qt::QtLifecycle>(*events_, log_);
  lifecycle_->watchWindow(window());
  lifecycle_->start();
  ui::afterFirstFrame(window(), window(), [this] {
    instance_->onRaise([this] { comeToTheFront(); });
    http_->start();
    application_->connectToSession();
    sound_.load();
    lifecycle_->watchTheTime();
    counter_->screenHost().prepare(kMoreNibName);
  });
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

int endProcess(int code) {
#if defined(__SANITIZE_ADDRESS__)
  return code;
#else
  // Qt's thread pools wait, as the application goes, for every host lookup still running, and a
  // name server that does not answer holds one for seconds; nothing of ours is left to finish.
  std::fflush(nullptr);
  std::_Exit(code);
#endif
}

}  // namespace zellick

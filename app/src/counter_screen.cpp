#include "app/counter_screen.h"

#include "counter/interface.h"

namespace zellick {

namespace {

QUrl interfaceFile(const std::string& nibName) {
  if (nibName == kMoreNibName) return QUrl(QStringLiteral("qrc:/qml/MoreScreen.qml"));
  return {};
}

}  // namespace

CounterScreen::CounterScreen(CounterParts parts) : parts_(parts) {}

CounterScreen::~CounterScreen() {
  // The controller holds views owned by the screen; the More screen lies in it.
  window_.reset();
  controller_.reset();
  more_.reset();
  host_.reset();
  screen_.reset();
}

bool CounterScreen::load(const CounterScreenOptions& options, const QUrl& url) {
  screen_ = std::make_unique<ui::QtScreen>(parts_.log);
  screen_->setArtworkCacheDir(options.artworkCacheDir);
  screen_->setShippedArtworkDirs(options.shippedArtworkDirs);
  screen_->setBeforeQuestion(options.beforeQuestion);
  screen_->setFontAliases({{kLabelFontName, ui::kBundledFamily}});
  QVariantMap properties = options.windowProperties;
  properties[QStringLiteral("logicalWidth")] = kScreenWidth;
  properties[QStringLiteral("minLogicalHeight")] = kMinScreenHeight;
  if (!screen_->load(url, properties)) return false;

  const bool bound = screen_->bind(counterInterface(screen_->bounds().h));
  const CounterViews views = counterViews(*screen_);
  if (!bound || !isComplete(views)) {
    parts_.log.line("the counter screen is incomplete; not starting");
    return false;
  }
  host_ = std::make_unique<ui::QtScreenHost>(*screen_, interfaceFile, parts_.log);
  host_->setBeforeLoad(options.beforeQuestion);
  more_ = std::make_unique<MoreScreenPresenter>(
      MoreScreenPresenter::Services{*host_, nullptr, parts_.application, parts_.tracker,
                                    parts_.apps, parts_.log, parts_.configuration});
  controller_ = std::make_unique<ZellickViewController>(
      CounterServices{runLoop_, clock_, uptime_, notifications_, parts_.defaults, parts_.sound,
                      parts_.bundle, parts_.log, screen_->alerts(), *more_, parts_.tracker},
      views);
  bindCounter(*screen_, *controller_);
  window_ = std::make_unique<ui::ScreenWindow>(*screen_);
  return true;
}

void CounterScreen::start() {
  if (!controller_) return;
  window_->setRootViewController(controller_.get());
  window_->makeKeyAndVisible();
}

void CounterScreen::activate() { notifications_.post(kDidBecomeActive); }

}  // namespace zellick

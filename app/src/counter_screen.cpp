#include "app/counter_screen.h"

#include "counter/interface.h"

namespace zellick {

namespace {

// There is no other screen yet: a request to present one is logged.
class LoggingScreenPresenter : public ScreenPresenter {
 public:
  explicit LoggingScreenPresenter(Log& log) : log_(log) {}
  void presentModalViewController(const std::string& nibName) override {
    log_.line("\"" + nibName + "\" requested; More screen not available yet");
  }
  void dismissModalViewControllerAnimated(bool) override {}

 private:
  Log& log_;
};

}  // namespace

CounterScreen::CounterScreen(CounterParts parts)
    : parts_(parts), screens_(std::make_unique<LoggingScreenPresenter>(parts.log)) {}

CounterScreen::~CounterScreen() {
  // The controller holds views owned by the screen.
  window_.reset();
  controller_.reset();
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
  controller_ = std::make_unique<ZellickViewController>(
      CounterServices{runLoop_, clock_, uptime_, notifications_, parts_.defaults, parts_.sound,
                      parts_.bundle, parts_.log, screen_->alerts(), *screens_, parts_.tracker},
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

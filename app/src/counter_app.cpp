#include "app/counter_app.h"

#include <QCoreApplication>
#include <QDir>

#include "counter/actions.h"

namespace zellick {

CounterApp::CounterApp(CounterAppParts parts)
    : parts_(parts), screens_(std::make_unique<LoggingScreenPresenter>(parts.log)) {}

CounterApp::~CounterApp() {
  // The controller holds views owned by the screen.
  controller_.reset();
  screen_.reset();
}

bool CounterApp::load(const QUrl& url, const QVariantMap& windowProperties) {
  screen_ = std::make_unique<QtScreen>(
      parts_.log, std::map<std::string, int>{{"LabelTimer", kLabelTimerTag}, {"LabelAvg", kLabelAvgTag}});
  screen_->setArtworkCacheDir(artworkCacheDir_);
  screen_->setShippedArtworkDirs(shippedArtworkDirs_);
  screen_->setBeforeQuestion(beforeQuestion_);
  if (!screen_->load(url, windowProperties)) return false;
  QtScreen& s = *screen_;

  CounterViews views;
  views.view = s.rootView();
  views.ButtonReset = s.button("ButtonReset");
  views.ButtonAdd = s.button("ButtonAdd");
  views.ButtonA = s.button("ButtonA");
  views.ButtonB = s.button("ButtonB");
  views.ButtonC = s.button("ButtonC");
  views.ButtonInfo = s.button("ButtonInfo");
  views.ButtonMinus = s.button("ButtonMinus");
  views.ImageView1 = s.imageView("ImageView1");
  views.ImageView2 = s.imageView("ImageView2");
  views.ImageView3 = s.imageView("ImageView3");
  views.ImageView4 = s.imageView("ImageView4");
  views.LabelTimer = s.label("LabelTimer");
  views.LabelAvg = s.label("LabelAvg");
  views.baseImageView = s.imageView("baseImageView");
  const void* all[] = {views.view,       views.ButtonReset, views.ButtonAdd,  views.ButtonA,
                       views.ButtonB,    views.ButtonC,     views.ButtonInfo, views.ButtonMinus,
                       views.ImageView1, views.ImageView2,  views.ImageView3, views.ImageView4,
                       views.LabelTimer, views.LabelAvg,    views.baseImageView};
  for (const void* v : all)
    if (!v) {
      parts_.log.line("the counter screen is incomplete; not starting");
      return false;
    }

  controller_ = std::make_unique<ZellickViewController>(
      CounterServices{runLoop_, clock_, notifications_, parts_.defaults, parts_.sound, parts_.bundle,
                      parts_.log, *s.alerts(), *screens_, parts_.tracker},
      views);
  ZellickViewController& c = *controller_;
  for (auto& [name, actions] : counterActions(c)) s.bindButton(name, actions.press, actions.release);
  s.setTouchHandlers([&c](const View& view, int taps) { c.touchesBegan({Touch{&view, taps}}); },
                     [&c](const View& view, int taps) { c.touchesEnded({Touch{&view, taps}}); });
  return true;
}

void CounterApp::start() {
  if (!controller_) return;
  controller_->viewDidLoad();
  controller_->viewWillAppear(false);
}

void CounterApp::activate() { notifications_.post(kDidBecomeActive); }

std::vector<std::string> bundleFolders() {
  std::vector<std::string> folders;
  const QByteArray env = qgetenv("ZELLICK_BUNDLE");
  if (!env.isEmpty()) folders.push_back(env.toStdString());
  if (QCoreApplication::instance())
    folders.push_back(QDir(QCoreApplication::applicationDirPath()).filePath("bundle").toStdString());
#ifdef ZELLICK_BUNDLE_DIR
  folders.push_back(ZELLICK_BUNDLE_DIR);
#endif
  return folders;
}

}  // namespace zellick

// The real screen, offscreen, with the real controller and the real Qt views: touches go
// through the window as the system would send them.
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QQuickItem>
#include <QQuickWindow>
#include <QTest>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <memory>
#include <string>

#include "app/counter_app.h"
#include "counter/actions.h"
#include "fakes.h"
#include "platform/qt/qt_screen.h"

namespace zellick {
namespace {

class RealScreen : public testing::Test {
 protected:
  void SetUp() override {
    registerBundledFonts(log);
    app = std::make_unique<CounterApp>(CounterAppParts{defaults, sound, bundle, log, tracker});
    ASSERT_TRUE(app->load(QUrl(QStringLiteral("qrc:/qml/Main.qml")),
                          QVariantMap{{"width", 360}, {"height", 640}}));
    window = app->screen().window();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(window));
    // The render loop installs its own driver with the window; ours replaces it.
    driver.install();
    app->start();
    app->activate();
    c = &app->controller();
  }
  void TearDown() override {
    if (HasFailure())
      for (const auto& line : log.lines) std::fprintf(stderr, "log: %s\n", line.c_str());
    if (window) driver.uninstall();
    app.reset();
  }

  // The window position of a view's centre.
  QPoint centreOf(const View& view) const {
    return app->screen().toWindow(QPointF(view.frame().center().x, view.frame().center().y)).toPoint();
  }
  QPoint centreOf(QQuickItem* item) const {
    return item->mapToScene(QPointF(item->width() / 2, item->height() / 2)).toPoint();
  }
  // Lets Qt's animations run to their end on test time.
  void settleAnimations() {
    for (int i = 0; i < 3; ++i) QCoreApplication::processEvents();
    for (int i = 0; i < 20; ++i) driver.step(50);
  }
  bool played(const std::string& name) const {
    return std::find(sound.played.begin(), sound.played.end(), "/bundle/" + name + ".caf") !=
           sound.played.end();
  }
  static QQuickItem* find(QQuickItem* from, const QString& name) {
    if (from->objectName() == name) return from;
    for (QQuickItem* child : from->childItems())
      if (QQuickItem* found = find(child, name)) return found;
    return nullptr;
  }
  QQuickItem* overlayPart(const char* name) const {
    return find(app->screen().questionOverlay(), QString::fromLatin1(name));
  }

  test::MemoryDefaults defaults;
  test::RecordingSound sound;
  test::NamedBundle bundle;
  test::RecordingLog log;
  test::RecordingTracker tracker;
  test::SteppedAnimationDriver driver;
  std::unique_ptr<CounterApp> app;
  QQuickWindow* window = nullptr;
  ZellickViewController* c = nullptr;
};

TEST_F(RealScreen, PressingAddCountsAndRollsTheUnitsWheel) {
  const double start = c->ImageView4->frame().y;
  EXPECT_EQ(start, c->initialPositionOfNumbers);
  const QPoint add = centreOf(*c->ButtonAdd);

  QTest::mousePress(window, Qt::LeftButton, {}, add);
  EXPECT_EQ(c->total, 1);
  EXPECT_TRUE(c->ButtonAdd->isHighlighted());
  EXPECT_TRUE(played("Counter Click2")) << "Add clicks only when its button is highlighted";
  EXPECT_EQ(c->ImageView4->frame().y, c->initialPositionOfNumbers - kDigitCellHeight);
  EXPECT_EQ(c->ImageView3->frame().y, c->initialPositionOfNumbers) << "tens digit unchanged";
  for (Button* locked : {c->ButtonMinus, c->ButtonReset, c->ButtonB, c->ButtonC})
    EXPECT_FALSE(locked->userInteractionEnabled());

  // The wheel item itself rolls to the new cell on Qt's animation clock.
  auto* units = app->screen().imageView("ImageView4");
  const auto drawnY = [&] { return frameInRoot(units->item(), app->screen().rootItem()).y; };
  EXPECT_EQ(drawnY(), start);
  settleAnimations();
  EXPECT_NEAR(drawnY(), c->initialPositionOfNumbers - kDigitCellHeight, 1e-9);

  QTest::mouseRelease(window, Qt::LeftButton, {}, add);
  EXPECT_FALSE(c->ButtonAdd->isHighlighted());
  EXPECT_TRUE(played("ButtonLetUp"));
  for (Button* unlocked : {c->ButtonMinus, c->ButtonReset, c->ButtonB, c->ButtonC})
    EXPECT_TRUE(unlocked->userInteractionEnabled());
  EXPECT_EQ(c->total, 1);
}

TEST_F(RealScreen, AFingerCountsOnceLikeTheMouse) {
  static QPointingDevice* screen = QTest::createTouchDevice();
  const QPoint add = centreOf(*c->ButtonAdd);
  QTest::touchEvent(window, screen).press(0, add, window);
  EXPECT_EQ(c->total, 1);
  EXPECT_TRUE(c->ButtonAdd->isHighlighted());
  EXPECT_FALSE(c->ButtonMinus->userInteractionEnabled());
  // A second finger while the first is down is not another press.
  QTest::touchEvent(window, screen).stationary(0).press(1, centreOf(*c->ButtonMinus), window);
  EXPECT_EQ(c->total, 1);
  QTest::touchEvent(window, screen).stationary(0).release(1, centreOf(*c->ButtonMinus), window);
  QTest::touchEvent(window, screen).release(0, add, window);
  EXPECT_EQ(c->total, 1);
  EXPECT_FALSE(c->ButtonAdd->isHighlighted());
  EXPECT_TRUE(c->ButtonMinus->userInteractionEnabled());
}

TEST_F(RealScreen, ReleasesRunByTheKindOfButton) {
  struct Case {
    const char* button;
    bool releaseInside;
    const char* sound;  // what the release (or, for Reset, the action) plays
    bool runs;
  };
  // Counting buttons must see every release, or the locks would stay; the others act on a
  // release inside only.
  const Case cases[] = {
      {"ButtonAdd", false, "ButtonLetUp", true},
      {"ButtonReset", false, "ResetButton", false},
      {"ButtonReset", true, "ResetButton", true},
  };
  for (const Case& k : cases) {
    sound.played.clear();
    Button* b = app->screen().button(k.button);
    ASSERT_NE(b, nullptr);
    const QPoint inside = centreOf(*b);
    const QPoint outside = app->screen().toWindow(QPointF(5, 5)).toPoint();
    QTest::mousePress(window, Qt::LeftButton, {}, inside);
    EXPECT_TRUE(b->isHighlighted()) << k.button;
    QTest::mouseMove(window, k.releaseInside ? inside : outside);
    EXPECT_EQ(b->isHighlighted(), k.releaseInside) << k.button << ": highlighted only while the finger is on it";
    QTest::mouseRelease(window, Qt::LeftButton, {}, k.releaseInside ? inside : outside);
    EXPECT_EQ(played(k.sound), k.runs) << k.button << (k.releaseInside ? " inside" : " outside");
    EXPECT_FALSE(b->isHighlighted());
    if (b == c->ButtonAdd) {
      EXPECT_TRUE(c->ButtonMinus->userInteractionEnabled()) << "Add's locks lifted";
    }
  }
}

TEST_F(RealScreen, MinusCountsBackAndInfoAsksForTheMoreScreen) {
  QTest::mouseClick(window, Qt::LeftButton, {}, centreOf(*c->ButtonMinus));
  EXPECT_EQ(c->total, 9999);
  EXPECT_TRUE(c->ButtonAdd->userInteractionEnabled());
  QTest::mouseClick(window, Qt::LeftButton, {}, centreOf(*c->ButtonInfo));
  EXPECT_TRUE(log.has("\"moreViewController\" requested; More screen not available yet"));
}

TEST_F(RealScreen, AButtonThatIgnoresTouchesPassesThemToTheScreen) {
  c->ButtonAdd->setUserInteractionEnabled(false);
  tracker.tags.clear();
  QTest::mouseClick(window, Qt::LeftButton, {}, centreOf(*c->ButtonAdd));
  EXPECT_EQ(c->total, 0);
  EXPECT_FALSE(c->ButtonAdd->isHighlighted());
  EXPECT_NE(std::find(tracker.tags.begin(), tracker.tags.end(), "Touch began on timer"), tracker.tags.end());
}

TEST_F(RealScreen, TapOnTheRateLabelCyclesItsUnit) {
  c->Ass = 30;
  c->ShowOnLabel();
  QTest::mouseClick(window, Qt::LeftButton, {}, centreOf(*c->LabelAvg));
  EXPECT_EQ(c->tap, 2);
  EXPECT_NE(c->LabelAvg->text().find("/hour"), std::string::npos);
  auto* text = app->screen().label("LabelAvg")->item();
  EXPECT_EQ(text->property("text").toString().toStdString(), c->LabelAvg->text()) << "shown on screen";
}

TEST_F(RealScreen, DoubleTapOnTheClockAsksAndYesResetsIt) {
  c->Ass = 5;
  c->ShowOnLabel();
  ASSERT_EQ(c->LabelTimer->text(), "00:00:05");
  QQuickItem* overlay = app->screen().questionOverlay();
  ASSERT_NE(overlay, nullptr);
  EXPECT_FALSE(overlay->isVisible());

  // Two clicks within the double-click interval: tap counts 1, then 2.
  QTest::mouseDClick(window, Qt::LeftButton, {}, centreOf(*c->LabelTimer));
  ASSERT_TRUE(overlay->isVisible());
  EXPECT_EQ(c->TimerForLabelA, nullptr) << "the second tap stopped the clock the first one started";
  EXPECT_EQ(overlayPart("QuestionTitle")->property("text").toString(), "RESET TIMER");
  EXPECT_EQ(overlayPart("QuestionMessage")->property("text").toString(),
            "Are you sure you want\nto reset the timer?");
  QQuickItem* yes = overlayPart("QuestionButton0");
  QQuickItem* no = overlayPart("QuestionButton1");
  ASSERT_TRUE(yes && no);
  EXPECT_EQ(yes->property("label").toString(), "Yes");
  EXPECT_EQ(no->property("label").toString(), "No");
  EXPECT_LT(yes->mapToScene({0, 0}).x(), no->mapToScene({0, 0}).x()) << "buttons in the given order";

  // For looking at the question by eye: ZELLICK_SCREEN_GRABS=<folder>.
  if (const QByteArray dir = qgetenv("ZELLICK_SCREEN_GRABS"); !dir.isEmpty())
    window->grabWindow().save(QString::fromLocal8Bit(dir) + "/question.png");

  // The screen beneath ignores touches while the question shows.
  QTest::mouseClick(window, Qt::LeftButton, {}, centreOf(*c->ButtonAdd));
  EXPECT_EQ(c->total, 0);

  QTest::mouseClick(window, Qt::LeftButton, {}, centreOf(yes));
  EXPECT_FALSE(overlay->isVisible());
  EXPECT_EQ(c->Ahh, 0);
  EXPECT_EQ(c->Amm, 0);
  EXPECT_EQ(c->Ass, 0);
  EXPECT_EQ(c->LabelTimer->text(), "00:00:00");
  EXPECT_EQ(app->screen().label("LabelTimer")->item()->property("text").toString(), "00:00:00");

  QTest::mouseClick(window, Qt::LeftButton, {}, centreOf(*c->ButtonAdd));
  EXPECT_EQ(c->total, 1) << "touches reach the screen again";
}

TEST_F(RealScreen, LayoutFollowsTheBody) {
  const Rect body = c->baseImageView->frame();
  const Rect bounds = app->screen().rootView()->bounds();
  EXPECT_EQ(bounds.w, kScreenWidth);
  EXPECT_EQ(bounds.h, std::max(kMinScreenHeight, 640.0 * 320 / 360));
  EXPECT_EQ(body, (Rect{0, (bounds.h - 460) / 2, 320, 460}));
  // The wheels' clipping band sits at the aperture, so the wheel showing "0" fills it exactly.
  QQuickItem* band = app->screen().imageView("ImageView1")->item()->parentItem();
  const Rect aperture = frameInRoot(band, app->screen().rootItem());
  EXPECT_NEAR(aperture.y, c->initialPositionOfNumbers, 1e-9);
  EXPECT_EQ(aperture.h, kDigitCellHeight);
  EXPECT_TRUE(band->clip());
  // Every control the screen shows where the controller put it.
  for (const View* v : {static_cast<const View*>(c->ButtonAdd), static_cast<const View*>(c->LabelTimer),
                        static_cast<const View*>(c->ImageView2)}) {
    const Rect f = v->frame();
    QQuickItem* item = nullptr;
    if (v == c->ButtonAdd) item = app->screen().button("ButtonAdd")->item();
    if (v == c->LabelTimer) item = app->screen().label("LabelTimer")->item();
    if (v == c->ImageView2) item = app->screen().imageView("ImageView2")->item();
    settleAnimations();
    const Rect drawn = frameInRoot(item, app->screen().rootItem());
    EXPECT_NEAR(drawn.x, f.x, 1e-9);
    EXPECT_NEAR(drawn.y, f.y, 1e-9);
    EXPECT_EQ(drawn.w, f.w);
    EXPECT_EQ(drawn.h, f.h);
  }
}

}  // namespace
}  // namespace zellick

// The real screen, offscreen, with the real controller and the real Qt views: touches go
// through the window as the system would send them.
#include <QCoreApplication>
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
    app = std::make_unique<CounterApp>(CounterAppParts{defaults, sound, sound, log, tracker});
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

  QPoint centreOf(const View& view) const {
    return app->screen().toWindow(QPointF(view.frame().center().x, view.frame().center().y)).toPoint();
  }
  bool played(const std::string& name) const {
    return std::count(sound.played.begin(), sound.played.end(), "/bundle/" + name + ".caf") > 0;
  }
  static QQuickItem* find(QQuickItem* from, const QString& name) {
    if (from->objectName() == name) return from;
    for (QQuickItem* child : from->childItems())
      if (QQuickItem* found = find(child, name)) return found;
    return nullptr;
  }
  QQuickItem* overlayPart(const char* name) const { return find(app->screen().questionOverlay(), name); }
  void expectLocked(bool locked) const {
    for (Button* b : {c->ButtonMinus, c->ButtonReset, c->ButtonB, c->ButtonC})
      EXPECT_EQ(b->userInteractionEnabled(), !locked);
  }

  test::MemoryDefaults defaults;
  test::RecordingSound sound;
  test::RecordingLog log;
  test::NullTracker tracker;
  test::SteppedAnimationDriver driver;
  std::unique_ptr<CounterApp> app;
  QQuickWindow* window = nullptr;
  ZellickViewController* c = nullptr;
};

TEST_F(RealScreen, PressingAddCountsAndRollsTheUnitsWheel) {
  EXPECT_EQ(c->ImageView4->frame().y, c->initialPositionOfNumbers);
  const QPoint add = centreOf(*c->ButtonAdd);
  QTest::mousePress(window, Qt::LeftButton, {}, add);
  EXPECT_EQ(c->total, 1);
  EXPECT_TRUE(c->ButtonAdd->isHighlighted());
  EXPECT_EQ(c->ImageView4->frame().y, c->initialPositionOfNumbers - kDigitCellHeight);
  EXPECT_EQ(c->ImageView3->frame().y, c->initialPositionOfNumbers) << "tens digit unchanged";
  expectLocked(true);

  // The wheel item itself rolls to the new cell on Qt's animation clock, inside the clipping band.
  QQuickItem* units = app->screen().imageView("ImageView4")->item();
  for (int i = 0; i < 3; ++i) QCoreApplication::processEvents();
  for (int i = 0; i < 20; ++i) driver.step(50);
  EXPECT_NEAR(frameInRoot(units, app->screen().rootItem()).y, c->initialPositionOfNumbers - kDigitCellHeight, 1e-9);
  const Rect aperture = frameInRoot(units->parentItem(), app->screen().rootItem());
  EXPECT_NEAR(aperture.y, c->initialPositionOfNumbers, 1e-9);
  EXPECT_EQ(aperture.h, kDigitCellHeight);
  EXPECT_TRUE(units->parentItem()->clip());

  QTest::mouseRelease(window, Qt::LeftButton, {}, add);
  EXPECT_FALSE(c->ButtonAdd->isHighlighted());
  expectLocked(false);
  EXPECT_EQ(c->total, 1);
}

TEST_F(RealScreen, AFingerCountsOnceLikeTheMouse) {
  static QPointingDevice* screen = QTest::createTouchDevice();
  const QPoint add = centreOf(*c->ButtonAdd), minus = centreOf(*c->ButtonMinus);
  QTest::touchEvent(window, screen).press(0, add, window);
  EXPECT_EQ(c->total, 1);
  expectLocked(true);
  // A second finger while the first is down is not another press.
  QTest::touchEvent(window, screen).stationary(0).press(1, minus, window);
  QTest::touchEvent(window, screen).stationary(0).release(1, minus, window);
  QTest::touchEvent(window, screen).release(0, add, window);
  EXPECT_EQ(c->total, 1);
  expectLocked(false);
}

// Counting buttons must see every release, or the locks would stay; the others act on a
// release inside only.
TEST_F(RealScreen, ReleasesRunByTheKindOfButton) {
  struct Case {
    const char* button;
    bool releaseInside;
    const char* sound;  // what the release (or, for Reset, the action) plays
    bool runs;
  };
  const Case cases[] = {{"ButtonAdd", false, "ButtonLetUp", true},
                        {"ButtonReset", false, "ResetButton", false},
                        {"ButtonReset", true, "ResetButton", true}};
  for (const Case& k : cases) {
    sound.played.clear();
    Button* b = app->screen().button(k.button);
    const QPoint at = k.releaseInside ? centreOf(*b) : app->screen().toWindow(QPointF(5, 5)).toPoint();
    QTest::mousePress(window, Qt::LeftButton, {}, centreOf(*b));
    QTest::mouseMove(window, at);
    EXPECT_EQ(b->isHighlighted(), k.releaseInside) << k.button;
    QTest::mouseRelease(window, Qt::LeftButton, {}, at);
    EXPECT_EQ(played(k.sound), k.runs) << k.button << (k.releaseInside ? " inside" : " outside");
    EXPECT_FALSE(b->isHighlighted());
    if (b == c->ButtonAdd) expectLocked(false);
  }
}

TEST_F(RealScreen, DoubleTapOnTheClockAsksAndYesResetsIt) {
  c->Ass = 5;
  c->ShowOnLabel();
  QQuickItem* overlay = app->screen().questionOverlay();
  ASSERT_FALSE(overlay->isVisible());

  QTest::mouseDClick(window, Qt::LeftButton, {}, centreOf(*c->LabelTimer));
  ASSERT_TRUE(overlay->isVisible());
  EXPECT_EQ(overlayPart("QuestionTitle")->property("text").toString(), "RESET TIMER");
  QQuickItem* yes = overlayPart("QuestionButton0");
  ASSERT_NE(yes, nullptr);
  EXPECT_EQ(yes->property("label").toString(), "Yes");

  QTest::mouseClick(window, Qt::LeftButton, {}, centreOf(*c->ButtonAdd));
  EXPECT_EQ(c->total, 0) << "the screen beneath ignores touches while the question shows";

  QTest::mouseClick(window, Qt::LeftButton, {}, yes->mapToScene(QPointF(yes->width() / 2, yes->height() / 2)).toPoint());
  EXPECT_FALSE(overlay->isVisible());
  EXPECT_EQ(c->LabelTimer->text(), "00:00:00");
  EXPECT_EQ(app->screen().label("LabelTimer")->item()->property("text").toString(), "00:00:00");

  QTest::mouseClick(window, Qt::LeftButton, {}, centreOf(*c->ButtonAdd));
  EXPECT_EQ(c->total, 1) << "touches reach the screen again";
}

}  // namespace
}  // namespace zellick

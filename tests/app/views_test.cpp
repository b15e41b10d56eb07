#include <QCoreApplication>
#include <QElapsedTimer>
#include <QQuickItem>

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "fakes.h"
#include "platform/qt/qt_presenters.h"
#include "platform/qt/qt_runloop.h"
#include "platform/qt/qt_views.h"

namespace zellick {
namespace {

// A logical screen scaled like the app's, with a clipping band at an offset holding a wheel.
struct Scene {
  Scene() {
    root.setSize({320, 568});
    root.setTransformOrigin(QQuickItem::TopLeft);
    root.setScale(2.25);
    root.setPosition({0, 40});
    band.setParentItem(&root);
    band.setPosition({0, 200});
    band.setSize({320, 101});
    band.setClip(true);
    inner.setParentItem(&band);
    inner.setPosition({12, -7});
    wheel.setParentItem(&inner);
    wheel.setSize({46, 1111});
  }
  QQuickItem root, band, inner, wheel;
};

TEST(FrameMapping, RootFramesReadBackThroughOffsetContainers) {
  const Rect frames[] = {{64, 233.3, 46, 1111}, {0, 0, 10, 10}, {-20.5, -1000, 46, 1111}, {300, 600, 1, 2}};
  for (const Rect& f : frames) {
    Scene s;
    placeInRoot(&s.wheel, &s.root, f);
    const Rect back = frameInRoot(&s.wheel, &s.root);
    EXPECT_NEAR(back.x, f.x, 1e-9);
    EXPECT_NEAR(back.y, f.y, 1e-9);
    EXPECT_EQ(back.w, f.w);
    EXPECT_EQ(back.h, f.h);
    // The item itself holds container coordinates: the containers' offsets taken off.
    EXPECT_NEAR(s.wheel.y(), f.y - 200 + 7, 1e-9);
    EXPECT_NEAR(s.wheel.x(), f.x - 12, 1e-9);
  }
}

TEST(FrameMapping, ViewStartsFromItsPlaceOnScreen) {
  Scene s;
  s.wheel.setPosition({50, 0});
  test::RecordingLog log;
  QtImageView view(&s.wheel, &s.root, 0, log);
  EXPECT_EQ(view.frame(), (Rect{62, 193, 46, 1111}));
  view.setFrame({70, 180, 46, 1111});
  EXPECT_EQ(view.frame(), (Rect{70, 180, 46, 1111}));
  EXPECT_EQ(frameInRoot(&s.wheel, &s.root), (Rect{70, 180, 46, 1111}));
}

TEST(FrameMapping, InvalidFramesAreRefusedWithALogLine) {
  Scene s;
  test::RecordingLog log;
  QtImageView view(&s.wheel, &s.root, 0, log);
  view.setName("ImageView4");
  view.setFrame({10, 20, 46, 1111});
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const Rect bad[] = {{nan, 0, 1, 1}, {0, std::numeric_limits<double>::infinity(), 1, 1}, {0, 0, -1, 5}};
  for (const Rect& b : bad) {
    view.setFrame(b);
    EXPECT_EQ(view.frame(), (Rect{10, 20, 46, 1111}));
  }
  EXPECT_TRUE(log.has("invalid frame for ImageView4"));
}

class AnimatedFrame : public testing::Test {
 protected:
  void SetUp() override { driver.install(); }
  void TearDown() override { driver.uninstall(); }
  // Animations start on the next pass of the event loop; only then does time move them.
  void step(int ms) {
    for (int i = 0; i < 3; ++i) QCoreApplication::processEvents();
    driver.step(ms);
  }
  double drawnY() const { return frameInRoot(&scene.wheel, &scene.root).y; }

  test::SteppedAnimationDriver driver;
  Scene scene;
  test::RecordingLog log;
};

TEST_F(AnimatedFrame, ReportsTheTargetAtOnceAndGetsThereOnTime) {
  QtImageView view(&scene.wheel, &scene.root, 0, log);
  view.setFrame({64, 233, 46, 1111});
  view.animateFrame({64, 132, 46, 1111}, 0.3);
  EXPECT_EQ(view.frame().y, 132);
  EXPECT_EQ(drawnY(), 233) << "nothing moves before time passes";
  step(150);
  EXPECT_NEAR(drawnY(), 182.5, 0.5) << "halfway in time is halfway on an ease-in-out curve";
  step(100);
  EXPECT_GT(drawnY(), 132);
  EXPECT_LT(drawnY(), 140) << "slowing down at the end";
  step(60);
  EXPECT_EQ(drawnY(), 132);
  EXPECT_FALSE(view.isAnimating());
}

TEST_F(AnimatedFrame, NewMovesRetargetARunningOne) {
  QtImageView view(&scene.wheel, &scene.root, 0, log);
  view.setFrame({64, 233, 46, 1111});
  view.animateFrame({64, -777, 46, 1111}, 0.15);  // into the roll-over cell
  step(75);
  const double midway = drawnY();
  EXPECT_LT(midway, 233);
  EXPECT_GT(midway, -777);
  // A jump ends the move where it is asked to be, and the old move no longer pulls.
  view.setFrame({64, 233, 46, 1111});
  EXPECT_FALSE(view.isAnimating());
  step(200);
  EXPECT_EQ(drawnY(), 233);
  // An animated move from mid-flight starts from where the wheel is drawn.
  view.animateFrame({64, 132, 46, 1111}, 0.3);
  step(150);
  view.animateFrame({64, 31, 46, 1111}, 0.3);
  EXPECT_EQ(view.frame().y, 31);
  const double from = drawnY();
  step(1);
  EXPECT_NEAR(drawnY(), from, 1.0) << "no jump when retargeting";
  step(400);
  EXPECT_EQ(drawnY(), 31);
}

TEST_F(AnimatedFrame, ZeroOrBadDurationsMoveAtOnce) {
  for (double seconds : {0.0, -1.0, std::numeric_limits<double>::quiet_NaN()}) {
    QtImageView view(&scene.wheel, &scene.root, 0, log);
    view.setFrame({64, 233, 46, 1111});
    view.animateFrame({64, 31, 46, 1111}, seconds);
    EXPECT_EQ(drawnY(), 31) << seconds;
    EXPECT_FALSE(view.isAnimating());
  }
}

TEST(Artwork, NamesMapToBundledVectorArt) {
  struct Case {
    const char* name;
    bool found;
  };
  // Without the art linked in nothing is found; with it, every spelling of a name is.
  const bool art = !artworkUrl("a-up.png").isEmpty();
  const Case cases[] = {{"a-up.png", art},  {"a-up", art},          {"a-up@2x.png", art}, {"b-down.png", art},
                        {"", false},        {"../a-up.png", false}, {"nope.png", false},  {"images/a-up.png", false}};
  for (const Case& c : cases) EXPECT_EQ(!artworkUrl(c.name).isEmpty(), c.found) << c.name;
  if (art) {
    EXPECT_EQ(artworkUrl("c-up.png").toString().toStdString(), "image://art/c-up");
  }
}

// Spins the event loop until `done` or two seconds pass.
template <class F>
bool waitFor(F done) {
  QElapsedTimer t;
  t.start();
  while (!done() && t.elapsed() < 2000) QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 10);
  return done();
}

TEST(RunLoop, TimersFireOnceInDueOrder) {
  QtRunLoop loop;
  std::vector<std::string> fired;
  auto a = loop.scheduledTimer(0.03, [&](Timer& t) {
    fired.push_back(t.isValid() ? "a valid" : "a invalid");
  });
  auto b = loop.scheduledTimer(0.01, [&](Timer&) { fired.push_back("b"); });
  loop.dispatchAfter(0.02, [&] { fired.push_back("c"); });
  auto cancelled = loop.scheduledTimer(0.015, [&](Timer&) { fired.push_back("cancelled"); });
  cancelled->invalidate();
  cancelled->invalidate();
  EXPECT_FALSE(cancelled->isValid());
  ASSERT_TRUE(waitFor([&] { return fired.size() >= 3; }));
  EXPECT_EQ(fired, (std::vector<std::string>{"b", "c", "a valid"}));
  EXPECT_FALSE(a->isValid());
  EXPECT_FALSE(b->isValid());
  EXPECT_EQ(loop.pendingCount(), 0u);
}

TEST(RunLoop, ATimerDroppedOrInvalidatedInItsCallbackIsSafe) {
  QtRunLoop loop;
  TimerRef held;
  int calls = 0;
  held = loop.scheduledTimer(0, [&](Timer& t) {
    ++calls;
    t.invalidate();
    held.reset();  // the last outside reference goes while it runs
  });
  // A chain of one-shot timers, each scheduling the next, as the clock ticks do.
  int ticks = 0;
  std::function<void(Timer&)> tick = [&](Timer&) {
    if (++ticks < 3) loop.scheduledTimer(0.001, tick);
  };
  loop.scheduledTimer(0.001, tick);
  ASSERT_TRUE(waitFor([&] { return calls == 1 && ticks == 3; }));
  EXPECT_EQ(held, nullptr);
}

TEST(Questions, OneAtATimeWithTheAnswerIndexAndTag) {
  QQuickItem overlay;  // no answered() signal here: answers are sent through the slot by name
  test::RecordingLog log;
  QtAlertPresenter alerts(&overlay, log);
  std::vector<std::pair<int, int>> answers;  // tag, index
  auto answer = [&](AlertView& a, int i) { answers.emplace_back(a.tag(), i); };
  auto first = std::make_shared<AlertView>("RESET TIMER", "Are you sure you want\nto reset the timer?",
                                           std::vector<std::string>{"Yes", "No"});
  first->setTag(201);
  auto second = std::make_shared<AlertView>("NOTICE", "Counter is already reset to 0000",
                                            std::vector<std::string>{"OK"});
  alerts.show(first, answer);
  alerts.show(second, nullptr);
  EXPECT_TRUE(overlay.property("shown").toBool());
  EXPECT_EQ(overlay.property("title").toString(), "RESET TIMER");
  EXPECT_EQ(overlay.property("message").toString(), "Are you sure you want\nto reset the timer?");
  EXPECT_EQ(overlay.property("buttons").toStringList(), (QStringList{"Yes", "No"}));
  EXPECT_EQ(alerts.waiting(), 1u);

  QMetaObject::invokeMethod(&alerts, "onAnswered", Q_ARG(int, 5));  // no such button
  EXPECT_TRUE(answers.empty());
  QMetaObject::invokeMethod(&alerts, "onAnswered", Q_ARG(int, 1));
  EXPECT_EQ(answers, (std::vector<std::pair<int, int>>{{201, 1}}));
  EXPECT_EQ(overlay.property("title").toString(), "NOTICE");
  EXPECT_EQ(overlay.property("buttons").toStringList(), (QStringList{"OK"}));
  QMetaObject::invokeMethod(&alerts, "onAnswered", Q_ARG(int, 0));  // no answer handler: fine
  EXPECT_FALSE(overlay.property("shown").toBool());
  EXPECT_EQ(alerts.current(), nullptr);
  EXPECT_TRUE(log.has("unknown button 5"));
}

}  // namespace
}  // namespace zellick

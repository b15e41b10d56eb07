// The Qt views and questions on their own items, and work deferred until after the first frame.
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QQuickItem>
#include <QQuickWindow>

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "platform/fake/services.h"
#include "support/qt.h"
#include "ui/first_frame.h"
#include "ui/questions.h"
#include "ui/views.h"

namespace zellick::test {
namespace {

using fake::RecordingLog;
using namespace ui;

// Frames are in the root's coordinates whatever containers lie between; moves report their
// target at once, get there on Qt's animation clock, and a jump or a new move replaces a running
// one.
TEST(ImageView, PlacesThroughContainersAndGetsToTheLastTargetAskedFor) {
  SteppedAnimationDriver driver;
  driver.install();
  // A logical screen scaled like the app's, with a clipping band at an offset holding a wheel.
  QQuickItem root, band, inner, wheel;
  root.setSize({320, 568});
  root.setTransformOrigin(QQuickItem::TopLeft);
  root.setScale(2.25);
  root.setPosition({0, 40});
  band.setParentItem(&root);
  band.setPosition({0, 200});
  band.setClip(true);
  inner.setParentItem(&band);
  inner.setPosition({12, -7});
  wheel.setParentItem(&inner);
  RecordingLog log;
  QtImageView view(&wheel, &root, 0, log);
  const auto step = [&](int ms) {
    for (int i = 0; i < 3; ++i) QCoreApplication::processEvents();
    driver.step(ms);
  };
  const auto drawnY = [&] { return frameInRoot(&wheel, &root).y; };
  view.setFrame({-20.5, -1000, 40, 1111});
  // The item itself holds container coordinates: the containers' offsets taken off.
  EXPECT_NEAR(wheel.x(), -20.5 - 12, 1e-9);
  EXPECT_NEAR(wheel.y(), -1000 - 200 + 7, 1e-9);
  const Rect back = frameInRoot(&wheel, &root);
  EXPECT_NEAR(back.x, -20.5, 1e-9);
  EXPECT_NEAR(back.y, -1000, 1e-9);
  EXPECT_TRUE(back.w == 40 && back.h == 1111 && wheel.size() == QSizeF(40, 1111));
  view.setFrame({64, 233, 46, 1111});
  view.animateFrame({64, -777, 46, 1111}, 0.15);
  EXPECT_EQ(view.frame().y, -777);
  step(75);
  EXPECT_LT(drawnY(), 233);
  EXPECT_GT(drawnY(), -777);
  view.setFrame({64, 233, 46, 1111});
  step(200);
  EXPECT_EQ(drawnY(), 233) << "the old move no longer pulls";
  view.animateFrame({64, 132, 46, 1111}, 0.3);
  step(150);
  const double from = drawnY();
  EXPECT_GT(from, 140) << "the move to 132 is under way";
  view.animateFrame({64, 31, 46, 1111}, 0.3);
  step(1);
  EXPECT_NEAR(drawnY(), from, 1.0) << "no jump when retargeting";
  step(400);
  EXPECT_EQ(drawnY(), 31);
  EXPECT_FALSE(view.isAnimating());
  view.animateFrame({64, 132, 46, 1111}, 0.0);
  EXPECT_EQ(drawnY(), 132) << "zero duration moves at once";
  driver.uninstall();
}

TEST(Questions, OneAtATimeWithTheAnswerIndexAndTag) {
  QQuickItem overlay;  // no answered() signal here: answers are sent through the slot by name
  RecordingLog log;
  int built = 0, prepared = 0;
  QtAlertPresenter alerts(
      [&] {
        ++built;
        return &overlay;
      },
      log);
  alerts.setBeforeShow([&] { ++prepared; });
  EXPECT_EQ(built, 0) << "the overlay is built for the first question, not before";
  std::vector<std::pair<int, int>> answers;  // tag, index
  auto first =
      std::make_shared<AlertView>("RESET TIMER", "?", std::vector<std::string>{"Yes", "No"});
  first->setTag(201);
  alerts.show(first, [&](AlertView& a, int i) { answers.emplace_back(a.tag(), i); });
  alerts.show(std::make_shared<AlertView>("NOTICE", "!", std::vector<std::string>{"OK"}), nullptr);
  EXPECT_EQ(prepared, 1);
  EXPECT_EQ(overlay.property("title").toString(), "RESET TIMER");
  EXPECT_EQ(overlay.property("buttons").toStringList(), (QStringList{"Yes", "No"}));

  QMetaObject::invokeMethod(&alerts, "onAnswered", Q_ARG(int, 5));  // no such button
  EXPECT_TRUE(answers.empty());
  QMetaObject::invokeMethod(&alerts, "onAnswered", Q_ARG(int, 1));
  EXPECT_EQ(answers, (std::vector<std::pair<int, int>>{{201, 1}}));
  EXPECT_EQ(overlay.property("title").toString(), "NOTICE");
  QMetaObject::invokeMethod(&alerts, "onAnswered", Q_ARG(int, 0));  // no answer handler: fine
  EXPECT_FALSE(overlay.property("shown").toBool());
  EXPECT_EQ(built, 1);
  EXPECT_EQ(prepared, 2);
}

TEST(Questions, WithoutAnOverlayTheFirstButtonAnswersAndItIsLogged) {
  RecordingLog log;
  int built = 0;
  QtAlertPresenter alerts(
      [&]() -> QQuickItem* {
        ++built;
        return nullptr;
      },
      log);
  std::vector<int> answers;
  for (int i = 0; i < 2; ++i)
    alerts.show(std::make_shared<AlertView>("NOTICE", "!", std::vector<std::string>{"OK", "No"}),
                [&](AlertView&, int index) { answers.push_back(index); });
  EXPECT_EQ(answers, (std::vector<int>{0, 0}));
  EXPECT_EQ(built, 1) << "a failed build is not retried on every question";
  EXPECT_EQ(log.lines.size(), 2u);
}

// Deferred work runs once, after the first frame; not at all when its owner went first.
TEST(AfterFirstFrame, RunsOnceAfterTheFrameUnlessItsOwnerIsGone) {
  QQuickWindow window;
  window.resize(100, 100);
  auto owner = std::make_unique<QObject>(), gone = std::make_unique<QObject>();
  int ran = 0, ranForGone = 0;
  afterFirstFrame(&window, owner.get(), [&] { ++ran; });
  afterFirstFrame(&window, gone.get(), [&] { ++ranForGone; });
  gone.reset();
  QCoreApplication::processEvents();
  EXPECT_EQ(ran, 0) << "ran before any frame";
  window.show();
  ASSERT_TRUE(waitFor([&] { return ran > 0; }));
  window.update();
  QElapsedTimer t;
  t.start();
  while (t.elapsed() < 300) QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
  EXPECT_EQ(ran, 1);
  EXPECT_EQ(ranForGone, 0);
}

}  // namespace
}  // namespace zellick::test

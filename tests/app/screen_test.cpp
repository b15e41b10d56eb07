// The real screen, offscreen, with the real controller and the real Qt views on the recording
// services: touches go through the window as the system would send them.
#include <QColor>
#include <QCoreApplication>
#include <QFont>
#include <QImage>
#include <QQuickItem>
#include <QQuickWindow>
#include <QTemporaryDir>
#include <QTest>
#include <QWheelEvent>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <memory>
#include <optional>
#include <set>
#include <string>

#include "app/counter_screen.h"
#include "counter/interface.h"
#include "counter/sounds.h"
#include "platform/fake/application.h"
#include "platform/fake/http.h"
#include "platform/fake/memory_defaults.h"
#include "platform/fake/services.h"
#include "platform/qt/documents.h"
#include "services/apps.h"
#include "sim/simulation.h"
#include "support/qt.h"
#include "ui/table.h"

namespace zellick::test {
namespace {

using namespace fake;
using ui::frameInRoot;

// Through the visual tree: the question's buttons come from a repeater, outside the QObject tree.
void findAll(QQuickItem* from, const QString& name, std::vector<QQuickItem*>& found) {
  if (from->objectName() == name) found.push_back(from);
  for (QQuickItem* child : from->childItems()) findAll(child, name, found);
}

QQuickItem* find(QQuickItem* from, const QString& name) {
  std::vector<QQuickItem*> found;
  findAll(from, name, found);
  return found.empty() ? nullptr : found.front();
}

class RealScreen : public testing::Test {
 protected:
  void SetUp() override {
    // Memory A was left at 1234: becoming active once the screen is built puts it on the wheels.
    defaults.setObject("Counters", DefaultsArray{1234LL, 0LL, 0LL});
    ui::registerBundledFonts(log);
    app = std::make_unique<CounterScreen>(
        CounterParts{defaults, sound, bundle, log, tracker, application, apps, configuration});
    CounterScreenOptions options;
    options.windowProperties = QVariantMap{{"width", 360}, {"height", 640}};
    ASSERT_TRUE(app->load(options));
    window = app->screen().window();
    app->start();  // shows the window
    ASSERT_TRUE(QTest::qWaitForWindowExposed(window));
    // The render loop installs its own driver with the window; ours replaces it.
    driver.install();
    app->activate();
    c = &app->controller();
  }
  void TearDown() override {
    if (HasFailure())
      for (const auto& line : events.all()) std::fprintf(stderr, "%s\n", line.c_str());
    if (window) driver.uninstall();
    app.reset();
  }

  QPoint centreOf(const View& view) const {
    return app->screen()
        .toWindow(QPointF(view.frame().center().x, view.frame().center().y))
        .toPoint();
  }
  QPoint background() const { return app->screen().toWindow(QPointF(5, 5)).toPoint(); }
  void click(const View& view) { QTest::mouseClick(window, Qt::LeftButton, {}, centreOf(view)); }
  // A click on `item` at `at` in its own coordinates (its centre when not given).
  void click(QQuickItem* item, std::optional<QPointF> at = {}) {
    const QPointF point = at.value_or(QPointF(item->width() / 2, item->height() / 2));
    QTest::mouseClick(window, Qt::LeftButton, {}, item->mapToScene(point).toPoint());
  }
  // Lets the scene graph take up what changed, then moves the animations on by `ms`.
  void animate(int ms) {
    for (int i = 0; i < 3; ++i) QCoreApplication::processEvents();
    driver.step(ms);
  }
  // Whether `what` ("sound NAME", "track TAG"), and `also` if given, happened since the last look.
  bool saw(const std::string& what, const std::string& also = {}) {
    const auto recent = events.takeNew();
    const auto happened = [&](const std::string& w) {
      return std::any_of(recent.begin(), recent.end(),
                         [&](auto& e) { return e.ends_with(" " + w); });
    };
    return happened(what) && (also.empty() || happened(also));
  }
  double drawnY(const char* wheel) const {
    return frameInRoot(app->screen().imageView(wheel)->item(), app->screen().rootItem()).y;
  }
  double digitY(int digit) const { return c->initialPositionOfNumbers - digit * kDigitCellHeight; }
  QQuickItem* item(const char* label) const { return app->screen().label(label)->item(); }
  QString colour(const char* label) const {
    return item(label)->property("color").value<QColor>().name();
  }
  void expectLocked(bool locked) const {
    for (Button* b : {c->ButtonMinus, c->ButtonReset, c->ButtonB, c->ButtonC})
      EXPECT_EQ(b->userInteractionEnabled(), !locked);
  }

  VirtualTime time;  // never advanced: the recording only needs an order
  EventRecorder events{time};
  MemoryDefaults defaults;
  RecordingSoundOutput sound{events};
  FakeBundle bundle{[] {
    std::set<std::string> files;
    for (const char* sound : kCounterSounds) files.insert(std::string(sound) + "." + kSoundType);
    return files;
  }()};
  EventLog log{events};
  VirtualRunLoop network{time};  // never run: records are only seen as "track" events
  HttpRules rules;
  FakeHttpClient http{network, rules, events};
  sim::RecordingTracker tracker{{http, defaults, log}, {}, "http://127.0.0.1:9/", events};
  FakeApplication application{events};
  WallClock wall{time, 1800000000};
  QTemporaryDir folder;
  qt::FolderDocuments documents{folder.path()};
  const Configuration& configuration = Configuration::shipped();
  orvapps apps{{http, defaults, documents, bundle, wall, log}, configuration};
  SteppedAnimationDriver driver;
  std::unique_ptr<CounterScreen> app;
  QQuickWindow* window = nullptr;
  ZellickViewController* c = nullptr;
};

TEST_F(RealScreen, StartsOnTheSavedCountWithGreyLabelsInTheBundledFont) {
  EXPECT_EQ(c->total, 1234);
  const char* wheels[] = {"ImageView1", "ImageView2", "ImageView3", "ImageView4"};
  for (int i = 0; i < 4; ++i) EXPECT_NEAR(drawnY(wheels[i]), digitY(i + 1), 1e-9) << wheels[i];
  for (const char* name : {"LabelTimer", "LabelAvg"}) {
    EXPECT_EQ(colour(name), "#808080") << name;
    const QFont font = item(name)->property("font").value<QFont>();
    EXPECT_EQ(font.family(), "Roboto Condensed") << name;
    EXPECT_TRUE(font.bold() && font.pixelSize() == 17) << name;
  }
}

// The units wheel rolls on Qt's animation clock inside its clipping band; the other buttons
// stay locked until the finger lifts, and a second finger meanwhile is no press.
TEST_F(RealScreen, AFingerOnAddCountsOnceAndRollsTheUnitsWheel) {
  static QPointingDevice* screen = QTest::createTouchDevice();
  const QPoint add = centreOf(*c->ButtonAdd), beside = add + QPoint(12, 0);
  QTest::touchEvent(window, screen).press(0, add, window);
  EXPECT_EQ(c->total, 1235);
  expectLocked(true);

  animate(0);
  for (int i = 0; i < 20; ++i) driver.step(50);
  EXPECT_NEAR(drawnY("ImageView4"), digitY(5), 1e-9);
  EXPECT_NEAR(drawnY("ImageView3"), digitY(3), 1e-9) << "tens digit unchanged";
  QQuickItem* band = app->screen().imageView("ImageView4")->item()->parentItem();
  const Rect aperture = frameInRoot(band, app->screen().rootItem());
  EXPECT_NEAR(aperture.y, digitY(0), 1e-9);
  EXPECT_EQ(aperture.h, kDigitCellHeight);
  EXPECT_TRUE(band->clip());

  QTest::touchEvent(window, screen).stationary(0).press(1, beside, window);
  QTest::touchEvent(window, screen).stationary(0).release(1, beside, window);
  QTest::touchEvent(window, screen).release(0, add, window);
  EXPECT_EQ(c->total, 1235);
  expectLocked(false);
}

// Counting buttons must see every release, or their locks would stay; the others act on a
// release inside only, and one that ignores touches lets them through to the screen.
TEST_F(RealScreen, ReleasesRunByTheKindOfButton) {
  struct Case {
    const char* button;
    bool releaseInside;
    bool takesTouches;
    const char*
        effect;  // what the release (for Reset, the action; for a passed touch, the screen) does
    bool runs;
  };
  const Case cases[] = {
      {"ButtonAdd", false, true, "sound ButtonLetUp", true},
      {"ButtonB", true, true, "sound Counter Click3", true},
      {"ButtonB", true, false, "track Touch began on timer", true},  // B is the memory shown
      {"ButtonReset", false, true, "sound ResetButton", false},
      {"ButtonReset", true, true, "sound ResetButton", true}};
  for (const Case& k : cases) {
    events.takeNew();
    Button* b = app->screen().button(k.button);
    const QPoint at = k.releaseInside ? centreOf(*b) : background();
    QTest::mousePress(window, Qt::LeftButton, {}, centreOf(*b));
    QTest::mouseMove(window, at);
    EXPECT_EQ(b->isHighlighted(), k.releaseInside && k.takesTouches) << k.button;
    QTest::mouseRelease(window, Qt::LeftButton, {}, at);
    EXPECT_EQ(saw(k.effect), k.runs) << k.button << (k.releaseInside ? " inside" : " outside");
    EXPECT_FALSE(b->isHighlighted());
    if (b == c->ButtonAdd) expectLocked(false);
  }
  EXPECT_EQ(app->screen().button("ButtonA")->item()->property("source").toUrl(),
            QUrl("image://art/a-up"));
  EXPECT_EQ(app->screen().button("ButtonB")->item()->property("source").toUrl(),
            QUrl("image://art/b-down"));
}

// The pressed pictures are no part of the first frame; once it is out they load, and until
// one is in, a finger on its button dims the normal picture instead.
TEST_F(RealScreen, PressedPicturesLoadAfterTheFirstFrame) {
  QQuickItem* add = app->screen().button("ButtonAdd")->item();
  QQuickItem* info = app->screen().button("ButtonInfo")->item();
  ASSERT_TRUE(
      waitFor([&] { return app->screen().rootItem()->property("firstFrameShown").toBool(); }));
  add->setProperty("highlighted", true);
  info->setProperty("highlighted", true);
  ASSERT_TRUE(waitFor([&] { return add->property("pressedShown").toBool(); }));
  EXPECT_FALSE(info->property("pressedShown").toBool()) << "Info has no pressed picture";
  const auto pictures = [](QQuickItem* button) {
    int shown = 0;
    for (QQuickItem* child : button->childItems()) shown += child->isVisible();
    return shown;
  };
  EXPECT_EQ(pictures(add), 1) << "the pressed picture in place of the normal one";
  EXPECT_EQ(pictures(info), 1);
  EXPECT_LT(info->childItems().front()->opacity(), 1.0);
}

TEST_F(RealScreen, DoubleTapOnTheClockAsksAndYesResetsIt) {
  c->Ass = 5;
  c->ShowOnLabel();
  EXPECT_EQ(find(window->contentItem(), "QuestionOverlay"), nullptr)
      << "built only when first asked";
  QQuickItem* overlay = app->screen().questionOverlay();
  ASSERT_NE(overlay, nullptr);
  EXPECT_EQ(app->screen().questionOverlay(), overlay) << "built once";
  // Only the clock's tag runs the clock: a tap on the background leaves it stopped.
  QTest::mouseClick(window, Qt::LeftButton, {}, background());
  EXPECT_EQ(colour("LabelTimer"), "#808080");
  ASSERT_FALSE(overlay->isVisible());

  QTest::mouseDClick(window, Qt::LeftButton, {}, centreOf(*c->LabelTimer));
  ASSERT_TRUE(overlay->isVisible());
  EXPECT_EQ(colour("LabelTimer"), "#ffffff") << "the first tap ran the clock";
  EXPECT_EQ(find(overlay, "QuestionTitle")->property("text").toString(), "RESET TIMER");
  QQuickItem* yes = find(overlay, "QuestionButton0");
  ASSERT_NE(yes, nullptr);
  EXPECT_EQ(yes->property("label").toString(), "Yes");

  click(*c->ButtonAdd);
  EXPECT_EQ(c->total, 1234) << "the screen beneath ignores touches while the question shows";

  click(yes);
  EXPECT_FALSE(overlay->isVisible());
  EXPECT_EQ(item("LabelTimer")->property("text").toString(), "00:00:00");

  click(*c->ButtonAdd);
  EXPECT_EQ(c->total, 1235) << "touches reach the screen again";
}

// One row of the More screen's list as drawn: its text, where it lies in the table, its pictures.
struct DrawnRow {
  QString text;
  double y;
  QQuickItem* body;
  QQuickItem* picture;
  QQuickItem* icon;
};

std::vector<DrawnRow> drawnRows(QQuickItem* table) {
  std::vector<DrawnRow> rows;
  QQuickItem* list = find(table, "TableList");
  auto* content = list->property("contentItem").value<QQuickItem*>();
  for (QQuickItem* entry : content->childItems()) {
    if (entry->objectName() != "TableRow" || !entry->isVisible()) continue;
    rows.push_back({find(entry, "CellText")->property("text").toString(),
                    entry->mapToItem(table, QPointF(0, 0)).y(), entry->childItems().front(),
                    find(entry, "CellPicture"), find(entry, "CellIcon")});
  }
  std::sort(rows.begin(), rows.end(), [](auto& a, auto& b) { return a.y < b.y; });
  return rows;
}

// Info brings the More screen over the counter: its rows are made only as they come into view,
// pictures and an icon file shown, the list scrolls by drag and wheel, a tap opens the row's
// link and its highlight fades, and Back slides the screen away and gives the counter back its
// touches.
TEST_F(RealScreen, InfoOpensTheMoreScreenAndBackTakesItAway) {
  constexpr int kApps = 2000;
  const auto appleid = [](int i) { return std::to_string(600000000 + i); };
  DefaultsArray list;
  for (long long i = 0; i < kApps; ++i) {
    list.emplace_back(DefaultsDictionary{{kAppIdKey, i},
                                         {kAppNameKey, "App " + std::to_string(i)},
                                         {kAppleIdKey, appleid(i)},
                                         {kPriorityKey, i}});
  }
  defaults.setObject(kMoreAppsKey, list);
  const QString iconFile =
      folder.filePath(QString::fromStdString(orvapps::iconFileName(appleid(1))));
  QImage red(114, 114, QImage::Format_RGB32);
  red.fill(Qt::red);
  ASSERT_TRUE(red.save(iconFile, "PNG"));

  click(*c->ButtonInfo);
  EXPECT_TRUE(saw("track Info"));
  ASSERT_NE(app->more().screen(), nullptr);
  auto* table = dynamic_cast<ui::QtTableView*>(app->more().screen()->tableView("pTblView"));
  ASSERT_NE(table, nullptr);
  QQuickItem* tableItem = table->item();
  QPointer<QQuickItem> overlay = app->screenHost().shown().at(0)->item();
  ASSERT_TRUE(waitFor([&] { return !drawnRows(tableItem).empty(); }));

  std::vector<DrawnRow> rows = drawnRows(tableItem);
  ASSERT_GE(rows.size(), 8u);
  EXPECT_LE(rows.size(), 13u) << "only the rows in view are made";
  const double ys[] = {50, 94, 138, 222, 266};
  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ(rows[i].text, kFeedbackRows[i].text);
    EXPECT_EQ(rows[i].picture->property("status").toInt(), 1 /* Ready */) << rows[i].text.data();
  }
  for (int i = 0; i < 5; ++i) EXPECT_EQ(rows[i].y, ys[i]) << i;
  EXPECT_EQ(rows[3].text, "App 0");
  EXPECT_EQ(rows[4].text, "App 1");
  EXPECT_EQ(rows[3].icon->property("source").toUrl(), QUrl()) << "App 0 has no icon file";
  EXPECT_EQ(rows[4].icon->property("source").toUrl(), QUrl::fromLocalFile(iconFile));
  QQuickItem* icon = rows[4].icon;
  EXPECT_TRUE(waitFor([&] { return icon->property("status").toInt() == 1; }));
  EXPECT_EQ(table->cellForRowAtIndexPath({kAppsSection, 1})->text, "App 1");
  EXPECT_FALSE(table->cellForRowAtIndexPath({kAppsSection, 100})) << "not made";

  // The second header label lies below the header, in the gap before the apps: drawn there.
  std::vector<QQuickItem*> labels;
  findAll(tableItem, "HeaderLabel", labels);
  ASSERT_EQ(labels.size(), 2u);
  QQuickItem* label = labels[1];
  ASSERT_EQ(label->property("text").toString(), "Other Orvanta Apps");
  const QImage shot = window->grabWindow();
  const QRectF text = label->mapRectToScene(
      QRectF(0, label->height() / 2 - 6, label->property("contentWidth").toReal(), 12));
  int white = 0;
  for (int x = int(text.left()); x < int(text.right()); ++x)
    for (int y = int(text.top()); y < int(text.bottom()); ++y)
      white += QColor(shot.pixel(x, y)).lightness() > 230;
  EXPECT_GT(white, 40);

  const int before = c->total;
  click(*c->ButtonAdd);
  EXPECT_EQ(c->total, before) << "the counter beneath takes no touches";

  // A tap on a feedback row opens its link; the highlight fades as the row is deselected.
  events.takeNew();
  rows = drawnRows(tableItem);
  QQuickItem* highlight = find(rows[0].body, "SelectedHighlight");
  click(rows[0].body, QPointF(100, 22));
  EXPECT_TRUE(saw("open mailto:support@orvanta.example?subject=Zellick%20Comments"));
  EXPECT_FALSE(table->indexPathForSelectedRow());
  animate(150);
  EXPECT_GT(highlight->opacity(), 0.1);
  EXPECT_LT(highlight->opacity(), 0.9);
  driver.step(300);
  EXPECT_EQ(highlight->opacity(), 0.0);

  // A drag, then the wheel, scroll the list; rows out of view go, those coming in are made.
  QQuickItem* listView = find(tableItem, "TableList");
  // Until every animation is over: the stepped clock then starts afresh with the next one.
  const auto settle = [&] {
    for (int i = 0; i < 200 && (i < 3 || driver.isRunning()); ++i) {
      QCoreApplication::processEvents();
      driver.step(50);
    }
  };
  const auto at = [&](double y) { return app->screen().toWindow(QPointF(160, y)).toPoint(); };
  QTest::mousePress(window, Qt::LeftButton, {}, at(450));
  for (int y = 440; y >= 150; y -= 10) QTest::mouseMove(window, at(y), 16);
  QTest::mouseRelease(window, Qt::LeftButton, {}, at(150), 16);
  settle();
  const double dragged = listView->property("contentY").toReal();
  EXPECT_GT(dragged, 200);
  QWheelEvent wheel(QPointF(at(300)), QPointF(at(300)), {}, QPoint(0, -360), Qt::NoButton, {},
                    Qt::NoScrollPhase, false);
  wheel.setTimestamp(1000000000);  // later than the drag: the list works out a speed
  QCoreApplication::sendEvent(window, &wheel);
  settle();
  EXPECT_GT(listView->property("contentY").toReal(), dragged + 100);
  QCoreApplication::processEvents();
  rows = drawnRows(tableItem);
  ASSERT_FALSE(rows.empty());
  EXPECT_FALSE(table->cellForRowAtIndexPath({kFeedbackSection, 0})) << "scrolled away";
  EXPECT_LE(rows.size(), 14u);

  // A tap on an app's row sends its record and opens its store page.
  const DrawnRow& target = rows[rows.size() / 2];
  const std::string id = appleid(target.text.mid(4).toInt());
  events.takeNew();
  click(target.body, QPointF(100, 22));
  EXPECT_TRUE(saw("track " + id, "open " + apps.getAppURL(id)));

  // Back: the screen slides away, then goes, and the counter takes touches again.
  QQuickItem* back = find(overlay, "BackButton");
  ASSERT_TRUE(back && back->isVisible());
  click(back);
  EXPECT_EQ(app->more().screen(), nullptr);
  EXPECT_TRUE(app->screenHost().shown().empty());
  animate(150);
  EXPECT_GT(overlay->y(), 0) << "sliding down";
  EXPECT_TRUE(overlay->isVisible());
  driver.step(300);
  EXPECT_TRUE(waitFor([&] { return overlay.isNull(); }));
  click(*c->ButtonAdd);
  EXPECT_EQ(c->total, before + 1);
}

// Keys go through the same actions as touches: a held key is one press, the locks hold, a
// question answers to Y and N, and the More screen's rows to Down, Return and Escape.
TEST_F(RealScreen, KeysActAsTouches) {
  QTest::keyPress(window, Qt::Key_Space);
  QKeyEvent repeat(QEvent::KeyPress, Qt::Key_Space, Qt::NoModifier, {}, true);
  QCoreApplication::sendEvent(window, &repeat);
  EXPECT_EQ(c->total, 1235);
  expectLocked(true);
  QTest::keyClick(window, Qt::Key_R);
  EXPECT_FALSE(app->screen().questionOverlay()->isVisible()) << "Reset is locked while Add is held";
  QTest::keyRelease(window, Qt::Key_Space);
  expectLocked(false);

  QTest::keyClick(window, Qt::Key_R);
  QQuickItem* overlay = app->screen().questionOverlay();
  EXPECT_TRUE(waitFor([&] { return overlay->isVisible(); }));
  QTest::keyClick(window, Qt::Key_Up);
  EXPECT_EQ(c->total, 1235) << "keys answer the question, nothing beneath";
  QTest::keyClick(window, Qt::Key_N);
  EXPECT_FALSE(overlay->isVisible());
  EXPECT_EQ(c->total, 1235);

  QTest::keyClick(window, Qt::Key_F1);
  ASSERT_NE(app->more().screen(), nullptr);
  events.takeNew();
  for (Qt::Key k : {Qt::Key_Down, Qt::Key_Down, Qt::Key_Return}) QTest::keyClick(window, k);
  EXPECT_TRUE(saw("open " + configuration.storePageUrl));
  QTest::keyClick(window, Qt::Key_Escape);
  EXPECT_EQ(app->more().screen(), nullptr);
  QTest::keyClick(window, Qt::Key_Space);
  EXPECT_EQ(c->total, 1235) << "the counter stays covered while the screen slides away";
}

}  // namespace
}  // namespace zellick::test

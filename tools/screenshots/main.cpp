// Runs the real app offscreen in a phone-sized window (360 x 640 points, two device pixels per
// point) in a scratch home (settings, data, cache and runtime folders; usage records off, the
// maker's server pointed at a closed loopback port), drives it through its window and writes
// the screenshots the README and the metainfo show:
//   counter.png   0127 on memory A, its clock running
//   question.png  the question Reset asks first
//   reset.png     the wheels spinning home after Yes
//   more.png      the More screen with a small catalogue and its icons
// A picture of (nearly) one flat colour, or a step that does not come about within its time,
// fails the run (status 1).
//   zellick-screenshots OUT_DIR
#include <QBuffer>
#include <QDateTime>
#include <QDir>
#include <QElapsedTimer>
#include <QGuiApplication>
#include <QImage>
#include <QMouseEvent>
#include <QPainter>
#include <QQuickItem>
#include <QQuickWindow>
#include <QSet>
#include <QTemporaryDir>
#include <QTimer>

#include <algorithm>
#include <climits>
#include <cstdio>
#include <functional>
#include <string>
#include <vector>

#include "app/zellick_app.h"
#include "more/moreView.h"
#include "platform/qt/documents.h"
#include "platform/qt/log.h"
#include "platform/qt/settings_defaults.h"
#include "services/apps.h"
#include "ui/first_frame.h"

namespace {

using zellick::ZellickApp;

constexpr const char* kScale = "2";  // device pixels per point: crisp on a README page
constexpr int kPollMs = 10;
constexpr int kStepTimeoutMs = 20000;
// Fewer colours than this is a screen that did not draw (antialiased artwork has thousands).
constexpr int kLeastColours = 64;
// The catalogue's icons are this many pixels square, as the maker's server sends them.
constexpr int kIconPixels = 114;

// The counter as a person might have left it: memory A at 127 with 12 min 34 s on its running
// clock (so 10/min), memories B and C in use too. Keys and forms as the counter saves them.
void seedCounter(zellick::UserDefaults& settings, double now) {
  using zellick::DefaultsArray;
  const auto ints = [](std::initializer_list<long long> values) {
    DefaultsArray a;
    for (long long v : values) a.emplace_back(v);
    return a;
  };
  settings.setObject("Counters", ints({127, 48, 5}));
  settings.setObject("Timers", ints({0, 12, 34, 0, 3, 10, 0, 0, 0, 1, 0, 0}));
  settings.setObject("TotalForAvg", ints({127, 48, 5}));
  settings.setInteger("ButtonId", 1);
  settings.setInteger("TapValue", 1);
  settings.setObject("DateOfInactive", zellick::Date{now});
}

// A catalogue entry and how its icon is drawn on a coloured tile (centre at 0,0, 100 wide).
struct CatalogueApp {
  const char* name;
  const char* storeId;
  int hue;
  void (*draw)(QPainter&);
};

const CatalogueApp kCatalogue[] = {
    {"Pocket Metronome", "710000001", 20,
     [](QPainter& p) {
       p.drawPolygon(QPolygonF({{-28, 34}, {28, 34}, {12, -36}, {-12, -36}}));
       p.setPen(QPen(QColor(40, 40, 40), 6, Qt::SolidLine, Qt::RoundCap));
       p.drawLine(QPointF(0, 26), QPointF(18, -30));
     }},
    {"Bubble Level", "710000002", 95,
     [](QPainter& p) {
       p.drawRoundedRect(QRectF(-38, -14, 76, 28), 14, 14);
       p.setBrush(QColor(120, 200, 90));
       p.drawEllipse(QPointF(8, 0), 10, 10);
     }},
    {"Dice Cup", "710000003", 0,
     [](QPainter& p) {
       p.drawRoundedRect(QRectF(-32, -32, 64, 64), 12, 12);
       p.setBrush(QColor(40, 40, 40));
       for (QPointF pip : {QPointF(-16, -16), QPointF(0, 0), QPointF(16, 16)})
         p.drawEllipse(pip, 7, 7);
     }},
    {"Lap Timer", "710000004", 210,
     [](QPainter& p) {
       p.drawEllipse(QPointF(0, 6), 32, 32);
       p.drawRect(QRectF(-6, -38, 12, 10));
       p.setPen(QPen(QColor(40, 40, 40), 5, Qt::SolidLine, Qt::RoundCap));
       p.drawLine(QPointF(0, 6), QPointF(0, -16));
       p.drawLine(QPointF(0, 6), QPointF(14, 14));
     }},
    {"Tip Splitter", "710000005", 280,
     [](QPainter& p) {
       p.drawPie(QRectF(-34, -34, 68, 68), 90 * 16, 250 * 16);
       p.drawPie(QRectF(-28, -38, 68, 68), 340 * 16, 110 * 16);
     }},
};

QByteArray iconPng(const CatalogueApp& app) {
  QImage icon(kIconPixels, kIconPixels, QImage::Format_ARGB32_Premultiplied);
  icon.fill(Qt::transparent);
  QPainter p(&icon);
  p.setRenderHint(QPainter::Antialiasing);
  QLinearGradient tile(0, 0, 0, kIconPixels);
  tile.setColorAt(0, QColor::fromHsv(app.hue, 120, 250));
  tile.setColorAt(1, QColor::fromHsv(app.hue, 200, 190));
  p.setPen(Qt::NoPen);
  p.setBrush(tile);
  p.drawRoundedRect(QRectF(0, 0, kIconPixels, kIconPixels), 20, 20);
  p.translate(kIconPixels / 2.0, kIconPixels / 2.0);
  p.scale(kIconPixels / 100.0, kIconPixels / 100.0);
  p.setBrush(QColor(250, 250, 250));
  app.draw(p);
  p.end();
  QByteArray png;
  QBuffer buffer(&png);
  buffer.open(QIODevice::WriteOnly);
  icon.save(&buffer, "PNG");
  return png;
}

// The catalogue as if fetched a moment ago (so nothing is fetched), and its icons.
bool seedCatalogue(zellick::UserDefaults& settings, const QString& documentsFolder, double now) {
  zellick::DefaultsArray list;
  zellick::qt::FolderDocuments documents(documentsFolder);
  long long position = 0;
  for (const CatalogueApp& app : kCatalogue) {
    zellick::DefaultsDictionary entry;
    entry[zellick::kAppIdKey] = position + 1;
    entry[zellick::kAppNameKey] = std::string(app.name);
    entry[zellick::kAppleIdKey] = std::string(app.storeId);
    entry[zellick::kPriorityKey] = position++;
    list.emplace_back(std::move(entry));
    if (!documents
             .writeAtomically(zellick::orvapps::iconFileName(app.storeId),
                              iconPng(app).toStdString())
             .ok())
      return false;
  }
  settings.setObject(zellick::kMoreAppsKey, std::move(list));
  settings.setObject(zellick::kLastUpdateKey, zellick::Date{now});
  return true;
}

// A finger's tap on the centre of `view`, through the window.
void tap(ZellickApp& app, const zellick::View& view) {
  const zellick::Point c = view.frame().center();
  const QPointF at = app.counter().screen().toWindow(QPointF(c.x, c.y));
  QQuickWindow* window = app.window();
  for (QEvent::Type type : {QEvent::MouseButtonPress, QEvent::MouseButtonRelease}) {
    QMouseEvent event(type, at, window->mapToGlobal(at), Qt::LeftButton,
                      type == QEvent::MouseButtonPress ? Qt::LeftButton : Qt::NoButton, {});
    QCoreApplication::sendEvent(window, &event);
  }
}

// Whether an image or loader in the window is still loading (QML's status 2, Loading).
bool loading(QQuickItem* item) {
  if (item->isVisible() && item->property("status").toInt() == 2) return true;
  for (QQuickItem* child : item->childItems())
    if (loading(child)) return true;
  return false;
}

int readyIcons(QQuickItem* item) {
  int n = item->objectName() == QLatin1String("CellIcon") && item->isVisible() &&
          item->property("status").toInt() == 1;  // Ready
  for (QQuickItem* child : item->childItems()) n += readyIcons(child);
  return n;
}

// One step of the run: once `ready` holds and at least `afterMs` have passed since the previous
// step, `act` runs; false from it ends the run with a failure.
struct Step {
  const char* what;
  int afterMs;
  std::function<bool()> ready;
  std::function<bool()> act;
};

void runSteps(std::vector<Step> steps, int& status) {
  auto next = std::make_shared<size_t>(0);
  auto since = std::make_shared<QElapsedTimer>();
  since->start();
  auto* timer = new QTimer(qApp);
  QObject::connect(
      timer, &QTimer::timeout, timer, [steps = std::move(steps), next, since, timer, &status] {
        const Step& step = steps[*next];
        if (since->elapsed() < step.afterMs || !step.ready()) {
          if (since->elapsed() < kStepTimeoutMs) return;
          std::fprintf(stderr, "zellick-screenshots: gave up waiting for %s\n", step.what);
          status = 1;
        } else if (!step.act()) {
          status = 1;
        } else if (++*next < steps.size()) {
          since->restart();
          return;
        }
        timer->stop();
        QCoreApplication::quit();
      });
  timer->start(kPollMs);
}

// The picture in 256 colours, without dithering: a median cut over a 15-bit histogram (the
// first half of the splits where pixels are many, the rest where colours lie far apart, so the
// small bright icons get theirs), then rounds of moving each colour to the mean of the cells
// nearest it. The smooth artwork keeps its look at a third of the file size.
QImage toPalette(const QImage& image) {
  struct Cell {
    long long n = 0, r = 0, g = 0, b = 0;
    void add(const Cell& c) { n += c.n, r += c.r, g += c.g, b += c.b; }
    QRgb mean() const { return qRgb(int(r / n), int(g / n), int(b / n)); }
  };
  constexpr int kCells = 1 << 15;
  constexpr size_t kColours = 256;
  constexpr int kRounds = 3;
  const auto cellOf = [](QRgb p) {
    return (qRed(p) >> 3) << 10 | (qGreen(p) >> 3) << 5 | qBlue(p) >> 3;
  };
  const auto level = [](int cell, int axis) { return (cell >> (10 - 5 * axis)) & 31; };
  std::vector<Cell> cells(kCells);
  for (int y = 0; y < image.height(); ++y) {
    const auto* line = reinterpret_cast<const QRgb*>(image.constScanLine(y));
    for (int x = 0; x < image.width(); ++x)
      cells[cellOf(line[x])].add({1, qRed(line[x]), qGreen(line[x]), qBlue(line[x])});
  }
  std::vector<std::vector<int>> boxes(1);
  for (int cell = 0; cell < kCells; ++cell)
    if (cells[cell].n) boxes[0].push_back(cell);
  while (boxes.size() < kColours) {
    double top = 0;
    int pick = -1, axis = 0;
    for (size_t i = 0; i < boxes.size(); ++i) {
      if (boxes[i].size() < 2) continue;
      Cell sum;
      for (int cell : boxes[i]) sum.add(cells[cell]);
      for (int a = 0; a < 3; ++a) {
        const auto [lo, hi] =
            std::minmax_element(boxes[i].begin(), boxes[i].end(),
                                [&](int p, int q) { return level(p, a) < level(q, a); });
        const double side = level(*hi, a) - level(*lo, a);
        const double score = boxes.size() < kColours / 2 ? side * double(sum.n) : side;
        if (score > top) top = score, pick = int(i), axis = a;
      }
    }
    if (pick < 0) break;  // fewer cells than colours: each has its own
    std::vector<int>& box = boxes[pick];
    std::sort(box.begin(), box.end(),
              [&](int p, int q) { return level(p, axis) < level(q, axis); });
    long long total = 0, below = 0;
    for (int cell : box) total += cells[cell].n;
    size_t cut = 1;
    while (cut + 1 < box.size() && (below += cells[box[cut - 1]].n) * 2 < total) ++cut;
    boxes.emplace_back(box.begin() + long(cut), box.end());
    box.resize(cut);
  }
  QList<QRgb> table;
  for (const std::vector<int>& box : boxes) {
    Cell sum;
    for (int cell : box) sum.add(cells[cell]);
    table.push_back(sum.mean());
  }
  std::vector<uchar> index(kCells);
  for (int round = 0; round < kRounds; ++round) {
    std::vector<Cell> nearest(table.size());
    for (int cell = 0; cell < kCells; ++cell) {
      if (!cells[cell].n) continue;
      const QRgb m = cells[cell].mean();
      int best = INT_MAX;
      for (int i = 0; i < int(table.size()); ++i) {
        const int dr = qRed(m) - qRed(table[i]), dg = qGreen(m) - qGreen(table[i]),
                  db = qBlue(m) - qBlue(table[i]);
        if (const int d = dr * dr + dg * dg + db * db; d < best) best = d, index[cell] = uchar(i);
      }
      nearest[index[cell]].add(cells[cell]);
    }
    if (round + 1 < kRounds)
      for (size_t i = 0; i < nearest.size(); ++i)
        if (nearest[i].n) table[i] = nearest[i].mean();
  }
  QImage out(image.size(), QImage::Format_Indexed8);
  out.setColorTable(table);
  for (int y = 0; y < image.height(); ++y) {
    const auto* line = reinterpret_cast<const QRgb*>(image.constScanLine(y));
    uchar* to = out.scanLine(y);
    for (int x = 0; x < image.width(); ++x) to[x] = index[cellOf(line[x])];
  }
  return out;
}

bool grab(QQuickWindow* window, const QDir& out, const char* name) {
  const QImage image = window->grabWindow().convertToFormat(QImage::Format_RGB32);
  QSet<QRgb> colours;
  for (int y = 0; y < image.height() && colours.size() < kLeastColours; y += 2)
    for (int x = 0; x < image.width() && colours.size() < kLeastColours; x += 2)
      colours.insert(image.pixel(x, y));
  if (colours.size() < kLeastColours) {
    std::fprintf(stderr, "zellick-screenshots: %s shows %lld colours; the screen did not draw\n",
                 name, static_cast<long long>(colours.size()));
    return false;
  }
  if (!toPalette(image).save(out.filePath(QLatin1String(name)), "PNG", 0 /* most compression */)) {
    std::fprintf(stderr, "zellick-screenshots: cannot write %s\n",
                 qPrintable(out.filePath(QLatin1String(name))));
    return false;
  }
  return true;
}

}  // namespace

int main(int argc, char** argv) {
  // Everything the app would keep goes into the scratch home, whatever the caller's settings.
  QTemporaryDir home;
  if (!home.isValid()) return 1;
  for (const char* folder : {"home", "config", "data", "cache", "run"})
    QDir(home.path()).mkpath(QLatin1String(folder));
  QFile::setPermissions(home.filePath("run"),
                        QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
  const std::pair<const char*, QString> variables[] = {
      {"QT_QPA_PLATFORM", "offscreen"},
      {"QT_QUICK_BACKEND", "software"},
      {"QT_SCALE_FACTOR", kScale},
      {"HOME", home.filePath("home")},
      {"XDG_CONFIG_HOME", home.filePath("config")},
      {"XDG_DATA_HOME", home.filePath("data")},
      {"XDG_CACHE_HOME", home.filePath("cache")},
      {"XDG_RUNTIME_DIR", home.filePath("run")},
  };
  for (const auto& [name, value] : variables) qputenv(name, value.toLocal8Bit());

  QGuiApplication qapp(argc, argv);
  if (qapp.arguments().size() != 2) {
    std::fprintf(stderr, "usage: zellick-screenshots OUT_DIR\n");
    return 2;
  }
  const QDir out(qapp.arguments()[1]);
  if (!QDir().mkpath(out.path())) {
    std::fprintf(stderr, "zellick-screenshots: cannot make %s\n", qPrintable(out.path()));
    return 1;
  }

  ZellickApp::identify();
  zellick::Environment environment = zellick::Environment::fromProcess();
  environment.settingsPath = QDir(home.filePath("config")).filePath("defaults.ini");
  environment.artworkCacheDir = home.filePath("cache/artwork");
  environment.audioOff = true;
  environment.makerUrl = "http://127.0.0.1:9/";  // nothing should go out; nobody listens there
  {
    zellick::qt::StderrLog log;
    zellick::qt::QSettingsDefaults settings(environment.settingsPath, log);
    const double now = static_cast<double>(QDateTime::currentSecsSinceEpoch());
    seedCounter(settings, now);
    if (!seedCatalogue(settings, environment.documentsFolder, now) || !settings.synchronize()) {
      std::fprintf(stderr, "zellick-screenshots: cannot prepare the scratch home\n");
      return 1;
    }
  }

  zellick::CommandLine commandLine;
  commandLine.usageRecordsOff = true;
  ZellickApp app(environment, commandLine);
  if (app.launch() != ZellickApp::Launch::Shown) return 1;
  QQuickWindow* window = app.window();
  zellick::ZellickViewController& c = app.controller();
  const auto drawn = [window] { return !loading(window->contentItem()); };
  const auto always = [] { return true; };
  int status = 0;
  zellick::ui::afterFirstFrame(window, window, [&] {
    runSteps(
        {
            // Before the clock's first tick, so it shows what was saved.
            {"the counter", 600, drawn, [&] { return grab(window, out, "counter.png"); }},
            {"Reset", 0, always, [&] { return tap(app, *c.ButtonReset), true; }},
            {"the question", 300,
             [&] { return app.counter().screen().alerts().current() && drawn(); },
             [&] { return grab(window, out, "question.png"); }},
            {"Yes", 0, always, [&] { return app.counter().screen().alerts().answer(0), true; }},
            // A few steps into the roll, wheels on the move.
            {"the reset", 450, [&] { return c.total > 0 && c.total < 9999; },
             [&] { return grab(window, out, "reset.png"); }},
            {"the end of the reset", 0,
             [&] { return c.total == 0 && c.ButtonInfo->userInteractionEnabled(); },
             [&] { return tap(app, *c.ButtonInfo), true; }},
            {"the More screen", 300,
             [&] {
               return app.counter().more().screen() && drawn() &&
                      readyIcons(window->contentItem()) == int(std::size(kCatalogue));
             },
             [&] { return grab(window, out, "more.png"); }},
        },
        status);
  });
  qapp.exec();
  return status;
}

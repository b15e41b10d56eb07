// The app as its main starts it, for the start-up bench: prints "first frame" once the first
// frame is out, then quits.  zellick_launcher [--window WIDTHxHEIGHT]
#include <QGuiApplication>
#include <QQuickWindow>

#include "app/zellick_app.h"
#include "report_first_frame.h"

int main(int argc, char** argv) {
  QGuiApplication app(argc, argv);
  QVariantMap window;
  const QStringList args = app.arguments();
  if (args.size() == 3 && args[1] == QLatin1String("--window")) {
    const QStringList wh = args[2].split(QLatin1Char('x'));
    if (wh.size() == 2) window = {{"width", wh[0].toInt()}, {"height", wh[1].toInt()}};
  }
  zellick::ZellickApp::identify();
  zellick::ZellickApp zellick(zellick::Environment::fromProcess());
  if (zellick.launch(window) != zellick::ZellickApp::Launch::Shown) return 1;
  reportFirstFrameAndQuit(zellick.window());
  return app.exec();
}

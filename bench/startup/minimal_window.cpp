// A minimal Qt Quick window, built like the app: prints when its first frame is shown, quits.
#include <QGuiApplication>
#include <QQmlApplicationEngine>
#include <QQuickWindow>

#include "report_first_frame.h"

int main(int argc, char** argv) {
  QGuiApplication app(argc, argv);
  QQmlApplicationEngine engine;
  engine.load(QUrl(QStringLiteral("qrc:/bench/minimal.qml")));
  if (engine.rootObjects().isEmpty()) return 1;
  auto* window = qobject_cast<QQuickWindow*>(engine.rootObjects().first());
  if (!window) return 1;
  reportFirstFrameAndQuit(window);
  return app.exec();
}

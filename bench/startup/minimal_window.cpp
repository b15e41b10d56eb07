// A minimal Qt Quick window, built like the app: prints when its first frame is shown, quits.
#include <QGuiApplication>
#include <QQmlApplicationEngine>
#include <QQuickWindow>
#include <QTimer>

#include <cstdio>

int main(int argc, char** argv) {
  QGuiApplication app(argc, argv);
  QQmlApplicationEngine engine;
  engine.load(QUrl(QStringLiteral("qrc:/bench/minimal.qml")));
  if (engine.rootObjects().isEmpty()) return 1;
  auto* window = qobject_cast<QQuickWindow*>(engine.rootObjects().first());
  if (!window) return 1;
  bool done = false;
  QObject::connect(window, &QQuickWindow::frameSwapped, window, [&done] {
    if (done) return;
    done = true;
    std::printf("first frame\n");
    std::fflush(stdout);
    QTimer::singleShot(0, qApp, &QCoreApplication::quit);
  });
  return app.exec();
}

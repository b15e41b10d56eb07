// Zellick: a hand tally counter.
#include <QGuiApplication>

#include "app/zellick_app.h"

int main(int argc, char** argv) {
  QGuiApplication app(argc, argv);
  zellick::ZellickApp::identify();
  zellick::ZellickApp zellick(zellick::Environment::fromProcess());
  if (!zellick.launch()) return 1;
  return app.exec();
}

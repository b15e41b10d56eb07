// Zellick: a hand tally counter.
#include <QGuiApplication>

#include "app/zellick_app.h"

int main(int argc, char** argv) {
  zellick::ZellickApp::identify();
  zellick::answerHelpOrVersion(argc, argv);
  QGuiApplication app(argc, argv);
  const zellick::CommandLine commandLine = zellick::parseCommandLine(app);
  zellick::ZellickApp zellick(zellick::Environment::fromProcess(), commandLine);
  switch (zellick.launch()) {
    case zellick::ZellickApp::Launch::Shown: return app.exec();
    case zellick::ZellickApp::Launch::AlreadyRunning: return 0;
    case zellick::ZellickApp::Launch::Failed: return 1;
  }
  return 1;
}

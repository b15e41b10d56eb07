// Zellick: a hand tally counter.
#include <QGuiApplication>

#include "app/zellick_app.h"

int main(int argc, char** argv) {
  zellick::ZellickApp::identify();
  zellick::answerHelpOrVersion(argc, argv);
  QGuiApplication app(argc, argv);
  const zellick::CommandLine commandLine = zellick::parseCommandLine(app);
  int code = 1;
  {
    zellick::ZellickApp zellick(zellick::Environment::fromProcess(), commandLine);
    switch (zellick.launch()) {
      case zellick::ZellickApp::Launch::Shown: code = app.exec(); break;
      case zellick::ZellickApp::Launch::AlreadyRunning: code = 0; break;
      case zellick::ZellickApp::Launch::Failed: code = 1; break;
    }
  }
  // Everything of ours is saved and gone; the application's own clean-up is skipped.
  return zellick::endProcess(code);
}

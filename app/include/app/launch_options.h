#pragma once

#include <QString>
#include <QStringList>

#include "platform/log.h"

namespace zellick {

// What the command line asks of the app. Unknown or malformed arguments are logged and
// ignored; the app then starts as usual.
struct LaunchOptions {
  bool exitAfterFirstFrame = false;  // print the start-up time after the first frame, then quit
  bool silent = false;               // never open an audio device
  int stressLoop = -1;               // rounds of the stress loop; -1 = none, 0 = until killed
  int width = 0;                     // window size in pixels; 0 = the screen's default
  int height = 0;
  QString grab;                      // save a picture of the window here, then quit
};

// `args` as QCoreApplication::arguments() gives them (program name first).
LaunchOptions parseLaunchOptions(const QStringList& args, Log& log);

// Milliseconds since the kernel started this process (10 ms resolution); -1 when unknown.
double msSinceProcessStart();

}  // namespace zellick

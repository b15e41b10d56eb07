#pragma once

#include <QCoreApplication>

namespace zellick {

// What the person starting the app asks of it.
struct CommandLine {
  bool usageRecordsOff = false;  // --no-usage-records: send no usage record this run
};

// Answers --help (the options and the environment variables read) or --version on stdout and
// exits; otherwise returns. Needs no application object, so both work without a display.
void answerHelpOrVersion(int argc, char** argv);

// Reads the app's arguments; unknown ones are reported and the app exits with status 2.
// --help-all prints Qt's options as well and exits.
CommandLine parseCommandLine(const QCoreApplication& app);

}  // namespace zellick

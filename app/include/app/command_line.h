#pragma once

#include <QCoreApplication>

namespace zellick {

// What the person starting the app asks of it. `--help` and `--version` print and exit.
struct CommandLine {
  bool usageRecordsOff = false;  // --no-usage-records: send no usage record this run
};

// Reads the app's arguments; unknown ones are reported and the app exits with status 2.
CommandLine parseCommandLine(const QCoreApplication& app);

}  // namespace zellick

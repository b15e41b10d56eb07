#include "app/command_line.h"

#include <QCommandLineParser>

namespace zellick {

CommandLine parseCommandLine(const QCoreApplication& app) {
  QCommandLineParser parser;
  parser.setApplicationDescription(QStringLiteral("Zellick, a hand tally counter."));
  parser.addHelpOption();
  parser.addVersionOption();
  const QCommandLineOption noRecords(
      QStringLiteral("no-usage-records"),
      QStringLiteral("Send no usage record to the maker this run (the settings key "
                     "SendUsageRecords=false does so for good)."));
  parser.addOption(noRecords);
  parser.process(app);
  CommandLine line;
  line.usageRecordsOff = parser.isSet(noRecords);
  return line;
}

}  // namespace zellick

#include "app/command_line.h"

#include <QCommandLineParser>
#include <QStringList>

#include <cstdio>
#include <cstdlib>

#include "app/environment.h"

namespace zellick {

namespace {

struct Options {
  QCommandLineOption help;
  QCommandLineOption version;
  QCommandLineOption noRecords;
};

Options addOptions(QCommandLineParser& parser) {
  parser.setApplicationDescription(QStringLiteral("Zellick, a hand tally counter."));
  const QCommandLineOption help = parser.addHelpOption();
  const QCommandLineOption version = parser.addVersionOption();
  const QCommandLineOption noRecords(
      QStringLiteral("no-usage-records"),
      QStringLiteral("Send no usage record to the maker this run (the settings key "
                     "SendUsageRecords=false does so for good)."));
  parser.addOption(noRecords);
  return {help, version, noRecords};
}

}  // namespace

void answerHelpOrVersion(int argc, char** argv) {
  QStringList arguments;
  for (int i = 0; i < argc; ++i) arguments << QString::fromLocal8Bit(argv[i]);
  QCommandLineParser asked;
  const Options askedFor = addOptions(asked);
  // Mistakes, and Qt's own options, are for parseCommandLine once the application exists.
  asked.parse(arguments);
  if (!asked.isSet(askedFor.help) && !asked.isSet(askedFor.version)) return;
  // A core application needs no display, and gives the help the program's name and --help-all.
  QCoreApplication app(argc, argv);
  QCommandLineParser parser;
  const Options options = addOptions(parser);
  parser.parse(app.arguments());
  if (!parser.isSet(options.help)) parser.showVersion();
  const QString text = parser.helpText() + QLatin1Char('\n') + Environment::help();
  std::fputs(text.toLocal8Bit().constData(), stdout);
  std::exit(EXIT_SUCCESS);
}

CommandLine parseCommandLine(const QCoreApplication& app) {
  QCommandLineParser parser;
  const Options options = addOptions(parser);
  if (!parser.parse(app.arguments())) {
    std::fprintf(stderr, "%s: %s\n", qPrintable(QCoreApplication::applicationName()),
                 qPrintable(parser.errorText()));
    std::exit(2);
  }
  // What is left for the parser itself: --help-all, which lists Qt's options as well.
  parser.process(app);
  CommandLine line;
  line.usageRecordsOff = parser.isSet(options.noRecords);
  return line;
}

}  // namespace zellick

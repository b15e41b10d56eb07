#include "app/launch_options.h"

#include <time.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>

namespace zellick {

LaunchOptions parseLaunchOptions(const QStringList& args, Log& log) {
  LaunchOptions o;
  for (int i = 1; i < args.size(); ++i) {
    const QString& a = args[i];
    const bool hasValue = i + 1 < args.size();
    if (a == QLatin1String("--exit-after-first-frame")) {
      o.exitAfterFirstFrame = true;
    } else if (a == QLatin1String("--silent")) {
      o.silent = true;
    } else if (a == QLatin1String("--stress-loop") && hasValue) {
      bool ok = false;
      const int n = args[++i].toInt(&ok);
      if (ok && n >= 0) {
        o.stressLoop = n;
      } else {
        log.line("--stress-loop needs a count of 0 or more; ignored");
      }
    } else if (a == QLatin1String("--window") && hasValue) {
      const QStringList wh = args[++i].split(QLatin1Char('x'));
      bool okW = false, okH = false;
      const int w = wh.size() == 2 ? wh[0].toInt(&okW) : 0;
      const int h = wh.size() == 2 ? wh[1].toInt(&okH) : 0;
      if (okW && okH && w >= 100 && h >= 100 && w <= 10000 && h <= 10000) {
        o.width = w;
        o.height = h;
      } else {
        log.line("--window needs WIDTHxHEIGHT in pixels (100 to 10000); using the default size");
      }
    } else if (a == QLatin1String("--grab") && hasValue) {
      o.grab = args[++i];
    } else {
      log.line("unknown argument " + a.toStdString() + " ignored");
    }
  }
  return o;
}

double msSinceProcessStart() {
  std::ifstream stat("/proc/self/stat");
  const std::string text((std::istreambuf_iterator<char>(stat)), std::istreambuf_iterator<char>());
  // The command name may hold blanks: fields are counted from after its closing parenthesis,
  // where field 3 starts; the start time is field 22.
  const auto close = text.rfind(')');
  if (close == std::string::npos || close + 2 >= text.size()) return -1;
  std::size_t pos = close + 2;
  for (int field = 3; field < 22; ++field) {
    pos = text.find(' ', pos);
    if (pos == std::string::npos) return -1;
    ++pos;
  }
  const unsigned long long startTicks = std::strtoull(text.c_str() + pos, nullptr, 10);
  timespec now{};
  if (clock_gettime(CLOCK_BOOTTIME, &now) != 0) return -1;
  const double ticksPerSecond = static_cast<double>(sysconf(_SC_CLK_TCK));
  if (ticksPerSecond <= 0) return -1;
  return (static_cast<double>(now.tv_sec) + now.tv_nsec / 1e9 - startTicks / ticksPerSecond) * 1000.0;
}

}  // namespace zellick

#include "platform/qt/device.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLocale>
#include <QRegularExpression>
#include <QSaveFile>
#include <QSysInfo>
#include <QUuid>

#include <unistd.h>

namespace zellick::qt {

namespace {

constexpr qint64 kMaxFileBytes = 64 * 1024;  // these files are a few lines
constexpr int kMaxValueChars = 128;          // a value that long is not a name

QString readSmallFile(const QString& path) {
  QFile f(path);
  if (!f.open(QIODevice::ReadOnly)) return {};
  return QString::fromUtf8(f.read(kMaxFileBytes));
}

// The value of KEY=value (quotes removed) in a shell-style assignments file.
QString assignment(const QString& text, const QString& key) {
  for (const QString& line : text.split(QLatin1Char('\n'))) {
    if (!line.startsWith(key + QLatin1Char('='))) continue;
    QString v = line.mid(key.size() + 1).trimmed();
    if (v.size() >= 2 && (v.front() == QLatin1Char('"') || v.front() == QLatin1Char('\'')) &&
        v.back() == v.front())
      v = v.mid(1, v.size() - 2);
    return v;
  }
  return {};
}

// One line of printable text, short: what goes into a record of a few fields.
std::string clean(QString v) {
  v.remove(QChar(0));
  v = v.simplified();
  if (v.size() > kMaxValueChars) v.truncate(kMaxValueChars);
  return v.toStdString();
}

std::string orUnknown(const QString& v, const char* what, Log& log) {
  const std::string c = clean(v);
  if (!c.empty()) return c;
  log.line(std::string("Device: no ") + what + "; sending \"unknown\"");
  return "unknown";
}

std::string vendorId(const QString& file, Log& log) {
  static const QRegularExpression kUuid(
      QStringLiteral("^[0-9A-F]{8}-[0-9A-F]{4}-[0-9A-F]{4}-[0-9A-F]{4}-[0-9A-F]{12}$"));
  const QString kept = readSmallFile(file).trimmed();
  if (kUuid.match(kept).hasMatch()) return kept.toStdString();
  if (!kept.isEmpty())
    log.line("Device: " + file.toStdString() + " holds no identifier; making a new one");
  const QString made = QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper();
  QDir().mkpath(QFileInfo(file).absolutePath());
  QSaveFile out(file);
  if (!out.open(QIODevice::WriteOnly) || out.write(made.toUtf8() + '\n') < 0 || !out.commit())
    log.line("Device: cannot keep the identifier in " + file.toStdString() +
             "; a new one each run");
  return made.toStdString();
}

}  // namespace

DeviceFacts readDeviceFacts(const QString& vendorIdFile, Log& log) {
  DeviceFacts f;
  QString name = assignment(readSmallFile(QStringLiteral("/etc/machine-info")),
                            QStringLiteral("PRETTY_HOSTNAME"));
  if (name.trimmed().isEmpty()) name = QSysInfo::machineHostName();
  f.name = orUnknown(name, "device name", log);
  QString model = readSmallFile(QStringLiteral("/proc/device-tree/model"));
  if (model.trimmed().isEmpty())
    model = readSmallFile(QStringLiteral("/sys/class/dmi/id/product_name"));
  f.model = orUnknown(model, "device model", log);
  const QString os = readSmallFile(QStringLiteral("/etc/os-release"));
  f.systemName = orUnknown(assignment(os, QStringLiteral("NAME")), "system name", log);
  f.systemVersion = orUnknown(assignment(os, QStringLiteral("VERSION_ID")), "system version", log);
  f.vendorId = vendorId(vendorIdFile, log);
  const QLocale locale = QLocale::system();
  if (locale.language() != QLocale::C && locale.language() != QLocale::AnyLanguage)
    f.languageCode = QLocale::languageToCode(locale.language()).toStdString();
  if (locale.territory() != QLocale::AnyTerritory)
    f.countryCode = QLocale::territoryToCode(locale.territory()).toStdString();
  f.runsAsRoot = geteuid() == 0;
  return f;
}

}  // namespace zellick::qt

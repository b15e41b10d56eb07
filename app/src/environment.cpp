#include "app/environment.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>

#include <algorithm>
#include <string>
#include <utility>

#include "services/configuration.h"

namespace zellick {

namespace {

constexpr const char* kSettingsVariable = "ZELLICK_SETTINGS";
constexpr const char* kArtworkCacheVariable = "ZELLICK_ARTWORK_CACHE";
constexpr const char* kBundleVariable = "ZELLICK_BUNDLE";
constexpr const char* kNoAudioVariable = "ZELLICK_NO_AUDIO";
constexpr const char* kAudioModuleVariable = "ZELLICK_AUDIO_MODULE";

QString variable(const char* name) { return QString::fromLocal8Bit(qgetenv(name)); }

// Whether the folder `dir` is `root` or lies inside it; both must exist.
bool inside(const QString& dir, const QString& root) {
  const QString d = QDir(dir).canonicalPath();
  const QString r = QDir(root).canonicalPath();
  return !d.isEmpty() && !r.isEmpty() && (d == r || d.startsWith(r + QLatin1Char('/')));
}

}  // namespace

Environment Environment::fromProcess() {
  Environment e;
  const QDir exeDir(QCoreApplication::applicationDirPath());

  e.settingsPath = variable(kSettingsVariable);
  if (e.settingsPath.isEmpty()) {
    const QString dir = QStandardPaths::writableLocation(QStandardPaths::AppConfigLocation);
    e.settingsPath = QDir(dir).filePath(QStringLiteral("defaults.ini"));
  }

  const QString cache = variable(kArtworkCacheVariable);
  if (cache != QLatin1String("off")) {
    e.artworkCacheDir = cache;
    const QString dir = QStandardPaths::writableLocation(QStandardPaths::CacheLocation);
    if (e.artworkCacheDir.isEmpty() && !dir.isEmpty())
      e.artworkCacheDir = QDir(dir).filePath(QStringLiteral("artwork"));
  }

  if (const QString bundle = variable(kBundleVariable); !bundle.isEmpty())
    e.bundleFolders.push_back(bundle.toStdString());
  e.bundleFolders.push_back(exeDir.filePath(QStringLiteral("bundle")).toStdString());
  e.bundleFolders.push_back(
      QDir::cleanPath(exeDir.filePath(QStringLiteral(ZELLICK_INSTALLED_BUNDLE))).toStdString());
  // The build tree's bundle serves only what runs from the build tree, never an installed copy.
  if (inside(exeDir.path(), QStringLiteral(ZELLICK_BUILD_TREE)))
    e.bundleFolders.push_back(ZELLICK_BUNDLE_DIR);

  e.audioOff = !variable(kNoAudioVariable).isEmpty();
  e.audioModule = variable(kAudioModuleVariable);
  if (e.audioModule.isEmpty()) {
    const QString beside = exeDir.filePath(QStringLiteral(ZELLICK_AUDIO_MODULE_FILE));
    e.audioModule = QFileInfo::exists(beside)
                        ? beside
                        : QDir::cleanPath(exeDir.filePath(QStringLiteral(
                              ZELLICK_INSTALLED_MODULE_DIR "/" ZELLICK_AUDIO_MODULE_FILE)));
  }
  e.makerUrl = qgetenv(kMakerUrlVariable);
  e.adPrimaryUrl = qgetenv(kAdPrimaryUrlVariable);
  e.adFallbackUrl = qgetenv(kAdFallbackUrlVariable);
  e.vendorIdFile = QDir(QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation))
                       .filePath(QStringLiteral("Orvanta/vendor-id"));
  e.documentsFolder = QDir(QStandardPaths::writableLocation(QStandardPaths::AppDataLocation))
                          .filePath(QStringLiteral("Documents"));
  return e;
}

QString Environment::help() {
  const std::pair<const char*, std::string> rows[] = {
      {kSettingsVariable, "The settings file (default: ~/.config/Zellick/Zellick/defaults.ini)."},
      {kArtworkCacheVariable,
       "Where rendered artwork is kept between starts; \"off\" keeps none (default: "
       "~/.cache/Zellick/Zellick/artwork)."},
      {kBundleVariable, "A folder searched first for the bundle (sounds, shipped artwork)."},
      {kNoAudioVariable, "Set to anything: never open an audio device."},
      {kAudioModuleVariable,
       "The audio module to load (default: " ZELLICK_AUDIO_MODULE_FILE
       " next to the executable, else in its " ZELLICK_INSTALLED_MODULE_DIR ")."},
      {kMakerUrlVariable,
       "The maker's web server for usage records and the catalogue of other apps, a base URL "
       "ending in \"/\" "
       "(default: " +
           Configuration::shipped().makerBaseUrl + ")."},
      {kAdPrimaryUrlVariable,
       "The ad network's first web-service host, a base URL ending in \"/\"."},
      {kAdFallbackUrlVariable,
       "The ad network's second web-service host, a base URL ending in \"/\"."},
  };
  // Laid out as Qt lays out the options: names in a column, the text wrapped beside them.
  constexpr int kLineWidth = 79;
  int nameWidth = 0;
  for (const auto& row : rows) nameWidth = std::max(nameWidth, int(qstrlen(row.first)));
  const int indent = 2 + nameWidth + 2;
  QString text = QStringLiteral("Environment:\n");
  for (const auto& [name, effect] : rows) {
    QString line = QStringLiteral("  %1  ").arg(QLatin1String(name), -nameWidth);
    for (const QString& word : QString::fromStdString(effect).split(QLatin1Char(' '))) {
      if (line.size() > indent && line.size() + 1 + word.size() > kLineWidth) {
        text += line + QLatin1Char('\n');
        line = QString(indent, QLatin1Char(' '));
      }
      if (line.size() > indent) line += QLatin1Char(' ');
      line += word;
    }
    text += line + QLatin1Char('\n');
  }
  return text;
}

}  // namespace zellick

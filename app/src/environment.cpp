#include "app/environment.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>

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
  return e;
}

}  // namespace zellick

#include "app/environment.h"

#include <QCoreApplication>
#include <QDir>
#include <QStandardPaths>

#include "services/configuration.h"

namespace zellick {

namespace {

QString variable(const char* name) { return QString::fromLocal8Bit(qgetenv(name)); }

}  // namespace

Environment Environment::fromProcess() {
  Environment e;
  const QString exeDir = QCoreApplication::applicationDirPath();

  e.settingsPath = variable("ZELLICK_SETTINGS");
  if (e.settingsPath.isEmpty()) {
    const QString dir = QStandardPaths::writableLocation(QStandardPaths::AppConfigLocation);
    e.settingsPath = QDir(dir).filePath(QStringLiteral("defaults.ini"));
  }

  const QString cache = variable("ZELLICK_ARTWORK_CACHE");
  if (cache != QLatin1String("off")) {
    e.artworkCacheDir = cache;
    const QString dir = QStandardPaths::writableLocation(QStandardPaths::CacheLocation);
    if (e.artworkCacheDir.isEmpty() && !dir.isEmpty())
      e.artworkCacheDir = QDir(dir).filePath(QStringLiteral("artwork"));
  }

  if (const QString bundle = variable("ZELLICK_BUNDLE"); !bundle.isEmpty())
    e.bundleFolders.push_back(bundle.toStdString());
  e.bundleFolders.push_back(QDir(exeDir).filePath(QStringLiteral("bundle")).toStdString());
#ifdef ZELLICK_BUNDLE_DIR
  e.bundleFolders.push_back(ZELLICK_BUNDLE_DIR);
#endif

  e.audioOff = !variable("ZELLICK_NO_AUDIO").isEmpty();
  e.audioModule = variable("ZELLICK_AUDIO_MODULE");
  if (e.audioModule.isEmpty())
    e.audioModule = QDir(exeDir).filePath(QStringLiteral("libzellick_audio.so"));
  e.makerUrl = qgetenv(kMakerUrlVariable);
  e.adPrimaryUrl = qgetenv(kAdPrimaryUrlVariable);
  e.adFallbackUrl = qgetenv(kAdFallbackUrlVariable);
  e.vendorIdFile = QDir(QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation))
                       .filePath(QStringLiteral("Orvanta/vendor-id"));
  e.documentsFolder = QDir(QStandardPaths::writableLocation(QStandardPaths::AppDataLocation))
                          .filePath(QStringLiteral("Documents"));
  return e;
}

}  // namespace zellick

#pragma once

#include <QByteArray>
#include <QString>

#include <string>
#include <vector>

namespace zellick {

// Everything the app takes from its environment, read in one place. Each variable is listed
// in the README.
struct Environment {
  // ZELLICK_SETTINGS, else "defaults.ini" in the user's configuration folder for the app.
  QString settingsPath;
  // ZELLICK_ARTWORK_CACHE ("off" keeps none), else "artwork" in the user's cache folder.
  QString artworkCacheDir;
  // Where bundle resources are looked up, in order: ZELLICK_BUNDLE, the "bundle" folder next to
  // the executable, the installed bundle relative to the executable (../share/zellick), then,
  // for an executable inside the build tree, the build tree's bundle.
  std::vector<std::string> bundleFolders;
  // ZELLICK_NO_AUDIO set to anything: never open an audio device.
  bool audioOff = false;
  // ZELLICK_AUDIO_MODULE, else the audio module next to the executable if there is one, else
  // the installed one relative to the executable (../lib/zellick).
  QString audioModule;
  // ZELLICK_MAKER_URL, ZELLICK_AD_PRIMARY_URL, ZELLICK_AD_FALLBACK_URL: the servers' addresses
  // in place of the shipped ones (empty: the shipped one).
  QByteArray makerUrl, adPrimaryUrl, adFallbackUrl;
  // The app's documents (the catalogue's icons): "Documents" in the user's data folder for the
  // app.
  QString documentsFolder;
  // Where the maker's apps on this machine share their vendor identifier: "Orvanta/vendor-id"
  // in the user's configuration folder.
  QString vendorIdFile;

  // Read from the process; needs the QCoreApplication for the app's folders.
  static Environment fromProcess();
  // The variables read, with what each does, as the lines --help ends with.
  static QString help();
};

}  // namespace zellick

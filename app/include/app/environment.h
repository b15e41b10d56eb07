#pragma once

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
  // the executable, then the build tree's bundle.
  std::vector<std::string> bundleFolders;
  // ZELLICK_NO_AUDIO set to anything: never open an audio device.
  bool audioOff = false;
  // ZELLICK_AUDIO_MODULE, else the audio module next to the executable.
  QString audioModule;

  // Read from the process; needs the QCoreApplication for the app's folders.
  static Environment fromProcess();
};

}  // namespace zellick

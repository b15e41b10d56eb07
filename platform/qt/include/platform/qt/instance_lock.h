#pragma once

#include <QObject>
#include <QString>

#include <functional>
#include <memory>

#include "platform/log.h"

class QLocalServer;

namespace zellick::qt {

// One running app per settings file. The first start holds a lock on a file beside the settings
// (the system drops it when the process ends, however it ends, so a killed instance never blocks
// a start) and listens on a local socket; a later start on the same file asks the first to come
// to the front, and goes. Main thread only.
class InstanceLock : public QObject {
  Q_OBJECT
 public:
  ~InstanceLock() override;

  // The lock for `settingsPath`, or null when another process holds it; that process has then
  // been asked to come to the front, and `answered` says whether it confirmed within
  // `kAnswerMs` (a stopped process cannot). Logs what happened.
  static std::unique_ptr<InstanceLock> acquire(const QString& settingsPath, Log& log,
                                               bool* answered = nullptr);
  static constexpr int kAnswerMs = 400;

  // Starts listening for later starts, and runs `raise` when one asks this one to come to the
  // front. Until then a later start goes without an answer.
  void onRaise(std::function<void()> raise);

 private:
  InstanceLock(int fd, QString socketName, Log& log);
  void listen();

  int fd_;
  QString socketName_;
  Log& log_;
  QLocalServer* server_ = nullptr;
  std::function<void()> raise_;
};

}  // namespace zellick::qt

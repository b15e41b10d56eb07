#include "platform/qt/instance_lock.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLocalServer>
#include <QLocalSocket>
#include <QStandardPaths>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

namespace zellick::qt {

namespace {

constexpr char kRaise[] = "raise\n";
constexpr char kRaised[] = "raised\n";

QString canonical(const QString& path) {
  const QFileInfo info(path);
  const QString dir = info.absoluteDir().canonicalPath();
  return dir.isEmpty() ? info.absoluteFilePath() : QDir(dir).filePath(info.fileName());
}

// Per user (the runtime folder is private) and per settings file.
QString socketNameFor(const QString& settings) {
  const QByteArray digest =
      QCryptographicHash::hash(settings.toUtf8(), QCryptographicHash::Sha256).toHex().left(16);
  QString dir = QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation);
  if (dir.isEmpty()) dir = QDir::tempPath();
  return QDir(dir).filePath(QStringLiteral("zellick-%1.socket").arg(QString::fromLatin1(digest)));
}

}  // namespace

std::unique_ptr<InstanceLock> InstanceLock::acquire(const QString& settingsPath, Log& log,
                                                    bool* answered) {
  if (answered) *answered = false;
  const QString settings = canonical(settingsPath);
  const QString name = socketNameFor(settings);
  QDir().mkpath(QFileInfo(settings).absolutePath());
  const QByteArray lockPath = QFile::encodeName(settings + QStringLiteral(".instance"));
  const int fd = ::open(lockPath.constData(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
  if (fd < 0) {
    // Without the lock file there is no telling; better two instances than none.
    log.line("Instance: cannot open " + lockPath.toStdString() + "; not checking for another");
    return std::unique_ptr<InstanceLock>(new InstanceLock(-1, name, log));
  }
  if (::flock(fd, LOCK_EX | LOCK_NB) == 0)
    return std::unique_ptr<InstanceLock>(new InstanceLock(fd, name, log));
  ::close(fd);

  QLocalSocket socket;
  socket.connectToServer(name);
  bool ok = socket.waitForConnected(kAnswerMs);
  if (ok) {
    socket.write(kRaise);
    ok = socket.waitForBytesWritten(kAnswerMs) && socket.waitForReadyRead(kAnswerMs) &&
         socket.readLine() == kRaised;
  }
  if (answered) *answered = ok;
  log.line("Zellick is already running on " + settings.toStdString() +
           (ok ? "; brought it to the front" : "; it did not answer"));
  return nullptr;
}

InstanceLock::InstanceLock(int fd, QString socketName, Log& log)
    : fd_(fd), socketName_(std::move(socketName)), log_(log) {}

InstanceLock::~InstanceLock() {
  if (server_) server_->close();
  if (fd_ >= 0) ::close(fd_);  // drops the lock
}

void InstanceLock::onRaise(std::function<void()> raise) {
  raise_ = std::move(raise);
  if (!server_) listen();
}

void InstanceLock::listen() {
  server_ = new QLocalServer(this);
  server_->setSocketOptions(QLocalServer::UserAccessOption);
  // A socket file left by an instance that was killed: ours now, as we hold the lock.
  QLocalServer::removeServer(socketName_);
  if (!server_->listen(socketName_)) {
    log_.line("Instance: cannot listen on " + socketName_.toStdString() +
              "; a later start will not bring this one to the front");
    return;
  }
  connect(server_, &QLocalServer::newConnection, this, [this] {
    while (QLocalSocket* peer = server_->nextPendingConnection()) {
      connect(peer, &QLocalSocket::disconnected, peer, &QObject::deleteLater);
      connect(peer, &QLocalSocket::readyRead, this, [this, peer] {
        if (!peer->canReadLine()) return;
        if (peer->readLine() == kRaise) {
          log_.line("Instance: another start on the same settings; coming to the front");
          if (raise_) raise_();
          peer->write(kRaised);
        }
        peer->disconnectFromServer();
      });
    }
  });
}

}  // namespace zellick::qt

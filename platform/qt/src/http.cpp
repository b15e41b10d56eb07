#include "platform/qt/http.h"

#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QPointer>
#include <QSslError>
#include <QTimer>

#include <algorithm>
#include <cmath>
#include <map>
#include <set>

namespace zellick::qt {

namespace {

// Whether a reply that has a status code came to its end: Qt keeps the code of a reply whose
// connection broke off midway, and reports the break only as the error. Errors that stand for
// the status code itself (4xx, 5xx) leave the reply whole.
bool cameWhole(QNetworkReply::NetworkError error) {
  const auto within = [error](QNetworkReply::NetworkError from, QNetworkReply::NetworkError to) {
    return error >= from && error <= to;
  };
  return error == QNetworkReply::NoError ||
         within(QNetworkReply::ContentAccessDenied, QNetworkReply::UnknownContentError) ||
         within(QNetworkReply::InternalServerError, QNetworkReply::UnknownServerError);
}

}  // namespace

// Owns the network access manager and the replies in flight; everything here runs on the
// client's thread.
class HttpWorker : public QObject {
 public:
  void start(HttpRequest request, std::function<void(HttpReply)> done) {
    // A connection whose certificate was taken as presented is kept for requests that trust the
    // same hosts: each list of trusted hosts has a manager, and so a connection cache, of its own.
    QNetworkAccessManager*& manager = managers_[request.trustedHosts];
    if (!manager) {
      manager = new QNetworkAccessManager(this);
      manager->setRedirectPolicy(QNetworkRequest::NoLessSafeRedirectPolicy);
    }
    QNetworkRequest r{QUrl(QString::fromStdString(request.url))};
    for (const auto& [name, value] : request.headers)
      r.setRawHeader(QByteArray::fromStdString(name), QByteArray::fromStdString(value));
    // Qt hands back a compressed reply that broke off midway as if whole, so replies come
    // unencoded, where the break shows.
    if (!r.hasRawHeader("Accept-Encoding")) r.setRawHeader("Accept-Encoding", "identity");
    r.setAttribute(QNetworkRequest::CacheLoadControlAttribute, QNetworkRequest::AlwaysNetwork);
    r.setAttribute(QNetworkRequest::CacheSaveControlAttribute, false);
    QNetworkReply* reply = manager->sendCustomRequest(r, QByteArray::fromStdString(request.method),
                                                      QByteArray::fromStdString(request.body));
    inFlight_.insert(reply);
    // Only these errors of this reply (each names its certificate, so a redirect's target is
    // checked anew), and only while its URL names a trusted host.
    if (!request.trustedHosts.empty()) {
      connect(reply, &QNetworkReply::sslErrors, reply,
              [reply, hosts = request.trustedHosts](const QList<QSslError>& errors) {
                const std::string host = reply->url().host().toStdString();
                if (std::find(hosts.begin(), hosts.end(), host) != hosts.end())
                  reply->ignoreSslErrors(errors);
              });
    }
    auto outcome = std::make_shared<HttpReply>();
    // A reply longer than allowed is cut off, not read on.
    connect(reply, &QNetworkReply::readyRead, reply, [reply, max = request.maxBodyBytes, outcome] {
      if (static_cast<std::size_t>(reply->bytesAvailable()) + outcome->body.size() > max) {
        outcome->status = Status(Status::Code::TooLarge, "the reply is larger than allowed");
        reply->abort();
        return;
      }
      outcome->body += reply->readAll().toStdString();
    });
    auto* deadline = new QTimer(reply);
    deadline->setSingleShot(true);
    connect(deadline, &QTimer::timeout, reply, [reply, outcome] {
      outcome->status = Status(Status::Code::TimedOut, "no answer in time");
      reply->abort();
    });
    deadline->start(static_cast<int>(std::clamp(request.timeout * 1000.0, 0.0, 2e9)));
    connect(reply, &QNetworkReply::finished, this, [this, reply, outcome, done = std::move(done)] {
      inFlight_.erase(reply);
      reply->deleteLater();
      if (outcome->status.ok()) {
        const QVariant code = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute);
        // A redirect keeps its first hop's status although its target never answered.
        if (code.isValid() && cameWhole(reply->error())) {
          // Whatever the status, a reply came.
          outcome->code = code.toInt();
          outcome->body += reply->readAll().toStdString();
        } else {
          const bool refused = reply->error() == QNetworkReply::ConnectionRefusedError ||
                               reply->error() == QNetworkReply::HostNotFoundError ||
                               reply->error() == QNetworkReply::TemporaryNetworkFailureError ||
                               reply->error() == QNetworkReply::NetworkSessionFailedError;
          outcome->status = Status(refused ? Status::Code::Unavailable : Status::Code::Failed,
                                   reply->errorString().toStdString());
          outcome->body.clear();
        }
      } else {
        outcome->body.clear();
      }
      if (done) done(*outcome);
    });
  }

  // Drops every request in flight without telling its caller.
  void abandonAll() {
    for (QNetworkReply* reply : std::set<QNetworkReply*>(inFlight_)) {
      reply->disconnect(this);
      reply->abort();
      delete reply;
    }
    inFlight_.clear();
    for (auto& [hosts, manager] : managers_) delete manager;
    managers_.clear();
  }

 private:
  std::map<std::vector<std::string>, QNetworkAccessManager*> managers_;
  std::set<QNetworkReply*> inFlight_;
};

QtHttpClient::QtHttpClient(bool startNow) : worker_(new HttpWorker) {
  thread_.setObjectName(QStringLiteral("zellick-http"));
  worker_->moveToThread(&thread_);
  QObject::connect(&thread_, &QThread::finished, worker_, &QObject::deleteLater);
  if (startNow) start();
}

QtHttpClient::~QtHttpClient() {
  if (thread_.isRunning()) {
    QMetaObject::invokeMethod(
        worker_, [w = worker_] { w->abandonAll(); }, Qt::BlockingQueuedConnection);
    thread_.quit();
    thread_.wait();
  } else {
    delete worker_;
  }
}

void QtHttpClient::start() {
  std::vector<std::pair<HttpRequest, std::function<void(HttpReply)>>> waiting;
  {
    std::lock_guard<std::mutex> lock(mutex_);
    if (started_) return;
    started_ = true;
    waiting.swap(waiting_);
  }
  thread_.start();
  for (auto& [request, done] : waiting) post(std::move(request), std::move(done));
}

void QtHttpClient::send(HttpRequest request, std::function<void(HttpReply)> done) {
  {
    std::lock_guard<std::mutex> lock(mutex_);
    if (!started_) {
      waiting_.emplace_back(std::move(request), std::move(done));
      return;
    }
  }
  post(std::move(request), std::move(done));
}

void QtHttpClient::post(HttpRequest request, std::function<void(HttpReply)> done) {
  QMetaObject::invokeMethod(
      worker_,
      [w = worker_, request = std::move(request), done = std::move(done)]() mutable {
        w->start(std::move(request), std::move(done));
      },
      Qt::QueuedConnection);
}

}  // namespace zellick::qt

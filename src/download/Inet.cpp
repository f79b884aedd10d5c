#include "download/Inet.h"

#include "frame/Failure.h"

#include <QElapsedTimer>
#include <QEventLoop>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QTimer>
#include <QUrl>

namespace {


// Errors that come with an HTTP status: the server answered, and its body is the reply.
bool serverAnswered(QNetworkReply::NetworkError error) {
    const int code = static_cast<int>(error);
    return error == QNetworkReply::NoError || (code >= 201 && code <= 299) || (code >= 401 && code <= 499);
}

} // namespace

Inet::Inet() : RequestTimeoutMs(60 * 1000) {}

Inet::~Inet() {
    if (reply_) {
        reply_->abort();
        reply_ = nullptr;
    }
}

void Inet::Cancel() {
    if (reply_) {
        cancelled_ = true;
        reply_->abort();
    }
}

QString Inet::OpenURL(const QString& url) { return QString::fromUtf8(OpenURLBytes(url)); }

QByteArray Inet::OpenURLBytes(const QString& url) { return OpenURLBytes(url, {}); }

QByteArray Inet::ResponseHeader(const QByteArray& name) const {
    for (const auto& [key, value] : responseHeaders_)
        if (key.compare(name, Qt::CaseInsensitive) == 0)
            return value;
    return {};
}

QByteArray Inet::OpenURLBytes(const QString& url, const Headers& headers) {
    const QString source = QStringLiteral("Inet::OpenURL");
    if (reply_)
        throw Failure(FailureNumber::Network, QStringLiteral("Still executing last request."), source);
    const QUrl address(url);
    if (!address.isValid() || address.host().isEmpty())
        throw Failure(FailureNumber::Network, QStringLiteral("Invalid address: %1").arg(url), source);

    if (!manager_)
        manager_ = std::make_unique<QNetworkAccessManager>();
    responseCode_ = 0;
    responseHeaders_.clear();
    cancelled_ = false;

    QNetworkRequest request(address);
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute,
                         QNetworkRequest::NoLessSafeRedirectPolicy);
    for (const auto& [name, value] : headers)
        request.setRawHeader(name, value);
    QNetworkReply* reply = manager_->get(request);
    reply_ = reply;

    QByteArray body;
    bool timedOut = false;
    bool tooLarge = false;
    QEventLoop loop;
    QTimer silence;
    silence.setSingleShot(true);
    silence.setInterval(RequestTimeoutMs);

    QObject::connect(&silence, &QTimer::timeout, reply, [&] {
        timedOut = true;
        reply->abort();
    });
    QObject::connect(reply, &QNetworkReply::readyRead, reply, [&] {
        silence.start();
        body += reply->readAll();
        if (body.size() > MaxReplyBytes) {
            tooLarge = true;
            reply->abort();
        }
    });
    QObject::connect(reply, &QNetworkReply::finished, &loop, &QEventLoop::quit);

    QElapsedTimer waited;
    waited.start();
    silence.start();
    if (!reply->isFinished())
        loop.exec();
    waitedNs_ += waited.nsecsElapsed();
    silence.stop();

    if (!tooLarge && reply->bytesAvailable() > 0)
        body += reply->readAll();
    if (!tooLarge && body.size() > MaxReplyBytes)
        tooLarge = true;
    const QNetworkReply::NetworkError error = reply->error();
    const QString errorText = reply->errorString();
    const QVariant status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute);
    responseCode_ = status.isValid() ? status.toInt() : 0;
    responseHeaders_ = reply->rawHeaderPairs();
    reply_ = nullptr;
    QObject::disconnect(reply, nullptr, nullptr, nullptr);
    reply->deleteLater();

    if (tooLarge)
        throw Failure(InetFailure::TooLarge,
                      QStringLiteral("The reply is larger than %1 bytes.").arg(MaxReplyBytes), source);
    if (timedOut)
        throw Failure(FailureNumber::Network, QStringLiteral("Request timed out"), source);
    if (cancelled_)
        throw Failure(FailureNumber::Network, QStringLiteral("The request was cancelled."), source);
    if (!serverAnswered(error) || responseCode_ == 0)
        throw Failure(FailureNumber::Network, errorText, source);
    return body;
}

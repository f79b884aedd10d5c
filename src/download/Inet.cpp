#include "download/Inet.h"

#include "frame/Failure.h"

#include <QElapsedTimer>
#include <algorithm>
#include <QEventLoop>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QSslSocket>
#include <QTcpSocket>
#include <QTimer>
#include <QUrl>

namespace {


// Errors that come with an HTTP status: the server answered, and its body is the reply (a 400
// comes as a protocol error, the others in the content and server groups).
bool serverAnswered(QNetworkReply::NetworkError error) {
    const int code = static_cast<int>(error);
    return error == QNetworkReply::NoError || error == QNetworkReply::ProtocolInvalidOperationError ||
           (code >= 201 && code <= 299) || (code >= 401 && code <= 499);
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
    if (socket_) {
        cancelled_ = true;
        socket_->abort();
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
    if (StillExecuting())
        throw Failure(FailureNumber::Network, QStringLiteral("Still executing last request."), source);
    const QUrl address(url);
    if (!address.isValid() || address.host().isEmpty())
        throw Failure(FailureNumber::Network, QStringLiteral("Invalid address: %1").arg(url), source);

    // The path and query as given, when the URL would go out otherwise.
    const QByteArray asGiven = url.trimmed().toUtf8();
    if (address.toEncoded() != asGiven) {
        const qsizetype authority = asGiven.indexOf("://");
        const qsizetype slash = authority < 0 ? -1 : asGiven.indexOf('/', authority + 3);
        const QByteArray target = slash < 0 ? QByteArray() : asGiven.mid(slash);
        const bool sendable = !target.isEmpty() && std::all_of(target.begin(), target.end(), [](char c) {
            return c > ' ' && c < 0x7f;
        });
        if (sendable && address.toEncoded(QUrl::RemovePath | QUrl::RemoveQuery | QUrl::RemoveFragment) ==
                            asGiven.left(slash))
            return getAsGiven(address, target, headers);
    }

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

QByteArray Inet::getAsGiven(const QUrl& address, const QByteArray& target, const Headers& headers) {
    const QString source = QStringLiteral("Inet::OpenURL");
    responseCode_ = 0;
    responseHeaders_.clear();
    cancelled_ = false;

    const bool secure = address.scheme() == QLatin1String("https");
    std::unique_ptr<QAbstractSocket> socket;
    if (secure)
        socket = std::make_unique<QSslSocket>();
    else
        socket = std::make_unique<QTcpSocket>();
    socket_ = socket.get();

    QByteArray request = "GET " + target + " HTTP/1.0\r\nHost: " + address.host(QUrl::FullyEncoded).toLatin1();
    if (address.port() > 0)
        request += ':' + QByteArray::number(address.port());
    request += "\r\n";
    for (const auto& [name, value] : headers)
        request += name + ": " + value + "\r\n";
    request += "Connection: close\r\n\r\n";

    QByteArray received;
    bool timedOut = false;
    bool tooLarge = false;
    QEventLoop loop;
    QTimer silence;
    silence.setSingleShot(true);
    silence.setInterval(RequestTimeoutMs);
    QObject::connect(&silence, &QTimer::timeout, socket.get(), [&] {
        timedOut = true;
        socket_->abort();
    });
    const auto send = [&] { socket_->write(request); };
    if (secure)
        QObject::connect(static_cast<QSslSocket*>(socket.get()), &QSslSocket::encrypted, socket.get(), send);
    else
        QObject::connect(socket.get(), &QAbstractSocket::connected, socket.get(), send);
    QObject::connect(socket.get(), &QIODevice::readyRead, socket.get(), [&] {
        silence.start();
        received += socket_->readAll();
        if (received.size() > MaxReplyBytes + 64 * 1024) {
            tooLarge = true;
            socket_->abort();
        }
    });
    // Over when the connection is gone: closed by the server, failed, cancelled or timed out.
    QObject::connect(socket.get(), &QAbstractSocket::stateChanged, &loop, [&](QAbstractSocket::SocketState state) {
        if (state == QAbstractSocket::UnconnectedState)
            loop.quit();
    });

    const quint16 port = quint16(address.port(secure ? 443 : 80));
    if (secure)
        static_cast<QSslSocket*>(socket.get())->connectToHostEncrypted(address.host(), port);
    else
        socket->connectToHost(address.host(), port);
    QElapsedTimer waited;
    waited.start();
    silence.start();
    if (socket->state() != QAbstractSocket::UnconnectedState)
        loop.exec();
    waitedNs_ += waited.nsecsElapsed();
    silence.stop();
    received += socket->readAll();
    const QAbstractSocket::SocketError error = socket->error();
    const QString errorText = socket->errorString();
    QObject::disconnect(socket.get(), nullptr, nullptr, nullptr);
    socket_ = nullptr;

    if (tooLarge)
        throw Failure(InetFailure::TooLarge, QStringLiteral("The reply is larger than %1 bytes.").arg(MaxReplyBytes),
                      source);
    if (timedOut)
        throw Failure(FailureNumber::Network, QStringLiteral("Request timed out"), source);
    if (cancelled_)
        throw Failure(FailureNumber::Network, QStringLiteral("The request was cancelled."), source);
    // The server ends the reply by closing; anything else before a whole head is a failure.
    const qsizetype headEnd = received.indexOf("\r\n\r\n");
    if (headEnd < 0 || (error != QAbstractSocket::RemoteHostClosedError && error != QAbstractSocket::UnknownSocketError))
        throw Failure(FailureNumber::Network, headEnd < 0 && error == QAbstractSocket::RemoteHostClosedError
                                                  ? QStringLiteral("The server closed the connection without a reply.")
                                                  : errorText,
                      source);
    const QList<QByteArray> lines = received.left(headEnd).split('\n');
    const QList<QByteArray> statusLine = lines.value(0).trimmed().split(' ');
    bool numeric = false;
    responseCode_ = statusLine.value(1).toInt(&numeric);
    if (!statusLine.value(0).startsWith("HTTP/") || !numeric)
        throw Failure(FailureNumber::Network, QStringLiteral("The server's reply is not HTTP."), source);
    qint64 length = -1;
    for (qsizetype i = 1; i < lines.size(); ++i) {
        const qsizetype colon = lines[i].indexOf(':');
        if (colon <= 0)
            continue;
        const QByteArray name = lines[i].left(colon).trimmed();
        const QByteArray value = lines[i].mid(colon + 1).trimmed();
        responseHeaders_.append({name, value});
        if (name.compare("Content-Length", Qt::CaseInsensitive) == 0)
            length = value.toLongLong();
    }
    QByteArray body = received.mid(headEnd + 4);
    if (length >= 0 && body.size() < length)
        throw Failure(FailureNumber::Network, QStringLiteral("The connection was closed before the whole reply came."),
                      source);
    if (length >= 0)
        body.truncate(length);
    if (body.size() > MaxReplyBytes)
        throw Failure(InetFailure::TooLarge, QStringLiteral("The reply is larger than %1 bytes.").arg(MaxReplyBytes),
                      source);
    return body;
}

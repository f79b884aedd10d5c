#pragma once
// The connection object of the download screens: a blocking HTTP GET. OpenURL returns when the
// whole body is in hand or the transfer has failed; meanwhile a local event loop serves the
// program's events, so that buttons such as Cancel get through. There is no retry.
//
// An address holding characters that a URL may not carry as they are (the caret of "^NSEI" in the
// older quotes protocol) goes out with its path and query exactly as given: the request is then
// written by hand (HTTP/1.0, one connection), since the network access manager would
// percent-encode them.
//
// A reply with any HTTP status is returned as it came: the server answered, and the caller reads
// what it holds. Only a failed transfer raises a Failure with FailureNumber::Network: no
// connection, refused, a name that does not resolve, a time-out, a connection lost mid-body, a
// cancelled transfer, a certificate that does not check out. A body larger than MaxReplyBytes raises Failure InetFailure::TooLarge.

#include <QByteArray>
#include <QList>
#include <QPair>
#include <QString>

#include <memory>

class QAbstractSocket;
class QNetworkAccessManager;
class QNetworkReply;
class QUrl;

namespace InetFailure {
inline constexpr int TooLarge = 7;   // "out of memory": the reply passed the size cap
}

class Inet {
public:
    Inet();
    ~Inet();
    Inet(const Inet&) = delete;
    Inet& operator=(const Inet&) = delete;

    // The reply's body as text (UTF-8).
    QString OpenURL(const QString& url);
    // The reply's body as bytes.
    QByteArray OpenURLBytes(const QString& url);
    // The same, with these request headers (name, value) sent along.
    using Headers = QList<QPair<QByteArray, QByteArray>>;
    QByteArray OpenURLBytes(const QString& url, const Headers& headers);

    // Cancels a transfer still open; OpenURL then fails. Does nothing when none is open.
    void Cancel();
    bool StillExecuting() const { return reply_ != nullptr || socket_ != nullptr; }

    // Time without any data from the server after which a transfer fails, in milliseconds
    // (60 seconds).
    int RequestTimeoutMs;
    // The largest body taken into memory.
    qint64 MaxReplyBytes = qint64(64) * 1024 * 1024;

    // The HTTP status of the last reply, 0 when none came.
    int ResponseCode() const { return responseCode_; }
    // A header of the last reply (the name in any case), empty when it had none.
    QByteArray ResponseHeader(const QByteArray& name) const;
    // Time spent waiting for replies since this object was made, in nanoseconds.
    qint64 WaitedNanoseconds() const { return waitedNs_; }

private:
    QByteArray getAsGiven(const QUrl& address, const QByteArray& target, const Headers& headers);

    std::unique_ptr<QNetworkAccessManager> manager_;
    QNetworkReply* reply_ = nullptr;
    QAbstractSocket* socket_ = nullptr;   // the connection of a request written by hand
    bool cancelled_ = false;
    int responseCode_ = 0;
    Headers responseHeaders_;
    qint64 waitedNs_ = 0;
};

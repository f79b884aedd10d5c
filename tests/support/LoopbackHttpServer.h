#pragma once
// A small HTTP server on the loopback interface for network tests. It answers every GET from the
// test's handler: a body with a status, a reply held back for a while, or a connection closed in
// the middle of the body. It records the request target (path and query) and the headers of
// every request. It runs in the test's thread: its work is done while the client waits in its
// event loop.
//
// It speaks HTTPS as well, with a self-signed certificate for 127.0.0.1 made once per test
// process. Qt makes no keys, so the key and certificate come from the `openssl` command; where
// it is missing (or Qt has no TLS), httpsAvailable() is false and the HTTPS tests skip.
// TrustedLoopbackCertificate makes the client trust that certificate for the test's duration.

#include <QByteArray>
#include <QList>
#include <QPair>
#include <QSslConfiguration>
#include <QString>

#include <functional>
#include <memory>

class QTcpServer;
class QTcpSocket;

struct LoopbackReply {
    int status = 200;
    QByteArray body;
    int delayMs = 0;            // the reply is held back this long
    bool closeMidBody = false;  // announces the whole body, sends half of it, closes
    int pieceGapMs = 0;         // the body sent in four pieces this far apart
    QByteArray contentType = "text/plain";
    QList<QPair<QByteArray, QByteArray>> headers;   // further headers of the reply

    static LoopbackReply ok(const QByteArray& body) { return {200, body}; }
    static LoopbackReply withStatus(int status, const QByteArray& body = {}) { return {status, body}; }
};

class LoopbackHttpServer {
public:
    enum class Scheme { Http, Https };
    explicit LoopbackHttpServer(Scheme scheme = Scheme::Http);
    ~LoopbackHttpServer();
    LoopbackHttpServer(const LoopbackHttpServer&) = delete;
    LoopbackHttpServer& operator=(const LoopbackHttpServer&) = delete;

    // The handler gets the raw request target ("/table.csv?s=ABC&d=7..."). Without one, every
    // request gets an empty 200 reply.
    void setHandler(std::function<LoopbackReply(const QByteArray& target)> handler);
    // Every request gets this reply.
    void serve(const LoopbackReply& reply);

    quint16 port() const;
    // "http://127.0.0.1:<port>", or "https://..." for an HTTPS server
    QString endpoint() const;

    // Whether an HTTPS server can be made here.
    static bool httpsAvailable();
    // The TLS configuration of HTTPS servers: the self-signed certificate and its key.
    static QSslConfiguration serverConfiguration();

    // The request targets in arrival order, percent-encoding as sent.
    QList<QByteArray> targets;
    // The same, with the percent-encoding undone.
    QStringList decodedTargets() const;
    // The value of a header of request `index` (in arrival order), empty when it had none.
    QByteArray requestHeader(qsizetype index, const QByteArray& name) const;

    // A port on which nothing listens (a server was opened there and closed again).
    static quint16 deadPort();

private:
    void onConnection();
    void answer(QTcpSocket* socket, const QByteArray& target);

    bool https_ = false;
    std::unique_ptr<QTcpServer> server_;
    std::function<LoopbackReply(const QByteArray&)> handler_;
    QList<QByteArray> heads_;
};

// While it lives, the program's connections trust the loopback server's certificate (added to
// the process's default TLS configuration, which is restored afterwards).
class TrustedLoopbackCertificate {
public:
    TrustedLoopbackCertificate();
    ~TrustedLoopbackCertificate();
    TrustedLoopbackCertificate(const TrustedLoopbackCertificate&) = delete;
    TrustedLoopbackCertificate& operator=(const TrustedLoopbackCertificate&) = delete;

private:
    QSslConfiguration saved_;
};

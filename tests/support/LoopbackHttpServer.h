#pragma once
// A small HTTP server on the loopback interface for network tests. It answers every GET from the
// test's handler: a body with a status, a reply held back for a while, or a connection closed in
// the middle of the body. It records the request target (path and query) of every request.
// It runs in the test's thread: its work is done while the client waits in its event loop.

#include <QByteArray>
#include <QList>
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
    QByteArray contentType = "text/plain";

    static LoopbackReply ok(const QByteArray& body) { return {200, body}; }
    static LoopbackReply withStatus(int status, const QByteArray& body = {}) { return {status, body}; }
};

class LoopbackHttpServer {
public:
    LoopbackHttpServer();
    ~LoopbackHttpServer();
    LoopbackHttpServer(const LoopbackHttpServer&) = delete;
    LoopbackHttpServer& operator=(const LoopbackHttpServer&) = delete;

    // The handler gets the raw request target ("/table.csv?s=ABC&d=7..."). Without one, every
    // request gets an empty 200 reply.
    void setHandler(std::function<LoopbackReply(const QByteArray& target)> handler);
    // Every request gets this reply.
    void serve(const LoopbackReply& reply);

    quint16 port() const;
    // "http://127.0.0.1:<port>"
    QString endpoint() const;

    // The request targets in arrival order, percent-encoding as sent.
    QList<QByteArray> targets;
    // The same, with the percent-encoding undone.
    QStringList decodedTargets() const;

    // A port on which nothing listens (a server was opened there and closed again).
    static quint16 deadPort();

private:
    void onConnection();
    void answer(QTcpSocket* socket, const QByteArray& target);

    std::unique_ptr<QTcpServer> server_;
    std::function<LoopbackReply(const QByteArray&)> handler_;
};

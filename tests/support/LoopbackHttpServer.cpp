#include "LoopbackHttpServer.h"

#include <QHostAddress>
#include <QPointer>
#include <QStringList>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTimer>
#include <QUrl>

namespace {

QByteArray reasonPhrase(int status) {
    switch (status) {
    case 200: return "OK";
    case 301: return "Moved Permanently";
    case 302: return "Found";
    case 400: return "Bad Request";
    case 403: return "Forbidden";
    case 404: return "Not Found";
    case 500: return "Internal Server Error";
    case 503: return "Service Unavailable";
    default: return "Status";
    }
}

} // namespace

LoopbackHttpServer::LoopbackHttpServer() : server_(std::make_unique<QTcpServer>()) {
    server_->listen(QHostAddress::LocalHost, 0);
    QObject::connect(server_.get(), &QTcpServer::newConnection, server_.get(), [this] { onConnection(); });
}

LoopbackHttpServer::~LoopbackHttpServer() { server_->close(); }

void LoopbackHttpServer::setHandler(std::function<LoopbackReply(const QByteArray&)> handler) {
    handler_ = std::move(handler);
}

void LoopbackHttpServer::serve(const LoopbackReply& reply) {
    handler_ = [reply](const QByteArray&) { return reply; };
}

quint16 LoopbackHttpServer::port() const { return server_->serverPort(); }

QString LoopbackHttpServer::endpoint() const { return QStringLiteral("http://127.0.0.1:%1").arg(port()); }

QStringList LoopbackHttpServer::decodedTargets() const {
    QStringList decoded;
    for (const QByteArray& target : targets)
        decoded << QUrl::fromPercentEncoding(target);
    return decoded;
}

quint16 LoopbackHttpServer::deadPort() {
    QTcpServer probe;
    probe.listen(QHostAddress::LocalHost, 0);
    const quint16 port = probe.serverPort();
    probe.close();
    return port;
}

void LoopbackHttpServer::onConnection() {
    while (QTcpSocket* socket = server_->nextPendingConnection()) {
        auto buffer = std::make_shared<QByteArray>();
        QObject::connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
        QObject::connect(socket, &QTcpSocket::readyRead, socket, [this, socket, buffer] {
            *buffer += socket->readAll();
            const qsizetype headerEnd = buffer->indexOf("\r\n\r\n");
            if (headerEnd < 0)
                return;
            const QByteArray requestLine = buffer->left(buffer->indexOf("\r\n"));
            const QList<QByteArray> parts = requestLine.split(' ');
            const QByteArray target = parts.size() >= 2 ? parts[1] : QByteArray("/");
            buffer->clear();
            QObject::disconnect(socket, &QTcpSocket::readyRead, nullptr, nullptr);
            targets << target;
            answer(socket, target);
        });
    }
}

void LoopbackHttpServer::answer(QTcpSocket* socket, const QByteArray& target) {
    const LoopbackReply reply = handler_ ? handler_(target) : LoopbackReply{};
    QPointer<QTcpSocket> guarded(socket);
    auto send = [guarded, reply] {
        if (!guarded)
            return;
        QByteArray head = "HTTP/1.1 " + QByteArray::number(reply.status) + ' ' + reasonPhrase(reply.status)
                        + "\r\nContent-Type: " + reply.contentType
                        + "\r\nContent-Length: " + QByteArray::number(reply.body.size())
                        + "\r\nConnection: close\r\n\r\n";
        if (reply.closeMidBody) {
            guarded->write(head + reply.body.left(reply.body.size() / 2));
            guarded->disconnectFromHost();
            return;
        }
        guarded->write(head + reply.body);
        guarded->disconnectFromHost();
    };
    if (reply.delayMs > 0)
        QTimer::singleShot(reply.delayMs, socket, send);
    else
        send();
}

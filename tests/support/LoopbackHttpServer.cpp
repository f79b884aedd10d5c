#include "LoopbackHttpServer.h"

#include <QFile>
#include <QHostAddress>
#include <QPointer>
#include <QProcess>
#include <QSslCertificate>
#include <QSslKey>
#include <QSslSocket>
#include <QStandardPaths>
#include <QTemporaryDir>
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
    case 429: return "Too Many Requests";
    case 500: return "Internal Server Error";
    case 503: return "Service Unavailable";
    default: return "Status";
    }
}

// The certificate and key, made once per process by the openssl command; null when that can't be.
struct Credentials {
    QSslCertificate certificate;
    QSslKey key;
};

const Credentials& credentials() {
    static const Credentials made = [] {
        Credentials result;
        if (!QSslSocket::supportsSsl() || QStandardPaths::findExecutable(QStringLiteral("openssl")).isEmpty())
            return result;
        QTemporaryDir dir;
        if (!dir.isValid())
            return result;
        QProcess openssl;
        openssl.setWorkingDirectory(dir.path());
        openssl.start(QStringLiteral("openssl"),
                      {"req", "-x509", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:prime256v1", "-nodes",
                       "-keyout", "key.pem", "-out", "cert.pem", "-days", "2", "-subj", "/CN=127.0.0.1",
                       "-addext", "subjectAltName=IP:127.0.0.1"});
        if (!openssl.waitForFinished(30000) || openssl.exitStatus() != QProcess::NormalExit || openssl.exitCode() != 0)
            return result;
        QFile certFile(dir.filePath(QStringLiteral("cert.pem"))), keyFile(dir.filePath(QStringLiteral("key.pem")));
        if (!certFile.open(QIODevice::ReadOnly) || !keyFile.open(QIODevice::ReadOnly))
            return result;
        const QSslCertificate certificate(certFile.readAll(), QSsl::Pem);
        const QSslKey key(keyFile.readAll(), QSsl::Ec, QSsl::Pem);
        if (!certificate.isNull() && !key.isNull())
            result = {certificate, key};
        return result;
    }();
    return made;
}

// A server whose connections start TLS as they come in; their readyRead brings plain text.
class TlsServer : public QTcpServer {
protected:
    void incomingConnection(qintptr descriptor) override {
        auto* socket = new QSslSocket(this);
        if (!socket->setSocketDescriptor(descriptor)) {
            delete socket;
            return;
        }
        socket->setSslConfiguration(LoopbackHttpServer::serverConfiguration());
        socket->startServerEncryption();
        addPendingConnection(socket);
    }
};

} // namespace

bool LoopbackHttpServer::httpsAvailable() { return !credentials().certificate.isNull(); }

QSslConfiguration LoopbackHttpServer::serverConfiguration() {
    QSslConfiguration configuration = QSslConfiguration::defaultConfiguration();
    configuration.setLocalCertificate(credentials().certificate);
    configuration.setPrivateKey(credentials().key);
    configuration.setPeerVerifyMode(QSslSocket::VerifyNone);
    return configuration;
}

TrustedLoopbackCertificate::TrustedLoopbackCertificate() : saved_(QSslConfiguration::defaultConfiguration()) {
    QSslConfiguration trusting = saved_;
    trusting.addCaCertificate(credentials().certificate);
    QSslConfiguration::setDefaultConfiguration(trusting);
}

TrustedLoopbackCertificate::~TrustedLoopbackCertificate() { QSslConfiguration::setDefaultConfiguration(saved_); }

LoopbackHttpServer::LoopbackHttpServer(Scheme scheme) : https_(scheme == Scheme::Https && httpsAvailable()) {
    if (https_)
        server_ = std::make_unique<TlsServer>();
    else
        server_ = std::make_unique<QTcpServer>();
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

QString LoopbackHttpServer::endpoint() const {
    return (https_ ? QStringLiteral("https://127.0.0.1:%1") : QStringLiteral("http://127.0.0.1:%1")).arg(port());
}

QByteArray LoopbackHttpServer::requestHeader(qsizetype index, const QByteArray& name) const {
    if (index < 0 || index >= heads_.size())
        return {};
    for (const QByteArray& line : heads_[index].split('\n')) {
        const qsizetype colon = line.indexOf(':');
        if (colon > 0 && line.left(colon).trimmed().compare(name, Qt::CaseInsensitive) == 0)
            return line.mid(colon + 1).trimmed();
    }
    return {};
}

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
            heads_ << buffer->left(headerEnd);
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
                        + "\r\nContent-Length: " + QByteArray::number(reply.body.size());
        for (const auto& [name, value] : reply.headers)
            head += "\r\n" + name + ": " + value;
        head += "\r\nConnection: close\r\n\r\n";
        if (reply.closeMidBody) {
            guarded->write(head + reply.body.left(reply.body.size() / 2));
            guarded->disconnectFromHost();
            return;
        }
        if (reply.pieceGapMs > 0) {   // the body in four pieces, a gap before each
            guarded->write(head);
            for (int i = 1; i <= 4; ++i)
                QTimer::singleShot(i * reply.pieceGapMs, guarded.data(), [guarded, reply, i] {
                    const qsizetype from = reply.body.size() * (i - 1) / 4, to = reply.body.size() * i / 4;
                    guarded->write(reply.body.mid(from, to - from));
                    if (i == 4)
                        guarded->disconnectFromHost();
                });
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

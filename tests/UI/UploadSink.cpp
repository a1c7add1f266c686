#include "UploadSink.h"

#include <QRegularExpression>
#include <QTcpSocket>

namespace {
bool isWhole(const QByteArray &request)
{
    const int headEnd = request.indexOf("\r\n\r\n");
    const QRegularExpression length(
        "Content-Length: (\\d+)", QRegularExpression::CaseInsensitiveOption);
    const int bodySize = length.match(QString::fromLatin1(request)).captured(1).toInt();
    return headEnd >= 0 && request.size() >= headEnd + 4 + bodySize;
}
}

UploadSink::UploadSink(int result) : result(result)
{
    connect(this, &QTcpServer::newConnection, this, [this] {
        QTcpSocket *socket = nextPendingConnection();
        connect(socket, &QTcpSocket::readyRead, this, [this, socket] { receive(socket); });
    });
    listen(QHostAddress::LocalHost);
}

void UploadSink::receive(QTcpSocket *socket)
{
    const QByteArray request = socket->property("request").toByteArray() + socket->readAll();
    socket->setProperty("request", request);
    if (!isWhole(request))
        return;
    uploads.append(request);
    const QByteArray body = "{\"Result\": " + QByteArray::number(result) + '}';
    socket->write("HTTP/1.1 200 OK\r\nConnection: close\r\nContent-Length: "
        + QByteArray::number(body.size()) + "\r\n\r\n" + body);
    socket->disconnectFromHost();
}

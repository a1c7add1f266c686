#include "FleetHttp.h"

#include "FleetSockets.h"

#include <QTcpSocket>
#include <QTimer>

namespace {

constexpr int largestHead = 65536;
constexpr qint64 pieceBytes = 262144;

// Lives from the connection's start to its end.
class Connection : public QObject
{
public:
    Connection(QTcpSocket *socket, FleetHttpSite &site, bool withDigest, QObject *parent);

private:
    enum State { Head, Body, Answer };

    void read();
    bool readHead();
    void startBody();
    bool readBody();
    void finish();
    void answer();
    void end();

    QTcpSocket *socket;
    FleetHttpSite &site;
    const bool withDigest;
    State state;
    QByteArray unread; // of the headers, and what came with them
    FleetExchange exchange;
};

Connection::Connection(QTcpSocket *socket, FleetHttpSite &site, bool withDigest, QObject *parent) :
    QObject(parent),
    socket(socket),
    site(site),
    withDigest(withDigest),
    state(Head)
{
    socket->setParent(this);
    socket->setReadBufferSize(4 * pieceBytes);
    exchange.clock.start();
    exchange.source =
        QStringLiteral("%1:%2").arg(socket->peerAddress().toString()).arg(socket->peerPort());
    connect(socket, &QTcpSocket::readyRead, this, &Connection::read);
    connect(socket, &QTcpSocket::disconnected, this, &Connection::end);
    QTimer::singleShot(0, this, &Connection::read); // what came before the connections above
}

void Connection::read()
{
    while (state == Head ? readHead() : readBody()) { }
}

bool Connection::readHead()
{
    unread += socket->read(largestHead);
    const int end = unread.indexOf("\r\n\r\n");
    if (end < 0) {
        if (unread.size() >= largestHead)
            socket->abort();
        return false;
    }
    exchange.head = unread.left(end);
    unread.remove(0, end + 4);
    const QList<QByteArray> lines = exchange.head.split('\n');
    const QList<QByteArray> words = lines.first().trimmed().split(' ');
    if (words.size() == 3 && words.at(2).startsWith("HTTP/1.")) {
        exchange.method = words.at(0);
        exchange.path = words.at(1);
    }
    for (int i = 1; i < lines.size(); ++i) {
        const int colon = lines.at(i).indexOf(':');
        if (colon > 0)
            exchange.headers[lines.at(i).left(colon).toLower()] =
                lines.at(i).mid(colon + 1).trimmed();
    }
    startBody();
    return true;
}

void Connection::startBody()
{
    state = Body;
    bool isNumber = false;
    exchange.length = exchange.headers.value("content-length").toLongLong(&isNumber);
    if (!isNumber || exchange.length < 0)
        exchange.length = exchange.method == "POST" ? -1 : 0;
    const QByteArray boundary = FleetFormReader::boundaryOf(exchange.headers.value("content-type"));
    if (!boundary.isEmpty())
        exchange.form.reset(new FleetFormReader(boundary, withDigest));
    site.begin(exchange);
    if (exchange.length > 0
        && exchange.headers.value("expect").compare("100-continue", Qt::CaseInsensitive) == 0)
        socket->write("HTTP/1.1 100 Continue\r\n\r\n");
}

// False when there's nothing more to read now.
bool Connection::readBody()
{
    if (state == Answer) {
        socket->readAll();
        return false;
    }
    const qint64 limit = exchange.answer.resetAfter;
    if (limit >= 0 && exchange.received >= limit) {
        FleetSockets::reset(*socket);
        return false;
    }
    if (exchange.received >= exchange.length) {
        exchange.complete = exchange.length >= 0;
        finish();
        return false;
    }
    const qint64 wanted = qMin(exchange.length - exchange.received, pieceBytes);
    QByteArray piece = unread.left(int(wanted));
    unread.clear();
    if (piece.isEmpty())
        piece = socket->read(wanted);
    if (piece.isEmpty())
        return false;
    exchange.received += piece.size();
    if (exchange.form)
        exchange.form->feed(piece);
    return true;
}

void Connection::finish()
{
    state = Answer;
    site.finish(exchange);
    if (exchange.answer.silent)
        site.answered(exchange);
    else
        QTimer::singleShot(exchange.answer.delayMs, this, &Connection::answer);
}

void Connection::answer()
{
    const FleetHttpAnswer &answer = exchange.answer;
    socket->write("HTTP/1.1 " + QByteArray::number(answer.status)
        + (answer.status < 400 ? " OK" : " Error") + "\r\nContent-Type: " + answer.contentType
        + "\r\nContent-Length: " + QByteArray::number(answer.body.size())
        + "\r\nConnection: close\r\n\r\n" + answer.body);
    socket->disconnectFromHost();
}

// The connection is closed, by whichever side.
void Connection::end()
{
    if (state == Body)
        site.finish(exchange);
    else if (state == Answer && !exchange.answer.silent)
        site.answered(exchange);
    deleteLater();
}

}

FleetHttpServer::FleetHttpServer(FleetHttpSite &site, bool withDigest, QObject *parent) :
    QTcpServer(parent),
    site(site),
    withDigest(withDigest)
{
    connect(this, &QTcpServer::newConnection, this, [this] {
        while (QTcpSocket *socket = nextPendingConnection())
            new Connection(socket, this->site, this->withDigest, this);
    });
}

#include "HostProcess.h"

#include "LoadedFunction_win.h"

#include <QDeadlineTimer>
#include <QHostAddress>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QNetworkProxy>
#include <QTcpSocket>
#include <QtEndian>

#include <windows.h>

namespace {

constexpr int headerSize = 5; // of a frame: a letter, and the length of what follows

}

// A connection to door.py, which tells of the frames.
struct HostProcess::Link {
    QTcpSocket socket;
    QByteArray incoming; // up to a frame's end
    QByteArray output;
    QByteArray errors;
    qint64 id = 0;
    int status = -1;
    qint64 received = 0; // bytes of output
    bool fresh = false; // output that nobody has read or waited for
    bool ended = false;

    bool isRunning() const { return id != 0 && !ended; }
    void send(char kind, const QByteArray &content = QByteArray());
    void take(char kind, const QByteArray &content);
    void takeAll();
    template <typename Condition> bool waitFor(int milliseconds, Condition condition);
};

void HostProcess::Link::send(char kind, const QByteArray &content)
{
    QByteArray header(headerSize, kind);
    qToBigEndian(quint32(content.size()), header.data() + 1);
    socket.write(header + content);
    socket.flush();
}

void HostProcess::Link::take(char kind, const QByteArray &content)
{
    switch (kind) {
    case 's':
        id = content.toLongLong();
        break;
    case 'o':
        output += content;
        received += content.size();
        fresh = true;
        break;
    case 'e':
        errors += content;
        break;
    case 'x':
        status = content.toInt();
        ended = true;
        break;
    }
}

void HostProcess::Link::takeAll()
{
    incoming += socket.readAll();
    while (incoming.size() >= headerSize) {
        const int size = headerSize + int(qFromBigEndian<quint32>(incoming.constData() + 1));
        if (incoming.size() < size)
            break;
        take(incoming[0], incoming.mid(headerSize, size - headerSize));
        incoming.remove(0, size);
    }
    ended = ended || socket.state() != QAbstractSocket::ConnectedState;
}

// False when the time is over, or the program is.
template <typename Condition> bool HostProcess::Link::waitFor(int milliseconds, Condition condition)
{
    const QDeadlineTimer deadline(milliseconds);
    takeAll();
    while (!condition() && !ended && !deadline.hasExpired()) {
        socket.waitForReadyRead(int(deadline.remainingTime()));
        takeAll();
    }
    return condition();
}

HostProcess::HostProcess() : link(new Link)
{
    link->socket.setProxy(QNetworkProxy::NoProxy);
    connect(&link->socket, &QTcpSocket::readyRead, this, [this] {
        const int before = link->output.size();
        link->takeAll();
        if (link->output.size() > before)
            emit readyRead();
    });
    connect(&link->socket, &QTcpSocket::disconnected, this, [this] { link->takeAll(); });
}

HostProcess::~HostProcess()
{
    link->socket.disconnect(this);
    kill();
}

// Wine knows its drives and the prefix.
QString HostProcess::path(const QString &file)
{
    using Convert = char *(*)(const wchar_t *);
    static const auto convert = loadedFunction<Convert>(L"kernel32", "wine_get_unix_file_name");
    char *const found = convert ? convert(file.toStdWString().c_str()) : nullptr;
    if (!found)
        qFatal("no path outside of Wine: %s", qPrintable(file));
    const QString result = QString::fromUtf8(found);
    HeapFree(GetProcessHeap(), 0, found);
    return result;
}

bool HostProcess::start(const QString &program, const QStringList &arguments)
{
    const QStringList door = qEnvironmentVariable("VORLYN_TEST_DOOR").split(' ');
    link->socket.connectToHost(QHostAddress(QHostAddress::LocalHost), door.first().toUShort());
    if (!link->socket.waitForConnected(patience)) {
        link->errors = "can't reach the door: " + link->socket.errorString().toUtf8();
        return false;
    }
    const QJsonObject request = {{"key", door.last()},
        {"command", QJsonArray::fromStringList(QStringList(program) + arguments)}};
    link->socket.write(QJsonDocument(request).toJson(QJsonDocument::Compact) + '\n');
    return link->waitFor(patience, [this] { return link->id != 0; });
}

bool HostProcess::isRunning() const
{
    return link->isRunning();
}

qint64 HostProcess::processId() const
{
    return isRunning() ? link->id : 0;
}

bool HostProcess::write(const QByteArray &input)
{
    link->send('i', input);
    return isRunning();
}

void HostProcess::closeInput()
{
    link->send('c');
}

bool HostProcess::canReadLine() const
{
    return link->output.contains('\n');
}

QByteArray HostProcess::readLine()
{
    const int end = link->output.indexOf('\n');
    const QByteArray line = end < 0 ? link->output : link->output.left(end + 1);
    link->output.remove(0, line.size());
    link->fresh = false;
    return line;
}

QByteArray HostProcess::readAll()
{
    QByteArray all;
    all.swap(link->output);
    link->fresh = false;
    return all;
}

QByteArray HostProcess::errors()
{
    QByteArray all;
    all.swap(link->errors);
    return all;
}

bool HostProcess::waitForReadyRead(int milliseconds)
{
    const qint64 before = link->received; // who is told of it may read it at once
    const bool come = link->waitFor(
        milliseconds, [this, before] { return link->fresh || link->received > before; });
    link->fresh = false;
    return come;
}

void HostProcess::terminate()
{
    link->send('t');
}

void HostProcess::kill()
{
    if (!isRunning())
        return;
    link->send('k');
    link->waitFor(patience, [this] { return link->ended; });
}

bool HostProcess::waitForSuccess(int milliseconds)
{
    return link->waitFor(milliseconds, [this] { return link->ended; }) && link->status == 0;
}

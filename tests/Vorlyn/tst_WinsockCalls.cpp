#include "LogCatcher.h"
#include "MulticastSocket.h"
#include "ReplaceImport.h"
#include "SocketLayer.h"
#include "VorlynProtocol.h"
#include "VorlynSDK.h"

#include <QMap>
#include <QMutex>
#include <QWaitCondition>
#include <QtTest>

#include <winsock2.h>
#include <ws2tcpip.h>

#include <cerrno>
#include <cstring>

using namespace VorlynProtocol;

// What the program calls of Winsock, with all arguments as the system gets them. No socket is made
// here and nothing is sent.
class tst_WinsockCalls : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void open_data();
    void open();
    void bind_data();
    void bind();
    void options_data();
    void options();
    void send_data();
    void send();
    void receive_data();
    void receive();
    void closing();
    void socketLayer_data();
    void socketLayer();
    void networkFromStartToStop();
    void failedSetUp_data();
    void failedSetUp();
    void noSocket();
    void failedSendKeepsTheSocket();
    void failedReceiveKeepsTheSocket();
};

namespace {

const char local[] = "10.77.0.1";

// Endpoints as bytes: family, port, address, padding.
const QString receiverName = "0200176f0a4d00010000000000000000";
const QString senderName = "020000000a4d00010000000000000000";
const QString groupName = "02001700effffffa0000000000000000";

const QString joining = "setsockopt(%1, 0, 12, effffffa0a4d0001, 8)";
const QString leaving = "setsockopt(%1, 0, 13, effffffa0a4d0001, 8)";
const QString timing = "setsockopt(%1, 65535, 4101, 0100000000000000, 8)";

// A Winsock that notes each call. A function succeeds unless another answer is set for it; an
// option has a name of its own, "option 12". Any thread.
class Winsock
{
public:
    void reset()
    {
        QMutexLocker lock(&mutex);
        calls.clear();
        results.clear();
        datagrams.clear();
        sockets = 100;
    }

    void answer(const QString &function, int result = SOCKET_ERROR)
    {
        QMutexLocker lock(&mutex);
        results[function] = result;
    }

    void arrive(const QByteArray &datagram)
    {
        QMutexLocker lock(&mutex);
        datagrams.append(datagram);
        changed.wakeAll();
    }

    QStringList noted() const
    {
        QMutexLocker lock(&mutex);
        return calls;
    }

    // The calls on the socket that is bound to this endpoint; %1 is its number.
    QStringList notedOf(const QString &name) const
    {
        const QStringList all = noted();
        const QString number =
            all.filter(name).filter("bind(").value(0).section('(', 1).section(',', 0, 0);
        QStringList found;
        for (const QString &call : all) {
            const QString arguments = call.section('(', 1);
            if (arguments.startsWith(number + ',') || arguments == number + ')')
                found.append(QString(call).replace('(' + number, "(%1"));
        }
        return found;
    }

    int makeSocket(const QString &call)
    {
        QMutexLocker lock(&mutex);
        calls.append(call);
        WSASetLastError(WSAEMFILE);
        return results.value("socket", ++sockets);
    }

    // `name` is what an answer is looked up under.
    int note(const QString &name, const QString &call, int success = 0)
    {
        QMutexLocker lock(&mutex);
        calls.append(call);
        changed.wakeAll();
        const int result = results.value(name, success);
        WSASetLastError(result < 0 ? WSAEINVAL : 0);
        return result;
    }

    int receive(const QString &call, int socket, char *buffer, int size)
    {
        QMutexLocker lock(&mutex);
        calls.append(call);
        if (results.contains("recvfrom")) {
            changed.wait(&mutex, 1); // the caller tries again at once
            WSASetLastError(WSAEINVAL);
            return results["recvfrom"];
        }
        while (datagrams.isEmpty()) {
            if (calls.contains(QStringLiteral("closesocket(%1)").arg(socket))) {
                WSASetLastError(WSAEINTR);
                return SOCKET_ERROR;
            }
            changed.wait(&mutex);
        }
        const QByteArray datagram = datagrams.takeFirst();
        std::memcpy(buffer, datagram.constData(), size_t(qMin(size, datagram.size())));
        return datagram.size();
    }

private:
    mutable QMutex mutex;
    QWaitCondition changed;
    QStringList calls;
    QMap<QString, int> results;
    QList<QByteArray> datagrams;
    int sockets = 100;
};

Winsock winsock;

QString hex(const void *bytes, int size)
{
    return QByteArray(static_cast<const char *>(bytes), size).toHex();
}

SOCKET WSAAPI noteSocket(int family, int type, int protocol)
{
    return SOCKET(winsock.makeSocket(
        QStringLiteral("socket(%1, %2, %3)").arg(family).arg(type).arg(protocol)));
}

int WSAAPI noteBind(SOCKET socket, const sockaddr *name, int size)
{
    return winsock.note(
        "bind", QStringLiteral("bind(%1, %2, %3)").arg(int(socket)).arg(hex(name, size)).arg(size));
}

int WSAAPI noteOption(SOCKET socket, int level, int option, const char *value, int size)
{
    return winsock.note(QStringLiteral("option %1").arg(option),
        QStringLiteral("setsockopt(%1, %2, %3, %4, %5)")
            .arg(int(socket))
            .arg(level)
            .arg(option)
            .arg(hex(value, size))
            .arg(size));
}

int WSAAPI noteSend(
    SOCKET socket, const char *data, int size, int flags, const sockaddr *to, int toSize)
{
    return winsock.note("sendto",
        QStringLiteral("sendto(%1, %2, %3, %4, %5)")
            .arg(int(socket))
            .arg(hex(data, size))
            .arg(flags)
            .arg(hex(to, toSize))
            .arg(toSize),
        size);
}

int WSAAPI noteReceive(
    SOCKET socket, char *buffer, int size, int flags, sockaddr *from, int *fromSize)
{
    const bool sender = from || fromSize;
    const QString call = QStringLiteral("recvfrom(%1, %2, %3%4)")
                             .arg(int(socket))
                             .arg(size)
                             .arg(flags)
                             .arg(sender ? ", sender" : "");
    return winsock.receive(call, int(socket), buffer, size);
}

int WSAAPI noteClose(SOCKET socket)
{
    return winsock.note("closesocket", QStringLiteral("closesocket(%1)").arg(int(socket)));
}

int WSAAPI noteStartup(WORD version, WSADATA *data)
{
    const int result = winsock.note(
        "WSAStartup", QStringLiteral("WSAStartup(%1)").arg(version, 4, 16, QChar('0')));
    if (result == 0) {
        data->wVersion = 0x0102;
        data->wHighVersion = 0x0202;
    }
    return result;
}

int WSAAPI noteCleanup()
{
    return winsock.note("WSACleanup", "WSACleanup()");
}

QStringList with(const QStringList &calls, int socket)
{
    QStringList texts;
    for (const QString &call : calls)
        texts.append(call.contains("%1") ? call.arg(socket) : call);
    return texts;
}

// Runs the network on `local` for as long as it lives.
class Network
{
public:
    Network()
    {
        VorlynSDK::createInstance();
        QNetworkAddressEntry address;
        address.setIp(QHostAddress(local));
        VorlynSDK::instance()->startNetwork(QNetworkInterface(), address);
    }

    ~Network() { VorlynSDK::destroyInstance(); }
};

void request()
{
    VorlynSDK::instance()->setDeviceColor(VorlynDevice(), true); // doesn't wait
}

}

REPLACE_IMPORT(socket, noteSocket);
REPLACE_IMPORT(bind, noteBind);
REPLACE_IMPORT(setsockopt, noteOption);
REPLACE_IMPORT(sendto, noteSend);
REPLACE_IMPORT(recvfrom, noteReceive);
REPLACE_IMPORT(closesocket, noteClose);
REPLACE_IMPORT(WSAStartup, noteStartup);
REPLACE_IMPORT(WSACleanup, noteCleanup);

void tst_WinsockCalls::init()
{
    winsock.reset();
    errno = 0;
}

void tst_WinsockCalls::open_data()
{
    QTest::addColumn<int>("result");

    QTest::newRow("a socket") << 7;
    QTest::newRow("failure") << int(INVALID_SOCKET);
}

void tst_WinsockCalls::open()
{
    QFETCH(int, result);
    winsock.answer("socket", result);
    QCOMPARE(MulticastSocket::open(), result);
    QCOMPARE(winsock.noted(), QStringList("socket(2, 2, 0)"));
}

void tst_WinsockCalls::bind_data()
{
    QTest::addColumn<QString>("address");
    QTest::addColumn<int>("port");
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("result");

    // The interface's own address for both, not the group and not that of all interfaces.
    QTest::newRow("receiver") << local << int(replyPort) << receiverName << 0;
    QTest::newRow("sender") << local << int(anyPort) << senderName << 0;
    QTest::newRow("refused") << local << int(replyPort) << receiverName << SOCKET_ERROR;
    for (const char *text : {"", " ", "no address", "fe80::1%4", "10.77.0.1.2"}) {
        QTest::newRow(text) << text << int(replyPort) << "0200176fffffffff0000000000000000"
                            << SOCKET_ERROR;
    }
}

void tst_WinsockCalls::bind()
{
    QFETCH(QString, address);
    QFETCH(int, port);
    QFETCH(QString, name);
    QFETCH(int, result);
    winsock.answer("bind", result);
    QCOMPARE(
        MulticastSocket::bind(7, address.toLatin1(), static_cast<unsigned short>(port)), result);
    QCOMPARE(winsock.noted(), QStringList("bind(7, " + name + ", 16)"));
}

void tst_WinsockCalls::options_data()
{
    QTest::addColumn<int>("result");

    QTest::newRow("accepted") << 0;
    QTest::newRow("refused") << SOCKET_ERROR;
}

void tst_WinsockCalls::options()
{
    QFETCH(int, result);
    for (const char *option : {"option 12", "option 13", "option 4101"})
        winsock.answer(option, result);
    QCOMPARE(MulticastSocket::join(7, local), result);
    QCOMPARE(MulticastSocket::leave(7, local), result);
    QCOMPARE(MulticastSocket::setSendTimeout(7, 1, 0), result);
    QCOMPARE(winsock.noted(), with({joining, leaving, timing}, 7));
}

void tst_WinsockCalls::send_data()
{
    QTest::addColumn<int>("result");

    QTest::newRow("sent") << 4;
    QTest::newRow("a part") << 3;
    QTest::newRow("failure") << SOCKET_ERROR;
}

// One call: the way out is that of the bound address, without IP_MULTICAST_IF. What Winsock has
// against it is not told by errno.
void tst_WinsockCalls::send()
{
    QFETCH(int, result);
    winsock.answer("sendto", result);
    errno = EBADF;
    QCOMPARE(MulticastSocket::send(7, local, "text", 4), result);
    QCOMPARE(errno, 0);
    QCOMPARE(winsock.noted(), QStringList("sendto(7, 74657874, 0, " + groupName + ", 16)"));
}

void tst_WinsockCalls::receive_data()
{
    QTest::addColumn<bool>("failing");
    QTest::addColumn<QByteArray>("datagram");
    QTest::addColumn<int>("result");

    QTest::newRow("datagram") << false << QByteArray("text") << 4;
    QTest::newRow("empty datagram") << false << QByteArray() << 0;
    QTest::newRow("failure") << true << QByteArray() << SOCKET_ERROR;
}

void tst_WinsockCalls::receive()
{
    QFETCH(bool, failing);
    QFETCH(QByteArray, datagram);
    QFETCH(int, result);
    winsock.arrive(datagram);
    if (failing)
        winsock.answer("recvfrom", result);
    errno = EBADF;
    char buffer[maxDatagram] = {};
    QCOMPARE(MulticastSocket::receive(7, local, buffer, maxDatagram), result);
    QCOMPARE(errno, 0);
    QCOMPARE(QByteArray(buffer), datagram);
    QCOMPARE(winsock.noted(), QStringList("recvfrom(7, 2048, 0)"));
}

// A socket that was woken is closed already, and its number could be another one's.
void tst_WinsockCalls::closing()
{
    MulticastSocket::wake(7);
    MulticastSocket::release(7);
    MulticastSocket::close(8);
    QCOMPARE(winsock.noted(), QStringList({"closesocket(7)", "closesocket(8)"}));
}

void tst_WinsockCalls::socketLayer_data()
{
    QTest::addColumn<int>("result");
    QTest::addColumn<int>("highVersion");
    QTest::addColumn<int>("version");

    QTest::newRow("started") << 0 << 0x0202 << 0x0102;
    QTest::newRow("failure") << WSASYSNOTREADY << 0 << 0;
}

void tst_WinsockCalls::socketLayer()
{
    QFETCH(int, result);
    winsock.answer("WSAStartup", result);
    const SocketLayer::Status status = SocketLayer::start();
    QCOMPARE(status.result, result);
    QTEST(status.highVersion, "highVersion");
    QTEST(status.version, "version");
    SocketLayer::stop();
    QCOMPARE(winsock.noted(), QStringList({"WSAStartup(0202)", "WSACleanup()"}));
}

void tst_WinsockCalls::networkFromStartToStop()
{
    LogCatcher log;
    {
        const Network network;
        QTRY_VERIFY(!winsock.noted().filter("recvfrom(").isEmpty());
        request();
        QTRY_VERIFY(!winsock.noted().filter("sendto(").isEmpty());
    }
    QCOMPARE(winsock.noted().count("socket(2, 2, 0)"), 2);

    // The group is left with the socket, not before.
    QCOMPARE(winsock.notedOf(receiverName),
        QStringList({"bind(%1, " + receiverName + ", 16)", joining, timing, "recvfrom(%1, 2048, 0)",
            "closesocket(%1)"}));
    QStringList sender = winsock.notedOf(senderName);
    QCOMPARE(sender.size(), 5);
    QVERIFY(sender[3].startsWith("sendto(%1, "));
    QVERIFY(sender[3].endsWith(", 0, " + groupName + ", 16)"));
    sender.removeAt(3);
    QCOMPARE(sender,
        QStringList({"bind(%1, " + senderName + ", 16)", joining, timing, "closesocket(%1)"}));

    for (const int port : {replyPort, anyPort})
        QCOMPARE(log.count(QStringLiteral("bind socket port %1 -> 0").arg(port)), 1);
    QCOMPARE(log.count("setsockopt ZR_IP_ADD_MEMBERSHIP 239.255.255.250, 10.77.0.1 -> 0"), 2);
    QCOMPARE(log.count("setsockopt SO_SNDTIMEO 1:0 -> 0"), 2);
}

void tst_WinsockCalls::failedSetUp_data()
{
    QTest::addColumn<QString>("failing");
    QTest::addColumn<QStringList>("calls");
    QTest::addColumn<QString>("line");

    const QString binding = "bind(%1, " + receiverName + ", 16)";
    QTest::newRow("bind") << "bind" << QStringList({binding, "closesocket(%1)"})
                          << "bind socket port 5999 failure";
    QTest::newRow("join") << "option 12" << QStringList({binding, joining, "closesocket(%1)"})
                          << "setsockopt ZR_IP_ADD_MEMBERSHIP 239.255.255.250, 10.77.0.1 failure";
    QTest::newRow("time limit") << "option 4101"
                                << QStringList({binding, joining, timing, "closesocket(%1)"})
                                << "setsockopt SO_SNDTIMEO 1:0 failure";
}

// A socket that can't be set up is closed once, and made anew a second later.
void tst_WinsockCalls::failedSetUp()
{
    QFETCH(QString, failing);
    QFETCH(QStringList, calls);
    QFETCH(QString, line);
    winsock.answer(failing);
    LogCatcher log;
    QElapsedTimer clock;
    clock.start();
    {
        const Network network;
        QTRY_VERIFY(winsock.noted().count("socket(2, 2, 0)") >= 4);
        QVERIFY(clock.elapsed() >= 950);
    }
    QCOMPARE(winsock.notedOf(receiverName), calls);
    QVERIFY(log.count(line) >= 2);
    QCOMPARE(winsock.noted().filter(", 13, ").size(), 0); // what isn't open leaves no group
}

// Nothing but the next trial follows. The number -1 of a failed one is closed like a socket's.
void tst_WinsockCalls::noSocket()
{
    winsock.answer("socket");
    LogCatcher log;
    {
        const Network network;
        QTRY_VERIFY(winsock.noted().count("socket(2, 2, 0)") >= 4);
    }
    QStringList calls = winsock.noted();
    calls.removeAll("socket(2, 2, 0)");
    QCOMPARE(calls, QStringList({"closesocket(-1)", "closesocket(-1)"}));
    QCOMPARE(log.lines(), QStringList());
}

void tst_WinsockCalls::failedSendKeepsTheSocket()
{
    winsock.answer("sendto");
    LogCatcher log;
    {
        const Network network;
        request();
        request();
        QTRY_COMPARE(winsock.noted().filter("sendto(").size(), 2);
    }
    QCOMPARE(winsock.notedOf(senderName).filter("sendto(").size(), 2);
    QCOMPARE(winsock.noted().count("socket(2, 2, 0)"), 2);
    QCOMPARE(log.beginning("send to"), QStringList());
}

void tst_WinsockCalls::failedReceiveKeepsTheSocket()
{
    winsock.answer("recvfrom");
    LogCatcher log;
    {
        const Network network;
        QTRY_VERIFY(winsock.noted().filter("recvfrom(").size() > 3);
    }
    QCOMPARE(winsock.noted().count("socket(2, 2, 0)"), 2);
    QCOMPARE(log.beginning("recvfrom"), QStringList());
}

QTEST_GUILESS_MAIN(tst_WinsockCalls)
#include "tst_WinsockCalls.moc"

#include "LogCatcher.h"
#include "MulticastSocket.h"
#include "ReplaceImport.h"
#include "SocketLayer.h"
#include "VorlynProtocol.h"
#include "VorlynSDK.h"
#include "VorlynSDKThreads.h"

#include <QMap>
#include <QMutex>
#include <QWaitCondition>
#include <QtTest>

#include <winsock2.h>
#include <ws2tcpip.h>

#include <cerrno>
#include <cstring>
#include <memory>

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
    void receiverEndsFirst_data();
    void receiverEndsFirst();
    void stopWhileTheSocketIsMade_data();
    void stopWhileTheSocketIsMade();
    void failedSetUp_data();
    void failedSetUp();
    void noSocket();
    void failedSendKeepsTheSocket_data() { passingErrors(); }
    void failedSendKeepsTheSocket();
    void failedReceiveKeepsTheSocket_data() { passingErrors(); }
    void failedReceiveKeepsTheSocket();
    void otherErrorsMakeANewSocket_data();
    void otherErrorsMakeANewSocket();

private:
    void passingErrors();
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
        answers.clear();
        datagrams.clear();
        sockets = 100;
        held = false;
    }

    void answer(const QString &function, int result = SOCKET_ERROR, int error = 0)
    {
        QMutexLocker lock(&mutex);
        answers[function] = {result, error};
    }

    // The function succeeds again.
    void withdraw(const QString &function)
    {
        QMutexLocker lock(&mutex);
        answers.remove(function);
    }

    // While it is on, socket() doesn't return.
    void holdSockets(bool on)
    {
        QMutexLocker lock(&mutex);
        held = on;
        changed.wakeAll();
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

    int countOf(const QString &call) const { return noted().filter(call).size(); }

    // The numbers of the sockets that were bound to this endpoint, in that order.
    QStringList socketsOf(const QString &name) const
    {
        QStringList numbers;
        for (const QString &call : noted().filter(name).filter("bind("))
            numbers.append(call.section('(', 1).section(',', 0, 0));
        return numbers;
    }

    // The calls on one of these sockets; %1 is its number.
    QStringList notedOf(const QString &name, int which = 0) const
    {
        const QString number = socketsOf(name).value(which);
        QStringList found;
        for (const QString &call : noted()) {
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
        const int result = answers.contains("socket") ? answers["socket"].result : ++sockets;
        while (held)
            changed.wait(&mutex);
        WSASetLastError(WSAEMFILE);
        return result;
    }

    // `name` is what an answer is looked up under.
    int note(const QString &name, const QString &call, int success = 0)
    {
        QMutexLocker lock(&mutex);
        calls.append(call);
        changed.wakeAll();
        const Answer answer = answers.value(name, {success, 0});
        WSASetLastError(answer.result < 0 ? WSAEINVAL : 0);
        errno = answer.error;
        return answer.result;
    }

    int receive(const QString &call, int socket, char *buffer, int size)
    {
        QMutexLocker lock(&mutex);
        calls.append(call);
        if (answers.contains("recvfrom")) {
            changed.wait(&mutex, 1); // the caller tries again at once
            WSASetLastError(WSAEINVAL);
            errno = answers["recvfrom"].error;
            return answers["recvfrom"].result;
        }
        while (datagrams.isEmpty()) {
            if (calls.contains(QStringLiteral("closesocket(%1)").arg(socket))) {
                changed.wait(&mutex, 100); // so that a call is seen that doesn't wait for this end
                calls.append(QStringLiteral("end of recvfrom(%1)").arg(socket));
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
    struct Answer {
        int result;
        int error; // in errno
    };

    mutable QMutex mutex;
    QWaitCondition changed;
    QStringList calls;
    QMap<QString, Answer> answers;
    QList<QByteArray> datagrams;
    int sockets = 100;
    bool held = false;
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

using Ending = void (*)();
using ThreadMaker = ZRThread *(*)();

template <class Thread> ZRThread *makeThread()
{
    return new Thread(VorlynSDK::instance());
}

}

Q_DECLARE_METATYPE(Ending)
Q_DECLARE_METATYPE(ThreadMaker)

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
            "closesocket(%1)", "end of recvfrom(%1)"}));
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

void tst_WinsockCalls::receiverEndsFirst_data()
{
    QTest::addColumn<Ending>("end");

    QTest::newRow("stopNetwork") << Ending([] { VorlynSDK::instance()->stopNetwork(); });
    QTest::newRow("destroyInstance") << Ending(VorlynSDK::destroyInstance);
    QTest::newRow("createInstance") << Ending([] { VorlynSDK::createInstance(); });
}

// The sender is left alone until the receiver's thread has ended.
void tst_WinsockCalls::receiverEndsFirst()
{
    QFETCH(Ending, end);
    const Network network;
    request();
    QTRY_VERIFY(winsock.countOf("sendto(") == 1 && winsock.countOf("recvfrom(") == 1);
    end();

    const QString receiver = winsock.socketsOf(receiverName).first();
    const QString sender = winsock.socketsOf(senderName).first();
    QCOMPARE(winsock.noted().filter(QRegularExpression("^(closesocket|end of)")),
        QStringList({"closesocket(" + receiver + ')', "end of recvfrom(" + receiver + ')',
            "closesocket(" + sender + ')'}));
}

void tst_WinsockCalls::stopWhileTheSocketIsMade_data()
{
    QTest::addColumn<ThreadMaker>("make");
    QTest::addColumn<bool>("afterFailure");

    QTest::newRow("sender") << ThreadMaker(makeThread<VorlynSDKSendThread>) << false;
    QTest::newRow("receiver") << ThreadMaker(makeThread<VorlynSDKRecvThread>) << false;
    QTest::newRow("sender, second trial") << ThreadMaker(makeThread<VorlynSDKSendThread>) << true;
    QTest::newRow("receiver, second trial") << ThreadMaker(makeThread<VorlynSDKRecvThread>) << true;
}

// stop() finds no socket to close, or the number -1 of one that could not be made, and then there
// is one after all: it goes with the thread.
void tst_WinsockCalls::stopWhileTheSocketIsMade()
{
    QFETCH(ThreadMaker, make);
    QFETCH(bool, afterFailure);
    QStringList closed;
    VorlynSDK::createInstance();
    std::unique_ptr<ZRThread> thread(make());
    if (afterFailure) {
        winsock.answer("socket");
        thread->start();
        QTRY_COMPARE(winsock.countOf("socket("), 1);
        winsock.holdSockets(true);
        winsock.withdraw("socket");
        closed.append("closesocket(-1)");
    } else {
        winsock.holdSockets(true);
        thread->start();
    }
    QTRY_COMPARE(winsock.countOf("socket("), afterFailure ? 2 : 1);
    thread->stop();
    winsock.holdSockets(false);
    thread->wait();
    thread.reset();
    VorlynSDK::destroyInstance();
    QCOMPARE(winsock.countOf("bind(101, "), 1);
    closed.append("closesocket(101)");
    QCOMPARE(winsock.noted().filter("closesocket("), closed);
}

void tst_WinsockCalls::failedSetUp_data()
{
    QTest::addColumn<QString>("failing");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QStringList>("calls"); // after the bind
    QTest::addColumn<QString>("line");

    const QStringList end = {"closesocket(%1)"};
    QTest::newRow("bind") << "bind" << receiverName << end << "bind socket port 5999 failure";
    QTest::newRow("bind of the sender")
        << "bind" << senderName << end << "bind socket port 0 failure";
    const QString joinLine = "setsockopt ZR_IP_ADD_MEMBERSHIP 239.255.255.250, 10.77.0.1 failure";
    QTest::newRow("join") << "option 12" << receiverName << QStringList(joining) + end << joinLine;
    QTest::newRow("join of the sender")
        << "option 12" << senderName << QStringList(joining) + end << joinLine;
    const QString timeLine = "setsockopt SO_SNDTIMEO 1:0 failure";
    const QStringList joinAndTime = {joining, timing};
    QTest::newRow("time limit") << "option 4101" << receiverName << joinAndTime + end << timeLine;
    QTest::newRow("time limit of the sender")
        << "option 4101" << senderName << joinAndTime + end << timeLine;
}

// A socket that can't be set up is closed once, and made anew a second later.
void tst_WinsockCalls::failedSetUp()
{
    QFETCH(QString, failing);
    QFETCH(QString, name);
    QFETCH(QStringList, calls);
    QFETCH(QString, line);
    winsock.answer(failing);
    LogCatcher log;
    QElapsedTimer clock;
    clock.start();
    {
        const Network network;
        QTRY_VERIFY(winsock.socketsOf(name).size() >= 2);
        QVERIFY(clock.elapsed() >= 950);
    }
    QCOMPARE(winsock.notedOf(name), QStringList("bind(%1, " + name + ", 16)") + calls);
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

// Winsock's own errors never reach errno; those that would name a call that had to wait pass, too.
void tst_WinsockCalls::passingErrors()
{
    QTest::addColumn<int>("result");
    QTest::addColumn<int>("error");

    for (const int error : {0, EAGAIN, EWOULDBLOCK}) {
        for (const int result : {SOCKET_ERROR, 0})
            QTest::addRow("%d, errno %d", result, error) << result << error;
    }
}

void tst_WinsockCalls::failedSendKeepsTheSocket()
{
    QFETCH(int, result);
    QFETCH(int, error);
    winsock.answer("sendto", result, error);
    LogCatcher log;
    {
        const Network network;
        request();
        request();
        QTRY_COMPARE(winsock.noted().filter("sendto(").size(), 2);
    }
    QCOMPARE(winsock.notedOf(senderName).filter("sendto(").size(), 2);
    QCOMPARE(winsock.socketsOf(senderName).size(), 1);
    QCOMPARE(log.beginning("send to"), QStringList());
}

void tst_WinsockCalls::failedReceiveKeepsTheSocket()
{
    QFETCH(int, result);
    QFETCH(int, error);
    winsock.answer("recvfrom", result, error);
    LogCatcher log;
    {
        const Network network;
        QTRY_VERIFY(winsock.noted().filter("recvfrom(").size() > 3);
    }
    QCOMPARE(winsock.socketsOf(receiverName).size(), 1);
    QCOMPARE(log.beginning("recvfrom"), QStringList());
}

void tst_WinsockCalls::otherErrorsMakeANewSocket_data()
{
    QTest::addColumn<QString>("function");
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("result");
    QTest::addColumn<QString>("line");

    QTest::newRow("send") << "sendto" << senderName << SOCKET_ERROR
                          << "send to ret = -1, errno = 9";
    QTest::newRow("nothing sent") << "sendto" << senderName << 0 << "send to ret = 0, errno = 9";
    QTest::newRow("receive") << "recvfrom" << receiverName << SOCKET_ERROR
                             << "recvfrom ret = -1, errno = 9";
    QTest::newRow("nothing received")
        << "recvfrom" << receiverName << 0 << "recvfrom ret = 0, errno = 9";
}

// An error that errno does name: the group is left and the socket closed, and the next pass makes
// another. The request is not sent again.
void tst_WinsockCalls::otherErrorsMakeANewSocket()
{
    QFETCH(QString, function);
    QFETCH(QString, name);
    QFETCH(int, result);
    QFETCH(QString, line);
    winsock.answer(function, result, 9);
    LogCatcher log;
    {
        const Network network;
        request();
        QTRY_VERIFY(winsock.socketsOf(name).size() >= 2);
        winsock.withdraw(function);
        QTRY_VERIFY(winsock.countOf("sendto(") == 1);
    }
    QVERIFY(log.count(line) >= 1);
    const QStringList calls = winsock.notedOf(name);
    QCOMPARE(calls.size(), 6);
    QVERIFY(calls[3].startsWith(function));
    QCOMPARE(calls.mid(0, 3), QStringList({"bind(%1, " + name + ", 16)", joining, timing}));
    QCOMPARE(calls.mid(4), QStringList({leaving, "closesocket(%1)"}));
    QCOMPARE(winsock.notedOf(name, 1).mid(0, 3), calls.mid(0, 3));
}

QTEST_GUILESS_MAIN(tst_WinsockCalls)
#include "tst_WinsockCalls.moc"

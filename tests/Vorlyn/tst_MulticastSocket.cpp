#include "CameraPeer.h"
#include "MulticastSocket.h"
#include "VorlynProtocol.h"

#include <QScopeGuard>
#include <QtTest>

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <cerrno>
#include <future>

using namespace VorlynProtocol;

static constexpr char local[] = "10.77.0.1";

class tst_MulticastSocket : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void boundAddresses();
    void options();
    void sendsThroughTheInterface();
    void receives();
    void wakeEndsABlockedReceive();
    void wakeEndsALaterReceive();
    void leaveEndsTheTraffic();
    void failures();

private:
    int receiver;
    int sender;
};

template <typename Value> static Value option(int socket, int level, int name)
{
    Value value = {};
    socklen_t size = sizeof value;
    getsockopt(socket, level, name, &value, &size);
    return value;
}

static QByteArray boundTo(int socket)
{
    sockaddr_in name = {};
    socklen_t size = sizeof name;
    getsockname(socket, reinterpret_cast<sockaddr *>(&name), &size);
    const bool own = ntohs(name.sin_port) == replyPort;
    return QByteArray(inet_ntoa(name.sin_addr)) + (own ? ":5999" : ":other");
}

void tst_MulticastSocket::init()
{
    receiver = MulticastSocket::open();
    sender = MulticastSocket::open();
    QVERIFY(receiver > 0 && sender > 0);
    QCOMPARE(MulticastSocket::bind(receiver, local, replyPort), 0);
    QCOMPARE(MulticastSocket::bind(sender, local, anyPort), 0);
    for (const int socket : {receiver, sender}) {
        QCOMPARE(MulticastSocket::join(socket, local), 0);
        QCOMPARE(MulticastSocket::setSendTimeout(socket, 1, 0), 0);
    }
}

void tst_MulticastSocket::cleanup()
{
    MulticastSocket::close(receiver);
    MulticastSocket::release(sender);
    QCOMPARE(fcntl(receiver, F_GETFD), -1);
    QCOMPARE(fcntl(sender, F_GETFD), -1);
}

void tst_MulticastSocket::boundAddresses()
{
    QCOMPARE(boundTo(receiver), QByteArray("239.255.255.250:5999"));
    QCOMPARE(boundTo(sender), QByteArray("10.77.0.1:other"));
}

void tst_MulticastSocket::options()
{
    for (const int socket : {receiver, sender}) {
        QCOMPARE(option<int>(socket, IPPROTO_IP, IP_MULTICAST_ALL), 0);
        QCOMPARE(option<int>(socket, SOL_SOCKET, SO_REUSEADDR), 0);
        const auto sendTimeout = option<timeval>(socket, SOL_SOCKET, SO_SNDTIMEO);
        QCOMPARE(int(sendTimeout.tv_sec), 1);
        QCOMPARE(int(sendTimeout.tv_usec), 0);
        const auto receiveTimeout = option<timeval>(socket, SOL_SOCKET, SO_RCVTIMEO);
        QCOMPARE(int(receiveTimeout.tv_sec), 0);
        QCOMPARE(int(receiveTimeout.tv_usec), 0);
        QVERIFY(fcntl(socket, F_GETFD) & FD_CLOEXEC);
        // Left as the system has them.
        QCOMPARE(option<int>(socket, IPPROTO_IP, IP_MULTICAST_TTL), 1);
        QCOMPARE(option<int>(socket, IPPROTO_IP, IP_MULTICAST_LOOP), 1);
    }
}

void tst_MulticastSocket::sendsThroughTheInterface()
{
    CameraPeer camera("10.77.0.2");
    errno = EBADF;
    QCOMPARE(MulticastSocket::send(sender, local, "text", 4), 4);
    QCOMPARE(errno, 0);
    QCOMPARE(camera.receive(), QByteArray("text"));
    QCOMPARE(option<in_addr>(sender, IPPROTO_IP, IP_MULTICAST_IF).s_addr, inet_addr(local));
}

void tst_MulticastSocket::receives()
{
    CameraPeer camera("10.77.0.2");
    char buffer[8] = {};
    QVERIFY(camera.send("text"));
    QCOMPARE(MulticastSocket::receive(receiver, local, buffer, sizeof buffer), 4);
    QCOMPARE(QByteArray(buffer), QByteArray("text"));

    QVERIFY(camera.send("longer than the buffer"));
    QCOMPARE(MulticastSocket::receive(receiver, local, buffer, sizeof buffer), 8);

    errno = EBADF;
    QVERIFY(camera.send(""));
    QCOMPARE(MulticastSocket::receive(receiver, local, buffer, sizeof buffer), 0);
    QCOMPARE(errno, 0);
}

void tst_MulticastSocket::wakeEndsABlockedReceive()
{
    auto received = std::async(std::launch::async, [this] {
        char byte = 0;
        return MulticastSocket::receive(receiver, local, &byte, 1);
    });
    // Longer than the membership is left unlooked at.
    QCOMPARE(received.wait_for(std::chrono::milliseconds(1500)), std::future_status::timeout);
    MulticastSocket::wake(receiver);
    QCOMPARE(received.wait_for(std::chrono::milliseconds(500)), std::future_status::ready);
    QCOMPARE(received.get(), 0);
}

void tst_MulticastSocket::wakeEndsALaterReceive()
{
    MulticastSocket::wake(receiver);
    char byte = 0;
    errno = EBADF;
    QCOMPARE(MulticastSocket::receive(receiver, local, &byte, 1), 0);
    QCOMPARE(errno, 0);
}

void tst_MulticastSocket::leaveEndsTheTraffic()
{
    CameraPeer camera("10.77.0.2");
    QCOMPARE(MulticastSocket::leave(receiver, local), 0);
    QVERIFY(camera.send("unheard"));
    QCOMPARE(MulticastSocket::join(receiver, local), 0);
    QVERIFY(camera.send("heard"));
    char buffer[16] = {};
    QCOMPARE(MulticastSocket::receive(receiver, local, buffer, sizeof buffer), 5);
    QVERIFY(MulticastSocket::leave(receiver, "10.88.0.1") < 0);
}

void tst_MulticastSocket::failures()
{
    const int socket = MulticastSocket::open();
    const auto close = qScopeGuard([socket] { MulticastSocket::close(socket); });
    QVERIFY(MulticastSocket::bind(socket, local, replyPort) < 0); // taken
    QVERIFY(MulticastSocket::bind(socket, "10.77.0.99", anyPort) < 0);
    QVERIFY(MulticastSocket::join(socket, "10.77.0.99") < 0);
    QVERIFY(MulticastSocket::join(socket, "no address") < 0);
    QVERIFY(MulticastSocket::send(socket, "10.77.0.99", "text", 4) < 0);
    QVERIFY(errno != 0);
    QVERIFY(MulticastSocket::setSendTimeout(-1, 1, 0) < 0);
    char byte = 0;
    QVERIFY(MulticastSocket::receive(-1, "10.77.0.99", &byte, 1) < 0);
    QVERIFY(errno != 0);
}

QTEST_GUILESS_MAIN(tst_MulticastSocket)
#include "tst_MulticastSocket.moc"

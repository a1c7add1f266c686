#include "LogCatcher.h"
#include "VorlynSDK.h"

#include <QJsonObject>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <QThread>
#include <QtTest>

#include <memory>

// Takes uploads on loopback and answers each with the same text, once the whole body is there.
class UploadServer : public QTcpServer
{
public:
    explicit UploadServer(const QByteArray &answer) : answer(answer)
    {
        listen(QHostAddress::LocalHost);
        connect(this, &QTcpServer::newConnection, this, &UploadServer::accept);
    }

    QByteArray received;

private:
    void accept()
    {
        QTcpSocket *socket = nextPendingConnection();
        connect(socket, &QTcpSocket::readyRead, this, [this, socket] {
            received += socket->readAll();
            if (!answer.isEmpty() && isComplete())
                socket->write(answer);
        });
    }

    bool isComplete() const
    {
        const int bodyStart = received.indexOf("\r\n\r\n") + 4;
        const QByteArray name = "content-length: ";
        const int at = received.toLower().indexOf(name) + name.size();
        const int length = received.mid(at, received.indexOf('\r', at) - at).toInt();
        return bodyStart >= 4 && length > 0 && received.size() >= bodyStart + length;
    }

    const QByteArray answer;
};

class tst_VorlynSDKFirmware : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();
    void results_data();
    void results();
    void requestOnTheWire();
    void missingFile();
    void refusedConnection();
    void numericPortIsZero();
    void cancelFromAnotherThread();
    void cancelWithoutUpload();

private:
    int upload(const VorlynDevice &device, const QString &path);
    VorlynDevice camera(int port) const;

    QTemporaryDir folder;
    QString image;
    std::unique_ptr<LogCatcher> log;
};

void tst_VorlynSDKFirmware::initTestCase()
{
    image = folder.filePath("image 1.bin");
    QFile file(image);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QVERIFY(file.write(QByteArray("firm\0ware", 9)) == 9);
}

void tst_VorlynSDKFirmware::init()
{
    log = std::make_unique<LogCatcher>();
    VorlynSDK::createInstance();
}

void tst_VorlynSDKFirmware::cleanup()
{
    VorlynSDK::destroyInstance();
    log.reset();
}

VorlynDevice tst_VorlynSDKFirmware::camera(int port) const
{
    VorlynDevice device;
    device.fromJson({{"ip", "127.0.0.1"}, {"httpport", QString::number(port)}});
    return device;
}

// On a worker, as a dialog does it, while this thread is the camera.
int tst_VorlynSDKFirmware::upload(const VorlynDevice &device, const QString &path)
{
    int result = 0;
    const std::unique_ptr<QThread> worker(
        QThread::create([&] { result = VorlynSDK::instance()->setDeviceFirmware(device, path); }));
    QElapsedTimer timer;
    timer.start();
    worker->start();
    while (!worker->wait(1)) {
        QCoreApplication::processEvents();
        if (timer.hasExpired(20000))
            VorlynSDK::instance()->cancelUpload();
    }
    return result;
}

static QByteArray http(const QByteArray &status, const QByteArray &body)
{
    return "HTTP/1.1 " + status + "\r\nContent-Length: " + QByteArray::number(body.size())
        + "\r\nConnection: close\r\n\r\n" + body;
}

void tst_VorlynSDKFirmware::results_data()
{
    QTest::addColumn<QByteArray>("status");
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<int>("result");
    QTest::newRow("object") << QByteArray("200 OK") << QByteArray("{\"Result\":5}") << 5;
    QTest::newRow("negative") << QByteArray("200 OK") << QByteArray("{\"Result\":-1}") << -1;
    QTest::newRow("no Result") << QByteArray("200 OK") << QByteArray("{\"result\":5}") << 0;
    QTest::newRow("Result as text")
        << QByteArray("200 OK") << QByteArray("{\"Result\":\"5\"}") << 0;
    QTest::newRow("array") << QByteArray("200 OK") << QByteArray("[{\"Result\":5}]") << -3;
    QTest::newRow("page") << QByteArray("200 OK") << QByteArray("<html></html>") << -3;
    QTest::newRow("empty") << QByteArray("200 OK") << QByteArray() << -3;
    QTest::newRow("cut") << QByteArray("200 OK") << QByteArray("{\"Result\":5") << -3;
    QTest::newRow("error with JSON")
        << QByteArray("500 Internal Server Error") << QByteArray("{\"Result\":7}") << 7;
    QTest::newRow("error page") << QByteArray("500 Internal Server Error")
                                << QByteArray("<html></html>") << -3;
}

void tst_VorlynSDKFirmware::results()
{
    QFETCH(QByteArray, status);
    QFETCH(QByteArray, body);
    UploadServer server(http(status, body));
    QTEST(upload(camera(server.serverPort()), image), "result");
    QCOMPARE(log->count("response " + body), 1);
}

void tst_VorlynSDKFirmware::requestOnTheWire()
{
    UploadServer server(http("200 OK", "{}"));
    QCOMPARE(upload(camera(server.serverPort()), image), 0);
    QVERIFY(server.received.startsWith("POST /update.cgi HTTP/1.1\r\n"));
    QVERIFY(server.received.contains(
        "Host: 127.0.0.1:" + QByteArray::number(server.serverPort()) + "\r\n"));
    QVERIFY(server.received.contains("filename=\"image 1.bin\""));
    QVERIFY(server.received.contains(QByteArray("\r\n\r\nfirm\0ware\r\n", 15)));
}

void tst_VorlynSDKFirmware::missingFile()
{
    UploadServer server(http("200 OK", "{}"));
    QCOMPARE(upload(camera(server.serverPort()), folder.filePath("none.bin")), -3);
    QCOMPARE(log->count("file open fail"), 1);
    QVERIFY(server.received.isEmpty());
}

void tst_VorlynSDKFirmware::refusedConnection()
{
    QTcpServer server;
    QVERIFY(server.listen(QHostAddress::LocalHost));
    const int port = server.serverPort();
    server.close();
    QCOMPARE(upload(camera(port), image), -3);
    QCOMPARE(log->count("upload error -> ConnectionRefusedError"), 1);
}

void tst_VorlynSDKFirmware::numericPortIsZero()
{
    UploadServer server(http("200 OK", "{}"));
    VorlynDevice device;
    device.fromJson({{"ip", "127.0.0.1"}, {"httpport", server.serverPort()}});
    QCOMPARE(upload(device, image), -3);
    QCOMPARE(log->count("upload " + image + " to http://127.0.0.1:0/update.cgi"), 1);
    QVERIFY(server.received.isEmpty());
}

void tst_VorlynSDKFirmware::cancelFromAnotherThread()
{
    UploadServer silent("");
    const VorlynDevice device = camera(silent.serverPort());
    int result = 0;
    const std::unique_ptr<QThread> worker(
        QThread::create([&] { result = VorlynSDK::instance()->setDeviceFirmware(device, image); }));
    worker->start();
    QTRY_VERIFY_WITH_TIMEOUT(silent.received.contains("ware"), 20000);
    QVERIFY(!worker->isFinished());
    VorlynSDK::instance()->cancelUpload();
    QVERIFY(worker->wait(20000));
    QCOMPARE(result, -3);
    VorlynSDK::instance()->cancelUpload(); // nothing runs any more
}

void tst_VorlynSDKFirmware::cancelWithoutUpload()
{
    VorlynSDK::instance()->cancelUpload();
    UploadServer server(http("200 OK", "{\"Result\":5}"));
    QCOMPARE(upload(camera(server.serverPort()), image), 5); // the cancel is forgotten
}

QTEST_GUILESS_MAIN(tst_VorlynSDKFirmware)
#include "tst_VorlynSDKFirmware.moc"

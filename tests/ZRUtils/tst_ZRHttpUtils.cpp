#include "ZRHttpUtils.h"

#include "ThisProcess.h"

#include <QNetworkProxy>
#include <QTcpServer>
#include <QTcpSocket>
#include <QtTest>

#include <functional>
#include <memory>

Q_DECLARE_METATYPE(QNetworkProxy::ProxyType)

namespace {

using Hook = std::function<void(QTcpSocket &, QByteArray &)>;

// A web server of the test's own thread, served by the upload's event loop when that runs here.
// The hook sees what the newest connection has sent so far, and may cut it.
class Server : public QObject
{
public:
    explicit Server(Hook hook) : hook(std::move(hook))
    {
        connect(&listener, &QTcpServer::newConnection, this, &Server::accept);
        if (!listener.listen(QHostAddress::LocalHost))
            qFatal("no port on loopback");
    }

    quint16 port() const { return listener.serverPort(); }
    QString url() const { return QString("http://127.0.0.1:%1/update.cgi").arg(port()); }

    int connections = 0;
    QByteArray received;

private:
    void accept()
    {
        QTcpSocket *socket = listener.nextPendingConnection();
        ++connections;
        received.clear();
        connect(socket, &QTcpSocket::readyRead, this, [this, socket] { hook(*socket, received); });
        connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
    }

    Hook hook;
    QTcpServer listener;
};

struct Request {
    QByteArray line;
    QList<QPair<QByteArray, QByteArray>> headers;
    QByteArray body;

    // All values of a header, by any case of its name.
    QList<QByteArray> values(const QByteArray &name) const
    {
        QList<QByteArray> found;
        for (const auto &header : headers) {
            if (header.first.toLower() == name.toLower())
                found += header.second;
        }
        return found;
    }
    qint64 length() const { return values("Content-Length").value(0, "-1").toLongLong(); }
};

Request parsed(const QByteArray &bytes)
{
    Request request;
    const int end = bytes.indexOf("\r\n\r\n");
    if (end < 0)
        return request;
    request.body = bytes.mid(end + 4);
    QByteArray head = bytes.left(end);
    for (const QByteArray &line : head.replace("\r\n", "\n").split('\n')) {
        const int colon = line.indexOf(": ");
        if (request.line.isEmpty())
            request.line = line;
        else
            request.headers.append({line.left(colon), line.mid(colon + 2)});
    }
    return request;
}

// Calls `then` when the request has arrived to its last byte.
Hook onceWhole(std::function<void(QTcpSocket &)> then)
{
    return [then](QTcpSocket &socket, QByteArray &received) {
        received += socket.readAll();
        const Request request = parsed(received);
        if (!request.line.isEmpty() && request.body.size() == request.length())
            then(socket);
    };
}

Hook answering(const QByteArray &answer)
{
    return onceWhole([answer](QTcpSocket &socket) {
        socket.write(answer);
        socket.disconnectFromHost();
    });
}

QByteArray answerOf(const QByteArray &body, const QByteArray &status = "200 OK")
{
    return "HTTP/1.1 " + status + "\r\nContent-Length: " + QByteArray::number(body.size())
        + "\r\n\r\n" + body;
}

const QByteArray fileHead = "--window-iptool-upload\r\n"
                            "Content-Disposition: form-data; name=\"file\"; filename=\"%1\"\r\n"
                            "Content-Type: application/octet-stream\r\n\r\n";
const QByteArray fileTail = "\r\n--window-iptool-upload--\r\n";

QByteArray formOf(const QByteArray &name, const QByteArray &content)
{
    return QByteArray(fileHead).replace("%1", name) + content + fileTail;
}

QString dispositionOf(const QString &name)
{
    return QString("form-data; name=\"file\"; filename=\"%1\"").arg(name);
}

// Windows forbids some letters.
bool canName(const QString &file)
{
    return QSysInfo::kernelType() != "winnt" || !file.contains(QRegularExpression("[\"\\\\]"));
}

QStringList logLines;

// Of the class alone, on whatever single thread it runs.
void keepLine(QtMsgType, const QMessageLogContext &context, const QString &line)
{
    if (QByteArray(context.file).endsWith("ZRHttpUtils.cpp")
        && !QByteArray(context.file).endsWith("tst_ZRHttpUtils.cpp"))
        logLines += line;
}

}

class tst_ZRHttpUtils : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void metaObjectIsBare();
    void request_data();
    void request();
    void fileName_data();
    void fileName();
    void relativePath();
    void targetOfTheUrl_data();
    void targetOfTheUrl();
    void reply_data();
    void reply();
    void logsASuccess();
    void fileCannotBeOpened_data();
    void fileCannotBeOpened();
    void connectionRefused();
    void badUrl_data();
    void badUrl();
    void resetMidway();
    void closedWithoutAnswer();
    void answerCutShort();
    void proxyIsBypassed_data();
    void proxyIsBypassed();
    void quitWhileTheServerIsSilent();
    void quitInTheMiddleOfTheFile();
    void quitWithNothingRunningIsLost();
    void uploadsOneAfterAnother();
    void runsOnAWorkerThread();
    void streamsFilesOfAnySize();

private:
    // The path of a file with this name and content.
    QString makeFile(const QString &name, const QByteArray &content);

    std::unique_ptr<QTemporaryDir> folder;
    QtMessageHandler outer = nullptr;
};

void tst_ZRHttpUtils::init()
{
    folder = std::make_unique<QTemporaryDir>();
    QVERIFY(folder->isValid());
    logLines.clear();
    outer = qInstallMessageHandler(keepLine);
}

void tst_ZRHttpUtils::cleanup()
{
    qInstallMessageHandler(outer);
    QNetworkProxy::setApplicationProxy(QNetworkProxy::DefaultProxy);
}

QString tst_ZRHttpUtils::makeFile(const QString &name, const QByteArray &content)
{
    QFile file(folder->filePath(name));
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
        qFatal("can't write %s", qPrintable(file.fileName()));
    return file.fileName();
}

void tst_ZRHttpUtils::metaObjectIsBare()
{
    const QMetaObject &meta = ZRHttpUtils::staticMetaObject;
    QCOMPARE(meta.className(), "ZRHttpUtils");
    QCOMPARE(meta.superClass(), &QObject::staticMetaObject);
    QCOMPARE(meta.methodCount(), meta.methodOffset());
}

void tst_ZRHttpUtils::request_data()
{
    QTest::addColumn<QByteArray>("content");
    QByteArray everyByte;
    for (int byte = 0; byte < 256; ++byte)
        everyByte += char(byte);
    QTest::newRow("empty") << QByteArray("");
    QTest::newRow("one byte") << QByteArray(1, '\0');
    QTest::newRow("every byte") << everyByte;
    QTest::newRow("the boundary itself") << fileTail + "\r\n" + fileHead;
    for (int size : {16383, 16384, 16385, 1000003})
        QTest::addRow("%d bytes", size) << everyByte.repeated(size / 256 + 1).left(size);
}

void tst_ZRHttpUtils::request()
{
    QFETCH(QByteArray, content);
    Server server(answering(answerOf("{}")));
    QCOMPARE(ZRHttpUtils().upload(server.url(), makeFile("image.bin", content)), QByteArray("{}"));

    QCOMPARE(server.connections, 1);
    const Request request = parsed(server.received);
    QCOMPARE(request.line, QByteArray("POST /update.cgi HTTP/1.1"));
    QCOMPARE(request.values("Content-Type"),
        QList<QByteArray>({"multipart/form-data; boundary=window-iptool-upload"}));
    QCOMPARE(request.values("Content-Length"),
        QList<QByteArray>({QByteArray::number(request.body.size())}));
    QCOMPARE(request.values("Host"),
        QList<QByteArray>({"127.0.0.1:" + QByteArray::number(server.port())}));
    for (const char *absent : {"cookie", "transfer-encoding", "expect"})
        QVERIFY2(request.values(absent).isEmpty(), absent);
    QVERIFY(request.body == formOf("image.bin", content));
}

void tst_ZRHttpUtils::fileName_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("plain") << "image.bin";
    QTest::newRow("quotation mark") << "im\"age.bin";
    QTest::newRow("only quotation marks") << "\"\"";
    QTest::newRow("backslash") << "im\\age.bin";
    QTest::newRow("spaces and semicolon") << "v1; 2 .bin";
    QTest::newRow("percent") << "%1%20.bin";
    QTest::newRow("Chinese") << QString::fromUtf8("\xe5\x9b\xba\xe4\xbb\xb6.bin");
}

// The name goes into the header as it is, without its folder and without any escaping.
void tst_ZRHttpUtils::fileName()
{
    QFETCH(QString, name);
    if (!canName(name))
        QSKIP("This system has no files of such a name");
    Server server(answering(answerOf("{}")));
    const QString path = makeFile(name, "content");
    ZRHttpUtils().upload(server.url(), path);
    QCOMPARE(parsed(server.received).body, formOf(name.toUtf8(), "content"));
    QCOMPARE(logLines.value(0), "upload " + path + " to " + server.url());
    QCOMPARE(logLines.value(1), dispositionOf(name));
}

void tst_ZRHttpUtils::relativePath()
{
    Server server(answering(answerOf("{}")));
    QVERIFY(QDir::setCurrent(QDir::tempPath())); // from another drive there is no such path
    const QString path = QDir::current().relativeFilePath(makeFile("image.bin", "content"));
    QVERIFY(QDir::isRelativePath(path));
    ZRHttpUtils().upload(server.url(), path);
    QCOMPARE(parsed(server.received).body, formOf("image.bin", "content"));
}

void tst_ZRHttpUtils::targetOfTheUrl_data()
{
    QTest::addColumn<QString>("tail");
    QTest::addColumn<QByteArray>("target");
    QTest::newRow("as it is") << "/update.cgi" << QByteArray("/update.cgi");
    QTest::newRow("tolerant of a space") << "/up date.cgi" << QByteArray("/up%20date.cgi");
    QTest::newRow("tolerant of a percent") << "/100%.cgi" << QByteArray("/100%25.cgi");
}

void tst_ZRHttpUtils::targetOfTheUrl()
{
    QFETCH(QString, tail);
    QFETCH(QByteArray, target);
    Server server(answering(answerOf("{}")));
    const QString url = QString("http://127.0.0.1:%1").arg(server.port()) + tail;
    ZRHttpUtils().upload(url, makeFile("image.bin", "content"));
    QCOMPARE(parsed(server.received).line, "POST " + target + " HTTP/1.1");
}

void tst_ZRHttpUtils::reply_data()
{
    QTest::addColumn<QByteArray>("answer");
    QTest::addColumn<QByteArray>("expected");
    QTest::addColumn<QString>("outcome");
    const auto row = [](const char *status, const QByteArray &body, const char *outcome) {
        QTest::newRow(status) << answerOf(body, status) << body << outcome;
    };
    row("200 OK", "{\"Result\":5}", "upload success");
    row("200 Empty", "", "upload success");
    row("200 No JSON", "<html>\r\n</html>", "upload success");
    row("200 Binary", QByteArray("a\0b\xff", 4), "upload success");
    row("200 Large", QByteArray(300000, 'x'), "upload success");
    row("302 Found", "moved", "upload success");
    row("401 Unauthorized", "who", "upload error -> AuthenticationRequiredError");
    row("404 Not Found", "{\"Result\":1}", "upload error -> ContentNotFoundError");
    row("500 Internal Server Error", "{\"Result\":7}", "upload error -> InternalServerError");
    row("503 Service Unavailable", "busy", "upload error -> ServiceUnavailableError");
    QTest::newRow("chunked") << QByteArray("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n"
                                           "3\r\n{\"R\r\n9\r\nesult\":5}\r\n0\r\n\r\n")
                             << QByteArray("{\"Result\":5}") << "upload success";
    QTest::newRow("until the end") << QByteArray("HTTP/1.0 200 OK\r\n\r\n{\"Result\":5}")
                                   << QByteArray("{\"Result\":5}") << "upload success";
}

// The body is the result whatever the status.
void tst_ZRHttpUtils::reply()
{
    QFETCH(QByteArray, answer);
    QFETCH(QByteArray, expected);
    QFETCH(QString, outcome);
    Server server(answering(answer));
    QVERIFY(ZRHttpUtils().upload(server.url(), makeFile("image.bin", "content")) == expected);
    QCOMPARE(logLines.size(), 4);
    QCOMPARE(logLines[2], "response -> " + QString::fromUtf8(expected));
    QCOMPARE(logLines[3], outcome);
}

void tst_ZRHttpUtils::logsASuccess()
{
    Server server(answering(answerOf("{\"Result\":0}")));
    const QString path = makeFile("image.bin", "content");
    ZRHttpUtils().upload(server.url(), path);
    QCOMPARE(logLines,
        QStringList({"upload " + path + " to " + server.url(), dispositionOf("image.bin"),
            "response -> {\"Result\":0}", "upload success"}));
}

void tst_ZRHttpUtils::fileCannotBeOpened_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("missing") << "/missing.bin";
    QTest::newRow("a folder") << "/";
    QTest::newRow("in no folder") << "/none/image.bin";
    QTest::newRow("behind a file") << "/file/image.bin";
}

void tst_ZRHttpUtils::fileCannotBeOpened()
{
    QFETCH(QString, name);
    makeFile("file", "content");
    Server server(answering(answerOf("{}")));
    const QString path = folder->path() + name;
    const QByteArray response = ZRHttpUtils().upload(server.url(), path);
    QVERIFY(response.isEmpty());
    QCOMPARE(server.connections, 0);
    QCOMPARE(logLines,
        QStringList({"upload " + path + " to " + server.url(), dispositionOf(name.section('/', -1)),
            "file open fail"}));
}

void tst_ZRHttpUtils::connectionRefused()
{
    auto server = std::make_unique<Server>(answering(answerOf("{}")));
    const QString url = server->url();
    server.reset();
    QVERIFY(ZRHttpUtils().upload(url, makeFile("image.bin", "content")).isEmpty());
    QCOMPARE(
        logLines.mid(2), QStringList({"response -> ", "upload error -> ConnectionRefusedError"}));
}

void tst_ZRHttpUtils::badUrl_data()
{
    QTest::addColumn<QString>("url");
    QTest::newRow("port 0") << "http://127.0.0.1:0/update.cgi";
    QTest::newRow("no address") << "http://:80/update.cgi";
    QTest::newRow("empty") << "";
}

// Of a device that lacks its address or its port: an error, and no endless wait.
void tst_ZRHttpUtils::badUrl()
{
    QFETCH(QString, url);
    QVERIFY(ZRHttpUtils().upload(url, makeFile("image.bin", "content")).isEmpty());
    QCOMPARE(logLines.size(), 4);
    QVERIFY2(logLines[3].startsWith("upload error -> "), qPrintable(logLines[3]));
    QVERIFY(logLines[3] > QString("upload error -> "));
}

// Which of the two names it has depends on whether reading or writing meets the reset first.
void tst_ZRHttpUtils::resetMidway()
{
    Server server([](QTcpSocket &socket, QByteArray &received) {
        received += socket.read(1 << 16);
        if (received.size() > (1 << 20))
            socket.abort(); // with bytes unread, which resets the connection
    });
    const QString path = makeFile("image.bin", QByteArray(16 << 20, 'x'));
    QVERIFY(ZRHttpUtils().upload(server.url(), path).isEmpty());
    QCOMPARE(logLines.size(), 4);
    QCOMPARE(logLines[2], QString("response -> "));
    const QRegularExpression outcome(
        "\\Aupload error -> (RemoteHostClosedError|UnknownNetworkError)\\z");
    QVERIFY2(outcome.match(logLines[3]).hasMatch(), qPrintable(logLines[3]));
}

void tst_ZRHttpUtils::closedWithoutAnswer()
{
    Server server(onceWhole([](QTcpSocket &socket) { socket.disconnectFromHost(); }));
    QVERIFY(ZRHttpUtils().upload(server.url(), makeFile("image.bin", "content")).isEmpty());
    QCOMPARE(
        logLines.mid(2), QStringList({"response -> ", "upload error -> RemoteHostClosedError"}));
}

void tst_ZRHttpUtils::answerCutShort()
{
    QByteArray answer = answerOf("{\"Result\":5}");
    answer.chop(4);
    Server server(answering(answer));
    ZRHttpUtils().upload(server.url(), makeFile("image.bin", "content"));
    QCOMPARE(logLines.value(3), QString("upload error -> RemoteHostClosedError"));
}

void tst_ZRHttpUtils::proxyIsBypassed_data()
{
    QTest::addColumn<QNetworkProxy::ProxyType>("type");
    QTest::newRow("HTTP") << QNetworkProxy::HttpProxy;
    QTest::newRow("SOCKS") << QNetworkProxy::Socks5Proxy;
}

// Qt spares loopback addresses any proxy; 0.0.0.0 leads to this machine too and is none of them.
void tst_ZRHttpUtils::proxyIsBypassed()
{
    QFETCH(QNetworkProxy::ProxyType, type);
    Server proxy([](QTcpSocket &socket, QByteArray &) { socket.abort(); });
    Server server(answering(answerOf("{}")));
    const QString url = server.url().replace("127.0.0.1", "0.0.0.0");
    QNetworkProxy::setApplicationProxy(QNetworkProxy(type, "127.0.0.1", proxy.port()));
    const QNetworkProxyQuery query{QUrl(url)};
    QCOMPARE(QNetworkProxyFactory::proxyForQuery(query).value(0).port(), proxy.port());

    QCOMPARE(ZRHttpUtils().upload(url, makeFile("image.bin", "content")), QByteArray("{}"));
    QCOMPARE(proxy.connections, 0);
}

void tst_ZRHttpUtils::quitWhileTheServerIsSilent()
{
    ZRHttpUtils http;
    std::unique_ptr<QThread> other(QThread::create([&http] { http.quit(); }));
    Server server(onceWhole([&other](QTcpSocket &) { other->start(); }));
    QVERIFY(http.upload(server.url(), makeFile("image.bin", "content")).isEmpty());
    QVERIFY(other->wait(60000));
    QCOMPARE(logLines.mid(2), QStringList({"response -> ", "upload success"}));
}

void tst_ZRHttpUtils::quitInTheMiddleOfTheFile()
{
    ZRHttpUtils http;
    std::unique_ptr<QThread> other(QThread::create([&http] { http.quit(); }));
    Server server([&other](QTcpSocket &socket, QByteArray &) {
        socket.setReadBufferSize(1); // takes no more
        other->start();
    });
    QVERIFY(http.upload(server.url(), makeFile("image.bin", QByteArray(16 << 20, 'x'))).isEmpty());
    QVERIFY(other->wait(60000));
    QCOMPARE(logLines.mid(2), QStringList({"response -> ", "upload success"}));
}

void tst_ZRHttpUtils::quitWithNothingRunningIsLost()
{
    ZRHttpUtils http;
    http.quit();
    for (int round = 0; round < 2; ++round) {
        Server server(answering(answerOf("{}")));
        const QString path = makeFile("image.bin", "content");
        QCOMPARE(http.upload(server.url(), path), QByteArray("{}"));
        http.quit();
    }
}

void tst_ZRHttpUtils::uploadsOneAfterAnother()
{
    ZRHttpUtils http;
    Server server(answering(answerOf("{}")));
    for (const char *content : {"one", "two", "three"}) {
        const QString path = makeFile("image.bin", content);
        QCOMPARE(http.upload(server.url(), path), QByteArray("{}"));
        QCOMPARE(parsed(server.received).body, formOf("image.bin", content));
    }
}

void tst_ZRHttpUtils::runsOnAWorkerThread()
{
    Server server(answering(answerOf("{\"Result\":5}")));
    const QString url = server.url();
    const QString path = makeFile("image.bin", QByteArray(1 << 20, 'x'));
    QByteArray response;
    std::unique_ptr<QThread> worker(
        QThread::create([&] { response = ZRHttpUtils().upload(url, path); }));
    QSignalSpy finished(worker.get(), &QThread::finished);
    worker->start();
    QTRY_COMPARE_WITH_TIMEOUT(finished.count(), 1, 60000);
    QVERIFY(worker->wait(60000));
    QCOMPARE(response, QByteArray("{\"Result\":5}"));
}

// 5 GiB, most of it a hole, of which the server takes a small part: the length is right, and what
// is kept in memory stays far below the file.
void tst_ZRHttpUtils::streamsFilesOfAnySize()
{
    constexpr qint64 size = qint64(5) << 30;
    constexpr qint64 taken = 64 << 20;
    const QString path = makeFile("image.bin", "start");
    QVERIFY(QFile::resize(path, size));
    const qint64 before = ThisProcess::peakMemory();

    ZRHttpUtils http;
    qint64 length = -1;
    qint64 count = 0;
    Server server([&](QTcpSocket &socket, QByteArray &) {
        const QByteArray bytes = socket.readAll();
        if (count == 0)
            length = parsed(bytes).length();
        count += bytes.size();
        if (count > taken)
            http.quit();
    });
    QVERIFY(http.upload(server.url(), path).isEmpty());
    QCOMPARE(length, formOf("image.bin", "").size() + size);
    QVERIFY(count > taken);
    const qint64 growth = ThisProcess::peakMemory() - before;
    QVERIFY2(growth < (512 << 20), qPrintable(QString("%1 bytes").arg(growth)));
}

QTEST_GUILESS_MAIN(tst_ZRHttpUtils)

#include "tst_ZRHttpUtils.moc"

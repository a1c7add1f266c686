#include "ZRLog.h"

#include <QtTest>

#include <memory>
#include <vector>

namespace {

struct Message {
    QtMsgType type;
    QByteArray file;
    int line;
    QString text;
    QByteArray logSoFar; // the log file's content when the message came by
};

QString logFolder()
{
    return QCoreApplication::applicationDirPath() + "/log";
}

QStringList logFiles()
{
    return QDir(logFolder()).entryList({"*.clog"}, QDir::Files, QDir::Name);
}

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// The newest file is that of the run.
QByteArray logBytes()
{
    const QStringList files = logFiles();
    return files.isEmpty() ? QByteArray() : contentOf(logFolder() + '/' + files.last());
}

std::vector<Message> passedOn;

void passOn(QtMsgType type, const QMessageLogContext &context, const QString &text)
{
    passedOn.push_back({type, context.file, context.line, text, logBytes()});
}

void swallow(QtMsgType, const QMessageLogContext &, const QString &) { }

QSemaphore held;
QSemaphore freed;

// Keeps the message "held" back until another has been written, or for long.
void holdBack(QtMsgType, const QMessageLogContext &, const QString &text)
{
    if (text == "held") {
        held.release();
        freed.tryAcquire(1, 20000);
    }
}

// A run of the log with a handler of the test before it. Nothing is logged between the end of the
// log and the return of Qt's handler.
class Run
{
public:
    explicit Run(QtMessageHandler previous) : outer(qInstallMessageHandler(previous))
    {
        passedOn.clear();
        ZRLog::initialize();
    }
    ~Run()
    {
        ZRLog::shutdown();
        qInstallMessageHandler(outer);
    }

private:
    QtMessageHandler outer;
};

// What one run writes for the messages of `body`.
QByteArray logged(const std::function<void()> &body)
{
    const Run run(swallow);
    body();
    return logBytes();
}

QString toText(const QByteArray &bytes)
{
    QTextStream stream(bytes);
    return stream.readAll();
}

}

class tst_ZRLog : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void makesFolderAndFile();
    void fileIsNamedAfterTheStart();
    void sameSecondWritesOver();
    void prunes_data();
    void prunes();
    void prefixFormat();
    void typeIsNotWritten();
    void bareFileName_data();
    void bareFileName();
    void longFileNameCutsThePrefix_data();
    void longFileNameCutsThePrefix();
    void messageStandsAsItIs_data();
    void messageStandsAsItIs();
    void everyMessageIsFlushed();
    void previousHandlerComesFirst();
    void previousHandlerHoldsUpNobodyElse();
    void noFile_data();
    void noFile();
    void shutdownWithoutInstance();
    void handlerStaysInstalled();
    void startsAgainAfterShutdown();
    void manyThreads();
};

void tst_ZRLog::init()
{
    cleanup();
    QVERIFY(!QFileInfo::exists(logFolder()));
}

void tst_ZRLog::cleanup()
{
    QFile::remove(logFolder());
    QDir(logFolder()).removeRecursively();
}

void tst_ZRLog::makesFolderAndFile()
{
    {
        const Run run(swallow);
        QVERIFY(QFileInfo(logFolder()).isDir());
    }
    QCOMPARE(QDir(logFolder()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot).size(), 1);
    QCOMPARE(logFiles().size(), 1);
    QVERIFY(logBytes().isEmpty());
}

void tst_ZRLog::fileIsNamedAfterTheStart()
{
    const QString before = QDateTime::currentDateTime().toString("yyyyMMddHHmmss");
    {
        const Run run(swallow);
    }
    const QString after = QDateTime::currentDateTime().toString("yyyyMMddHHmmss");
    const QString name = logFiles().value(0);
    QVERIFY(name >= before + ".clog");
    QVERIFY(name <= after + ".clog");
    QCOMPARE(name.size(), 19);
}

void tst_ZRLog::sameSecondWritesOver()
{
    QVERIFY(QDir().mkdir(logFolder()));
    QStringList names;
    const QDateTime now = QDateTime::currentDateTime();
    for (int second = 0; second < 60; ++second) {
        names += now.addSecs(second).toString("yyyyMMddHHmmss") + ".clog";
        QFile file(logFolder() + '/' + names.last());
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("the other run");
    }
    {
        const Run run(swallow);
    }
    QCOMPARE(logFiles(), names);
    int emptied = 0;
    for (const QString &name : qAsConst(names))
        emptied += contentOf(logFolder() + '/' + name).isEmpty();
    QCOMPARE(emptied, 1);
}

void tst_ZRLog::prunes_data()
{
    QTest::addColumn<int>("days"); // before today, for "DAY" of the name
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("isFolder");
    QTest::addColumn<bool>("stays");
    const auto row = [](const char *tag, int days, const char *name, bool stays) {
        QTest::newRow(tag) << days << name << false << stays;
    };
    row("yesterday", 1, "DAY120000.clog", true);
    row("30 days, first second", 30, "DAY000000.clog", true);
    row("30 days, last second", 30, "DAY235959.clog", true);
    row("31 days, first second", 31, "DAY000000.clog", false);
    row("31 days, last second", 31, "DAY235959.clog", false);
    row("a year", 365, "DAY120000.clog", false);
    row("years", 0, "20200101000000.clog", false);
    row("still to come", -400, "DAY120000.clog", true);
    row("no time", 0, "notes.clog", true);
    row("nothing", 0, ".clog", true);
    row("thirteenth month", 0, "20201301000000.clog", true);
    row("25 o'clock", 0, "20200101250000.clog", true);
    row("too short", 0, "2020010100000.clog", true);
    row("too long", 0, "202001010000000.clog", true);
    row("two dots", 0, "20200101000000.x.clog", true);
    row("other suffix", 0, "20200101000000.log", true);
    row("no suffix", 0, "20200101000000", true);
    row("suffix in capitals", 0, "20200101000000.CLOG", false); // the name filter ignores case
    QTest::newRow("folder") << 0 << "20200101000000.clog" << true << true;
}

void tst_ZRLog::prunes()
{
    QFETCH(int, days);
    QFETCH(QString, name);
    QFETCH(bool, isFolder);
    QFETCH(bool, stays);
    QDate today;
    do { // not across midnight
        cleanup();
        QVERIFY(QDir().mkdir(logFolder()));
        today = QDate::currentDate();
        const QString day = today.addDays(-days).toString("yyyyMMdd");
        const QString path = logFolder() + '/' + QString(name).replace("DAY", day);
        QVERIFY(isFolder ? QDir().mkdir(path) : QFile(path).open(QIODevice::WriteOnly));
        {
            const Run run(swallow);
        }
        if (today == QDate::currentDate())
            QCOMPARE(QFileInfo::exists(path), stays);
    } while (today != QDate::currentDate());
}

void tst_ZRLog::prefixFormat()
{
    const QDateTime before = QDateTime::currentDateTime();
    const QString line = logged([] { QMessageLogger("a/b.cpp", 42, "f").debug("hello"); });
    const QDateTime after = QDateTime::currentDateTime();

    const QRegularExpression format("\\A\\[(\\d{4})-(\\d\\d)-(\\d\\d) (\\d\\d):(\\d\\d):(\\d\\d)"
                                    "\\.(\\d{3})\\]  b\\.cpp:42  hello\\n\\z");
    const QRegularExpressionMatch match = format.match(line);
    QVERIFY2(match.hasMatch(), qPrintable(line));
    const auto field = [&](int i) { return match.captured(i).toInt(); };
    const int month = field(2) - 1; // the log writes it one too high
    const QDateTime time(
        QDate(field(1), month, field(3)), QTime(field(4), field(5), field(6), field(7)));
    QVERIFY(time.isValid());
    QVERIFY(time >= before);
    QVERIFY(time <= after);
}

void tst_ZRLog::typeIsNotWritten()
{
    const QByteArray log = logged([] {
        const QMessageLogger logger("x.cpp", 1, "f");
        logger.debug("same");
        logger.info("same");
        logger.warning("same");
        logger.critical("same");
    });
    const QList<QByteArray> lines = log.split('\n');
    QCOMPARE(lines.size(), 5);
    for (int i = 0; i < 4; ++i)
        QCOMPARE(lines[i].mid(25), QByteArray("  x.cpp:1  same"));
}

void tst_ZRLog::bareFileName_data()
{
    QTest::addColumn<QByteArray>("path");
    QTest::addColumn<QByteArray>("expected");
    const auto row = [](const char *path, const char *expected) {
        QTest::newRow(path) << QByteArray(path) << QByteArray(expected);
    };
    row("main.cpp", "main.cpp");
    row("src/UI/main.cpp", "main.cpp");
    row("/main.cpp", "main.cpp");
    row("C:\\src\\main.cpp", "main.cpp");
    row("C:\\src/UI\\main.cpp", "main.cpp");
    row("C:\\src\\UI/main.cpp", "main.cpp");
    row("src/main/", "main/");
    row("src\\main\\", "main\\");
    row("src//", "/");
    row("/", "/");
    row("x", "x");
    row("", "");
    QTest::newRow("null") << QByteArray() << QByteArray("");
}

void tst_ZRLog::bareFileName()
{
    QFETCH(QByteArray, path);
    QFETCH(QByteArray, expected);
    const QByteArray log = logged([&] {
        QMessageLogger(path.isNull() ? nullptr : path.constData(), 7, nullptr).debug("text");
    });
    QCOMPARE(log.mid(25), "  " + expected + ":7  text\n");
}

void tst_ZRLog::longFileNameCutsThePrefix_data()
{
    QTest::addColumn<int>("length");
    QTest::addColumn<int>("expected"); // of the prefix: 25 of time, 2, the name, ":7  "
    QTest::newRow("fits with room") << 4063 << 4094;
    QTest::newRow("just fits") << 4064 << 4095;
    QTest::newRow("one too long") << 4065 << 4095;
    QTest::newRow("far too long") << 100000 << 4095;
}

void tst_ZRLog::longFileNameCutsThePrefix()
{
    QFETCH(int, length);
    QFETCH(int, expected);
    const QByteArray name(length, 'n');
    const QByteArray log = logged([&] { QMessageLogger(name, 7, nullptr).debug("|text"); });
    const QByteArray prefix = log.left(25) + ("  " + name + ":7  ").left(expected - 25);
    QCOMPARE(log, prefix + "|text\n");
    QCOMPARE(log.indexOf('|'), expected);
}

void tst_ZRLog::messageStandsAsItIs_data()
{
    QTest::addColumn<QString>("message");
    QTest::newRow("empty") << "";
    QTest::newRow("percent") << "100% %s %d %n";
    QTest::newRow("lines") << "one\ntwo\n";
    QTest::newRow("longer than the prefix may be") << QString(100000, 'm');
    QTest::newRow("Chinese") << QString::fromUtf8("\xe6\x9c\xac\xe5\x9c\xb0");
}

void tst_ZRLog::messageStandsAsItIs()
{
    QFETCH(QString, message);
    const QByteArray log =
        logged([&] { QMessageLogger("x.cpp", 1, nullptr).debug().noquote().nospace() << message; });
    QByteArray bytes;
    QTextStream(&bytes) << message; // the default codec is the log's too
    QCOMPARE(log.mid(25), "  x.cpp:1  " + bytes + "\n");
}

void tst_ZRLog::everyMessageIsFlushed()
{
    logged([] {
        for (int count = 1; count <= 5; ++count) {
            qDebug("line");
            QCOMPARE(logBytes().count('\n'), count);
        }
    });
}

void tst_ZRLog::previousHandlerComesFirst()
{
    {
        const Run run(passOn);
        QMessageLogger("src/x.cpp", 8, "f").warning("first");
        QMessageLogger("src/y.cpp", 9, "f").debug("second");
    }
    QCOMPARE(int(passedOn.size()), 2);
    QCOMPARE(passedOn[0].type, QtWarningMsg);
    QCOMPARE(passedOn[0].file, QByteArray("src/x.cpp"));
    QCOMPARE(passedOn[0].line, 8);
    QCOMPARE(passedOn[0].text, QString("first"));
    QCOMPARE(passedOn[0].logSoFar, QByteArray());
    QCOMPARE(passedOn[1].type, QtDebugMsg);
    QCOMPARE(passedOn[1].text, QString("second"));
    QCOMPARE(passedOn[1].logSoFar.count('\n'), 1);
    QCOMPARE(logBytes().count('\n'), 2);
}

void tst_ZRLog::previousHandlerHoldsUpNobodyElse()
{
    const std::unique_ptr<QThread> other(QThread::create([] { qDebug("held"); }));
    {
        const Run run(holdBack);
        other->start();
        held.acquire();
        qDebug("free");
        freed.release();
        QVERIFY(other->wait(100000));
    }
    const QList<QByteArray> lines = logBytes().split('\n');
    QCOMPARE(lines.size(), 3);
    QVERIFY(lines[0].endsWith("  free"));
    QVERIFY(lines[1].endsWith("  held"));
}

void tst_ZRLog::noFile_data()
{
    QTest::addColumn<bool>("folderInTheWay");
    QTest::newRow("a file named log") << false;
    QTest::newRow("a folder named as the run") << true;
}

// No file is written and nothing else shows it; messages still go to the previous handler.
void tst_ZRLog::noFile()
{
    QFETCH(bool, folderInTheWay);
    QFile obstacle(logFolder());
    if (folderInTheWay) {
        const QDateTime now = QDateTime::currentDateTime();
        for (int second = 0; second < 60; ++second) {
            const QString name = now.addSecs(second).toString("yyyyMMddHHmmss") + ".clog";
            QVERIFY(QDir().mkpath(logFolder() + '/' + name));
        }
    } else {
        QVERIFY(obstacle.open(QIODevice::WriteOnly));
    }
    {
        const Run run(passOn);
        qDebug("only passed on");
    }
    QCOMPARE(int(passedOn.size()), 1);
    QCOMPARE(passedOn[0].text, QString("only passed on"));
    QCOMPARE(QFileInfo(logFolder()).isFile(), !folderInTheWay);
    QCOMPARE(QFileInfo(obstacle).isFile() ? obstacle.size() : 0, 0);
    QVERIFY(logFiles().isEmpty());
}

void tst_ZRLog::shutdownWithoutInstance()
{
    ZRLog::shutdown();
    {
        const Run run(swallow);
        qDebug("line");
    }
    ZRLog::shutdown();
    QCOMPARE(logBytes().count('\n'), 1);
}

void tst_ZRLog::handlerStaysInstalled()
{
    const QtMessageHandler outer = qInstallMessageHandler(swallow);
    ZRLog::initialize();
    const QtMessageHandler running = qInstallMessageHandler(swallow);
    qInstallMessageHandler(running);
    ZRLog::shutdown();
    const QtMessageHandler left = qInstallMessageHandler(outer);
    QVERIFY(running != swallow);
    QVERIFY(left == running);
}

void tst_ZRLog::startsAgainAfterShutdown()
{
    for (const char *text : {"one", "two"})
        QVERIFY(logged([&] { qDebug("%s", text); }).endsWith(QByteArray(text) + '\n'));
}

void tst_ZRLog::manyThreads()
{
    constexpr int threadCount = 8;
    constexpr int messageCount = 300;
    const auto messageOf = [](int thread, int number) {
        return QString("<%1 %2 %3>").arg(thread).arg(number).arg(QString(number * 7 % 500, 'm'));
    };
    const QString log = toText(logged([&] {
        std::vector<std::unique_ptr<QThread>> threads;
        for (int thread = 0; thread < threadCount; ++thread) {
            threads.emplace_back(QThread::create([&, thread] {
                for (int number = 0; number < messageCount; ++number)
                    qDebug().noquote() << messageOf(thread, number);
            }));
            threads.back()->start();
        }
        for (const auto &thread : threads)
            QVERIFY(thread->wait(100000));
    }));

    const QStringList lines = log.split('\n');
    QCOMPARE(lines.size(), threadCount * messageCount + 1);
    QVERIFY(lines.last().isEmpty());
    const QRegularExpression whole("\\A\\[\\d{4}-\\d\\d-\\d\\d \\d\\d:\\d\\d:\\d\\d\\.\\d{3}\\]  "
                                   "tst_ZRLog\\.cpp:\\d+  (<(\\d+) (\\d+) m*>)\\z");
    int next[threadCount] = {};
    for (const QString &line : lines.mid(0, lines.size() - 1)) {
        const QRegularExpressionMatch match = whole.match(line);
        QVERIFY2(match.hasMatch(), qPrintable(line));
        const int thread = match.captured(2).toInt();
        QCOMPARE(match.captured(1), messageOf(thread, next[thread]++));
    }
    for (int count : next)
        QCOMPARE(count, messageCount);
}

QTEST_GUILESS_MAIN(tst_ZRLog)

#include "tst_ZRLog.moc"

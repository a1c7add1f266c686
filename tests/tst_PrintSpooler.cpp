#include "PrintSpooler.h"

#include "PostekFakes.h"
#include "QueueSwitch.h"

#include <QPrinterInfo>
#include <QtTest>

#include <limits>

class tst_PrintSpooler : public QObject
{
    Q_OBJECT

private slots:
    void status_data();
    void status();
    void dotSize_data();
    void dotSize();
    void unknownQueue();
    void unreadableQueue();
    void name_data();
    void name();
    void systemDoesNotFindAsciiNames_data();
    void systemDoesNotFindAsciiNames();
    void systemFindsNamesOfWideLetters();
    void queueOutOfUse();
};

namespace {
using Resolution = std::optional<short>;
const double before = 12.5; // of the caller, to see what stays
const QString queueName = "LABEL-300"; // of the test's print server

// A null behind each letter: a name whose bytes the spooler reads as `queueName`.
QString wideName()
{
    QString name = queueName;
    for (int i = name.size(); i > 0; --i)
        name.insert(i, QChar(0));
    return name;
}
}
Q_DECLARE_METATYPE(Resolution)

void tst_PrintSpooler::status_data()
{
    QTest::addColumn<bool>("offline");
    QTest::addColumn<bool>("network");
    QTest::addColumn<int>("status");

    QTest::newRow("ready") << false << false << 0;
    QTest::newRow("network") << false << true << 2;
    QTest::newRow("offline") << true << false << 1;
    QTest::newRow("offline comes first") << true << true << 1;
}

void tst_PrintSpooler::status()
{
    QFETCH(bool, offline);
    QFETCH(bool, network);
    RecordingSpooler spooler;
    spooler.found = true;
    spooler.queue.offline = offline;
    spooler.queue.network = network;

    double dotSize = before;
    QTEST(getPrinterStatus("POSTEK", &dotSize, spooler), "status");
    QCOMPARE(dotSize, 0.85);
    QCOMPARE(spooler.calls, QStringList({"open", "read", "close"}));
}

void tst_PrintSpooler::dotSize_data()
{
    QTest::addColumn<Resolution>("resolution");
    QTest::addColumn<double>("dotSize");

    QTest::newRow("no device mode") << Resolution() << 0.85;
    QTest::newRow("203 dpi") << Resolution(203) << 254.0 / 203;
    QTest::newRow("300 dpi") << Resolution(300) << 254.0 / 300;
    QTest::newRow("600 dpi") << Resolution(600) << 254.0 / 600;
    QTest::newRow("highest") << Resolution(32767) << 254.0 / 32767;
    QTest::newRow("high quality") << Resolution(-4) << -63.5;
    QTest::newRow("zero") << Resolution(0) << std::numeric_limits<double>::infinity();
}

void tst_PrintSpooler::dotSize()
{
    QFETCH(Resolution, resolution);
    RecordingSpooler spooler;
    spooler.found = true;
    spooler.queue.yResolution = resolution;

    double dotSize = before;
    QCOMPARE(getPrinterStatus("POSTEK", &dotSize, spooler), 0);
    QTEST(dotSize, "dotSize");
}

void tst_PrintSpooler::unknownQueue()
{
    RecordingSpooler spooler;
    spooler.queue.offline = true;

    double dotSize = before;
    QCOMPARE(getPrinterStatus("POSTEK", &dotSize, spooler), 0);
    QCOMPARE(dotSize, before);
    QCOMPARE(spooler.calls, QStringList({"open", "read null", "close null"}));
}

void tst_PrintSpooler::unreadableQueue()
{
    RecordingSpooler spooler;
    spooler.found = true;
    spooler.readable = false;
    spooler.queue.offline = true;

    double dotSize = before;
    QCOMPARE(getPrinterStatus("POSTEK", &dotSize, spooler), 0);
    QCOMPARE(dotSize, before);
    QCOMPARE(spooler.calls, QStringList({"open", "read", "close"}));
}

// The bytes of the name are handed on as they are, two of them a character.
void tst_PrintSpooler::name_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("asked");

    const auto wide = [](std::initializer_list<ushort> units) {
        return QString::fromUtf16(units.begin(), int(units.size()));
    };
    QTest::newRow("empty") << ""
                           << "";
    QTest::newRow("one byte") << "A" << wide({0x0041});
    QTest::newRow("two bytes") << "AB" << wide({0x4241});
    QTest::newRow("three bytes") << "ABC" << wide({0x4241, 0x0043});
    QTest::newRow("POSTEK") << "POSTEK" << wide({0x4f50, 0x5453, 0x4b45});
    QTest::newRow("two bytes of one letter") << QString::fromUtf8("\xc3\xa9") << wide({0xa9c3});
    QTest::newRow("three bytes of one letter")
        << QString::fromUtf8("\xe4\xba\xac") << wide({0xbae4, 0x00ac});
}

void tst_PrintSpooler::name()
{
    QFETCH(QString, name);
    RecordingSpooler spooler;
    double dotSize = 0.0;
    getPrinterStatus(name, &dotSize, spooler);
    QTEST(spooler.name, "asked");
}

void tst_PrintSpooler::systemDoesNotFindAsciiNames_data()
{
    QTest::addColumn<QString>("name");

    QTest::newRow("empty") << "";
    QTest::newRow("POSTEK") << "POSTEK";
    QTest::newRow("odd length") << "POSTEK G6000x";
    QTest::newRow("a queue that is there") << queueName;
}

void tst_PrintSpooler::systemDoesNotFindAsciiNames()
{
    QFETCH(QString, name);
    double dotSize = before;
    QCOMPARE(getPrinterStatus(name, &dotSize), 0);
    QCOMPARE(dotSize, before);
}

// The queue has two resolutions, the first of which is set.
void tst_PrintSpooler::systemFindsNamesOfWideLetters()
{
    const QPrinterInfo queue = QPrinterInfo::printerInfo(queueName);
    QVERIFY(!queue.isNull());
    QCOMPARE(queue.supportedResolutions().size(), 2);
    double dotSize = before;
    QCOMPARE(getPrinterStatus(wideName(), &dotSize), 0);
    QCOMPARE(dotSize, SET_DOT_SIZE);
}

void tst_PrintSpooler::queueOutOfUse()
{
    double dotSize = before;
    QVERIFY(switchQueue(queueName, false));
    const int status = getPrinterStatus(wideName(), &dotSize);
    QVERIFY(switchQueue(queueName, true));
    QCOMPARE(status, 1);
    QCOMPARE(dotSize, SET_DOT_SIZE);
    QCOMPARE(getPrinterStatus(wideName(), &dotSize), 0);
}

QTEST_MAIN(tst_PrintSpooler)
#include "tst_PrintSpooler.moc"

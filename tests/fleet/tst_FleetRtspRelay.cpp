#include "FleetRtspRelay.h"

#include <QTest>

#include <random>

class tst_FleetRtspRelay : public QObject
{
    Q_OBJECT

private slots:
    void units_data();
    void units();
    void inPieces();
    void isMedia_data();
    void isMedia();
    void garbage();
};

namespace {

const QByteArray answer = "RTSP/1.0 200 OK\r\nCSeq: 1\r\nServer: x\r\n\r\n";
const QByteArray description =
    "RTSP/1.0 200 OK\r\nCSeq: 2\r\ncontent-Length:  7 \r\n\r\nv=0\r\n$\r";

QByteArray packet(int channel, int size)
{
    QByteArray bytes("$");
    bytes += char(channel);
    bytes += char(size >> 8);
    bytes += char(size & 0xff);
    for (int i = 0; i < size; ++i)
        bytes += "\r\n\r\n$"[i % 5];
    return bytes;
}

QList<QByteArray> takeAll(FleetRtspUnits &units)
{
    QList<QByteArray> all;
    for (QByteArray unit = units.take(); !unit.isEmpty(); unit = units.take())
        all.append(unit);
    return all;
}

}

void tst_FleetRtspRelay::units_data()
{
    QTest::addColumn<QList<QByteArray>>("sent");
    QTest::newRow("nothing") << QList<QByteArray>{};
    QTest::newRow("answer") << QList<QByteArray>{answer};
    QTest::newRow("answer with a body") << QList<QByteArray>{description, answer};
    QTest::newRow("packet") << QList<QByteArray>{packet(0, 1400)};
    QTest::newRow("empty packet") << QList<QByteArray>{packet(1, 0), packet(1, 0)};
    QTest::newRow("longest packet") << QList<QByteArray>{packet(2, 65535)};
    QTest::newRow("mixed") << QList<QByteArray>{
        answer, packet(0, 30), packet(3, 8), description, packet(2, 256), answer};
}

void tst_FleetRtspRelay::units()
{
    QFETCH(QList<QByteArray>, sent);
    FleetRtspUnits units;
    for (const QByteArray &unit : sent)
        units.append(unit);
    QCOMPARE(takeAll(units), sent);
}

// However the bytes come, the same units come out.
void tst_FleetRtspRelay::inPieces()
{
    const QList<QByteArray> sent{
        answer, packet(0, 30), packet(3, 8), description, packet(2, 256), answer};
    const QByteArray whole = sent.join();
    for (int size : {1, 2, 3, 7, 100}) {
        FleetRtspUnits units;
        QList<QByteArray> taken;
        for (int at = 0; at < whole.size(); at += size) {
            units.append(whole.mid(at, size));
            taken += takeAll(units);
        }
        QCOMPARE(taken, sent);
    }
}

void tst_FleetRtspRelay::isMedia_data()
{
    QTest::addColumn<QByteArray>("unit");
    QTest::addColumn<bool>("media");
    QTest::newRow("video") << packet(0, 100) << true;
    QTest::newRow("audio") << packet(2, 13) << true;
    QTest::newRow("reports") << packet(1, 100) << false;
    QTest::newRow("header alone") << packet(0, 12) << false;
    QTest::newRow("answer") << answer << false;
}

void tst_FleetRtspRelay::isMedia()
{
    QFETCH(QByteArray, unit);
    QTEST(FleetRtspUnits::isMedia(unit), "media");
}

// Whatever comes is passed on in its order, and nothing is made up.
void tst_FleetRtspRelay::garbage()
{
    std::mt19937 random(5);
    FleetRtspUnits units;
    QByteArray sent;
    QByteArray taken;
    for (int i = 0; i < 1000; ++i) {
        QByteArray bytes(int(random() % 50), '\0');
        for (char &byte : bytes)
            byte = char(random());
        units.append(bytes);
        sent += bytes;
        taken += takeAll(units).join();
    }
    QVERIFY(sent.startsWith(taken));
}

QTEST_GUILESS_MAIN(tst_FleetRtspRelay)
#include "tst_FleetRtspRelay.moc"

#include "FleetFrame.h"

#include <QTest>

class tst_FleetFrame : public QObject
{
    Q_OBJECT

private slots:
    void encode();
    void encodeWithWrongLength();
    void decodeGood();
    void decodeBad_data();
    void decodeBad();
};

void tst_FleetFrame::encode()
{
    QCOMPARE(FleetFrame::encode("{}"), QByteArray("\0\0\0\x0a\0\0\0\0{}", 10));
    QCOMPARE(
        FleetFrame::encode(QByteArray(300, 'x')).left(8), QByteArray("\0\0\x01\x34\0\0\0\0", 8));
}

void tst_FleetFrame::encodeWithWrongLength()
{
    QCOMPARE(FleetFrame::encode("{}", 5).left(4), QByteArray("\0\0\0\x0f", 4));
    QCOMPARE(FleetFrame::encode("{}", -5).left(4), QByteArray("\0\0\0\x05", 4));
}

void tst_FleetFrame::decodeGood()
{
    const QByteArray json = R"({"id":7,"method":"GetSD","srcid":"A","destarray":["B"]})";
    QByteArray datagram = FleetFrame::encode(json);
    datagram.replace(4, 4, "abcd"); // reserved, not looked at
    const FleetFrame::Request request = FleetFrame::decode(datagram);
    QCOMPARE(request.problem, QString());
    QCOMPARE(request.raw, json);
    QCOMPARE(request.object["id"].toInt(), 7);
}

void tst_FleetFrame::decodeBad_data()
{
    QTest::addColumn<QByteArray>("datagram");
    QTest::addColumn<QString>("problem");
    const auto framed = [](const char *json) { return FleetFrame::encode(json); };
    QTest::newRow("nothing") << QByteArray() << "0 bytes, shorter than a header";
    QTest::newRow("cut header") << QByteArray("\0\0\0\x07\0\0\0", 7) << "7 bytes, shorter";
    QTest::newRow("too long a length")
        << FleetFrame::encode("{}", 1) << "the length field says 11, the datagram has 10 bytes";
    QTest::newRow("no JSON") << framed("{\"id\":1") << "no JSON: ";
    QTest::newRow("header alone") << framed("") << "no JSON: ";
    QTest::newRow("array") << framed("[1]") << "no JSON object";
    QTest::newRow("no id") << framed(R"({"method":"x","srcid":"A","destarray":[]})")
                           << "\"id\" is no number";
    QTest::newRow("id as text") << framed(R"({"id":"1","method":"x","srcid":"A","destarray":[]})")
                                << "\"id\" is no number";
    QTest::newRow("no method") << framed(R"({"id":1,"srcid":"A","destarray":[]})")
                               << "\"method\" is no text";
    QTest::newRow("srcid as number")
        << framed(R"({"id":1,"method":"x","srcid":5,"destarray":[]})") << "\"srcid\" is no text";
    QTest::newRow("destarray as text")
        << framed(R"({"id":1,"method":"x","srcid":"A","destarray":"all"})")
        << "\"destarray\" is no array";
}

void tst_FleetFrame::decodeBad()
{
    QFETCH(QByteArray, datagram);
    QFETCH(QString, problem);
    const QString told = FleetFrame::decode(datagram).problem;
    QVERIFY2(told.startsWith(problem), qPrintable(told));
}

QTEST_GUILESS_MAIN(tst_FleetFrame)
#include "tst_FleetFrame.moc"

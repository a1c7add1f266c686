#include "VorlynFrame.h"

#include "JunkDatagrams.h"
#include "VorlynJson.h"

#include <QJsonDocument>
#include <QtEndian>
#include <QtTest>

#include <cstring>
#include <memory>

using namespace VorlynProtocol;

class tst_VorlynFrame : public QObject
{
    Q_OBJECT

private slots:
    void constants();
    void build_data();
    void build();
    void readsWhatWasBuilt();
    void reservedBytesAreIgnored();
    void mismatchSpoilsTheCount();
    void resetHeals();
    void shortDatagramReadsTheOldLength();
    void headerOnly_data();
    void headerOnly();
    void fullBuffer();
    void lengthBeyondTheBuffer();
    void messageIsFollowedByZero();
    void survivesAnything();
};

static QByteArray datagram(quint32 length, const QByteArray &body)
{
    QByteArray bytes(headerSize, '\0');
    qToBigEndian(length, bytes.data());
    return bytes + body;
}

static bool feed(VorlynFrameReader &reader, const QByteArray &bytes)
{
    std::memcpy(reader.buffer(), bytes.constData(), size_t(bytes.size()));
    return reader.accept(bytes.size());
}

void tst_VorlynFrame::constants()
{
    QCOMPARE(group, "239.255.255.250");
    QCOMPARE(int(requestPort), 5888);
    QCOMPARE(int(replyPort), 5999);
    QCOMPARE(int(anyPort), 0);
    QCOMPARE(headerSize, 8);
    QCOMPARE(maxDatagram, 2048);
    QCOMPARE(int(retryMilliseconds), 1000);
    QCOMPARE(int(sendPollMilliseconds), 1);
    QCOMPARE(int(searchPollMilliseconds), 10);
    QCOMPARE(replySeconds, 3.0);
    QCOMPARE(scanSeconds, 10.0);
}

void tst_VorlynFrame::build_data()
{
    QTest::addColumn<QByteArray>("json");
    QTest::addColumn<QByteArray>("header");
    QTest::newRow("empty") << QByteArray() << QByteArray::fromHex("0000000800000000");
    QTest::newRow("object") << QByteArray("{}") << QByteArray::fromHex("0000000a00000000");
    QTest::newRow("long") << QByteArray(0x12340, 'x') << QByteArray::fromHex("0001234800000000");
}

void tst_VorlynFrame::build()
{
    QFETCH(QByteArray, json);
    QFETCH(QByteArray, header);
    QCOMPARE(buildFrame(json), header + json);
}

void tst_VorlynFrame::readsWhatWasBuilt()
{
    VorlynFrameReader reader;
    for (const QByteArray &json : QByteArrayList{"{\"id\":1}", "{}", "{\"id\":22222}"}) {
        QVERIFY(feed(reader, buildFrame(json)));
        QCOMPARE(reader.body(), json);
    }
}

void tst_VorlynFrame::reservedBytesAreIgnored()
{
    VorlynFrameReader reader;
    QByteArray bytes = buildFrame("{}");
    bytes.replace(lengthSize, reservedSize, "\xff\xff\xff\xff");
    QVERIFY(feed(reader, bytes));
    QCOMPARE(reader.body(), QByteArray("{}"));
}

void tst_VorlynFrame::mismatchSpoilsTheCount()
{
    VorlynFrameReader reader;
    const QByteArray stray = datagram(99, "12345678"); // 16 bytes
    QVERIFY(!feed(reader, stray));
    QVERIFY(!feed(reader, buildFrame("{}"))); // 16 + 10
    QVERIFY(!feed(reader, buildFrame("{}"))); // 16 + 10 + 10
    QVERIFY(feed(reader, datagram(16 + 10 + 10 + 12, "{ {}")));
    QCOMPARE(reader.body().left(4), QByteArray("{ {}")); // each lands at the start
    QVERIFY(feed(reader, buildFrame("{}"))); // and all is well again
    QCOMPARE(reader.body(), QByteArray("{}"));
}

void tst_VorlynFrame::resetHeals()
{
    VorlynFrameReader reader;
    QVERIFY(!feed(reader, datagram(99, "12345678")));
    reader.reset();
    QVERIFY(feed(reader, buildFrame("{}")));
    QCOMPARE(reader.body(), QByteArray("{}"));
}

void tst_VorlynFrame::shortDatagramReadsTheOldLength()
{
    // The reading buffer isn't cleared between datagrams.
    VorlynFrameReader reader;
    QVERIFY(feed(reader, datagram(9, "x")));
    QVERIFY(!feed(reader, QByteArray(3, '\0'))); // length 9, count 3
    QVERIFY(feed(reader, QByteArray(6, '\0').replace(3, 1, "\x9"))); // length 9, count 9
}

void tst_VorlynFrame::headerOnly_data()
{
    QTest::addColumn<int>("size");
    for (int size = 4; size <= headerSize; ++size)
        QTest::newRow(qPrintable(QString::number(size))) << size;
}

void tst_VorlynFrame::headerOnly()
{
    QFETCH(int, size);
    VorlynFrameReader reader;
    QVERIFY(feed(reader, datagram(quint32(size), {}).left(size)));
    QCOMPARE(reader.body(), QByteArray());
}

void tst_VorlynFrame::fullBuffer()
{
    VorlynFrameReader reader;
    const QByteArray body(maxDatagram - headerSize, 'x');
    QVERIFY(feed(reader, buildFrame(body)));
    QCOMPARE(reader.body(), body);
}

void tst_VorlynFrame::lengthBeyondTheBuffer()
{
    VorlynFrameReader reader;
    QVERIFY(!feed(reader, datagram(1, QByteArray(maxDatagram - headerSize, ' '))));
    QVERIFY(feed(reader, datagram(maxDatagram + 10, "{}")));
    QCOMPARE(reader.body(), QByteArray("{}").leftJustified(maxDatagram - headerSize, ' '));
}

void tst_VorlynFrame::messageIsFollowedByZero()
{
    VorlynFrameReader reader;
    QVERIFY(!feed(reader, datagram(1, QByteArray(maxDatagram - headerSize, ' '))));
    QVERIFY(feed(reader, datagram(maxDatagram + 12, "{  }"))); // fills the buffer: no room for it
    QCOMPARE(reader.body(), QByteArray("{  }").leftJustified(maxDatagram - headerSize, ' '));
    QVERIFY(feed(reader, datagram(12, "{  }")));

    QVERIFY(!feed(reader, datagram(1, "    ")));
    QVERIFY(feed(reader, datagram(12 + 12, "{  }")));
    QCOMPARE(reader.body(), QByteArray("{  }") + '\0' + QByteArray(11, ' '));
}

void tst_VorlynFrame::survivesAnything()
{
    // The reader is on the heap, where a sanitizer sees a byte too many.
    JunkDatagrams junk(20240517);
    const auto reader = std::make_unique<VorlynFrameReader>();

    int complete = 0;
    int objects = 0;
    for (int i = 0; i < 100000; ++i) {
        if (junk.below(64) == 0)
            reader->reset();
        const QByteArray bytes = junk.next();
        if (!feed(*reader, bytes))
            continue;
        ++complete;
        const QByteArray body = reader->body();
        QVERIFY(body.size() <= maxDatagram - headerSize);
        const QJsonObject object = QJsonDocument::fromJson(body).object();
        objects += !object.isEmpty();
        QVERIFY(resultOf(object) == 0 || resultOf(object) == -1);
        idOf(object);
        for (const QString &key : object.keys()) {
            intOf(object, key);
            stringOf(object, key);
        }
    }
    // The inputs got past the first check, both the well-formed and the others.
    QVERIFY2(complete > 1000, qPrintable(QString::number(complete)));
    QVERIFY2(objects > 100, qPrintable(QString::number(objects)));
    QVERIFY(complete > objects);
}

QTEST_GUILESS_MAIN(tst_VorlynFrame)
#include "tst_VorlynFrame.moc"

#include "FleetFormReader.h"

#include <QTest>

namespace {

QByteArray form(const QByteArray &content, const QByteArray &fileName = "1.2.3.bin")
{
    return "--window-iptool-upload\r\n"
           "Content-Disposition: form-data; name=\"file\"; filename=\""
        + fileName + "\"\r\nContent-Type: application/octet-stream\r\n\r\n" + content
        + "\r\n--window-iptool-upload--\r\n";
}

}

class tst_FleetFormReader : public QObject
{
    Q_OBJECT

private slots:
    void boundary_data();
    void boundary();
    void pieces_data();
    void pieces();
    void fileName_data();
    void fileName();
    void firstFileCounts();
    void noFile();
    void incomplete();
    void broken_data();
    void broken();
    void noDigest();
    void large();
};

void tst_FleetFormReader::boundary_data()
{
    QTest::addColumn<QByteArray>("type");
    QTest::addColumn<QByteArray>("expected");
    QTest::newRow("plain") << QByteArray("multipart/form-data; boundary=abc") << QByteArray("abc");
    QTest::newRow("quoted") << QByteArray("multipart/form-data; boundary=\"a b;c\"")
                            << QByteArray("a b;c");
    QTest::newRow("more after") << QByteArray("Multipart/Form-Data; boundary=abc; charset=x")
                                << QByteArray("abc");
    QTest::newRow("other type") << QByteArray("multipart/mixed; boundary=abc") << QByteArray();
    QTest::newRow("none") << QByteArray("multipart/form-data") << QByteArray();
    QTest::newRow("empty") << QByteArray() << QByteArray();
}

void tst_FleetFormReader::boundary()
{
    QFETCH(QByteArray, type);
    QTEST(FleetFormReader::boundaryOf(type), "expected");
}

void tst_FleetFormReader::pieces_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("text") << QByteArray("firmware");
    QTest::newRow("line ends") << QByteArray("\r\n\r\n--\r\n-\r\n");
    QTest::newRow("starts of a boundary")
        << QByteArray("\r\n--window-iptool-uploa\r\n--window\r\n--window-iptool-uplo");
    QTest::newRow("zeros") << QByteArray(3000, '\0');
    QTest::newRow("boundary without line end") << QByteArray("x--window-iptool-upload\r\n");
}

void tst_FleetFormReader::pieces()
{
    QFETCH(QByteArray, content);
    const QByteArray body = "preamble\r\n" + form(content) + "epilogue";
    for (int size : {1, 2, 3, 7, 64, 100000}) {
        FleetFormReader reader("window-iptool-upload", true);
        for (int i = 0; i < body.size(); i += size)
            reader.feed(body.mid(i, size));
        QVERIFY(reader.isComplete());
        QVERIFY(reader.hasFile());
        QCOMPARE(reader.size(), qint64(content.size()));
        QCOMPARE(
            reader.digest(), QCryptographicHash::hash(content, QCryptographicHash::Sha256).toHex());
        QCOMPARE(reader.fileName(), QString("1.2.3.bin"));
        QCOMPARE(reader.partHead(),
            QByteArray("Content-Disposition: form-data; name=\"file\"; filename=\"1.2.3.bin\"\r\n"
                       "Content-Type: application/octet-stream"));
    }
}

void tst_FleetFormReader::fileName_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::newRow("quotation mark as it is") << QByteArray("a\"b.bin");
    QTest::newRow("UTF-8") << QByteArray("固件 1.bin");
    QTest::newRow("spaces") << QByteArray("my firmware.bin");
}

void tst_FleetFormReader::fileName()
{
    QFETCH(QByteArray, name);
    FleetFormReader reader("window-iptool-upload", false);
    reader.feed(form("x", name));
    QCOMPARE(reader.fileName(), QString::fromUtf8(name));
}

void tst_FleetFormReader::firstFileCounts()
{
    FleetFormReader reader("B", false);
    reader.feed(
        "--B\r\n\r\nno headers\r\n--B\r\nContent-Disposition: form-data; name=\"t\"\r\n\r\ntext"
        "\r\n--B\r\ncontent-disposition: form-data; filename=\"one\"\r\n\r\n12345"
        "\r\n--B\r\nContent-Disposition: form-data; filename=\"two\"\r\n\r\n123\r\n--B--");
    QVERIFY(reader.isComplete());
    QCOMPARE(reader.fileName(), QString("one"));
    QCOMPARE(reader.size(), qint64(5));
}

void tst_FleetFormReader::noFile()
{
    FleetFormReader reader("B", false);
    reader.feed("--B\r\nContent-Disposition: form-data; name=\"t\"\r\n\r\ntext\r\n--B--\r\n");
    QVERIFY(reader.isComplete());
    QVERIFY(!reader.hasFile());
    QCOMPARE(reader.size(), qint64(0));
}

void tst_FleetFormReader::incomplete()
{
    const QByteArray body = form("content");
    FleetFormReader reader("window-iptool-upload", false);
    reader.feed(body.left(body.size() - 4)); // without the closing hyphens
    QVERIFY(!reader.isComplete());
    QCOMPARE(reader.size(), qint64(7));
}

void tst_FleetFormReader::broken_data()
{
    QTest::addColumn<QByteArray>("boundary");
    QTest::addColumn<QByteArray>("body");
    QTest::newRow("no boundary") << QByteArray() << form("x");
    QTest::newRow("text after the boundary")
        << QByteArray("B") << QByteArray("--Bx\r\n\r\n\r\n--B--");
    QTest::newRow("endless headers")
        << QByteArray("B") << "--B\r\n" + QByteArray(20000, 'h') + "\r\n\r\n\r\n--B--";
}

void tst_FleetFormReader::broken()
{
    QFETCH(QByteArray, boundary);
    QFETCH(QByteArray, body);
    FleetFormReader reader(boundary, false);
    for (int i = 0; i < body.size(); i += 1000)
        reader.feed(body.mid(i, 1000));
    QVERIFY(!reader.isComplete());
    QVERIFY(!reader.hasFile());
}

void tst_FleetFormReader::noDigest()
{
    FleetFormReader reader("window-iptool-upload", false);
    reader.feed(form("x"));
    QCOMPARE(reader.digest(), QByteArray());
}

// More than memory would be asked to hold, from one small block.
void tst_FleetFormReader::large()
{
    const QByteArray block(65536, 'f');
    const QByteArray body = form("");
    const int start = body.indexOf("\r\n\r\n") + 4;
    FleetFormReader reader("window-iptool-upload", false);
    reader.feed(body.left(start));
    for (int i = 0; i < 4096; ++i)
        reader.feed(block);
    reader.feed(body.mid(start));
    QVERIFY(reader.isComplete());
    QCOMPARE(reader.size(), qint64(4096) * block.size());
}

QTEST_GUILESS_MAIN(tst_FleetFormReader)
#include "tst_FleetFormReader.moc"

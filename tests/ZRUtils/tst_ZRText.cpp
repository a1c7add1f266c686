#include "ZRText.h"

#include <QtTest>

class tst_ZRText : public QObject
{
    Q_OBJECT

private slots:
    void fileNames_data();
    void fileNames();
    void did_data();
    void did();
};

void tst_ZRText::fileNames_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("baseName");
    const char *const rows[][3] = {
        {"", "", ""},
        {"image.bin", "image.bin", "image"},
        {"/home/line/image.bin", "image.bin", "image"},
        {"C:\\line\\image.bin", "image.bin", "image"},
        {"C:\\line/images\\1.2.3.bin", "1.2.3.bin", "1.2.3"},
        {"C:\\line\\images/1.2.3.bin", "1.2.3.bin", "1.2.3"},
        {"/image", "image", "image"},
        {"image", "image", "image"},
        {"image.", "image.", "image."},
        {"..", "..", ".."},
        {".bin", ".bin", ""},
        {"/a.b/image", "image", "image"},
        // A separator at the end: the whole path, of which then the last dot counts.
        {"/a.b/images/", "/a.b/images/", "/a"},
        {"C:\\images\\", "C:\\images\\", "C:\\images\\"},
        {"/", "/", "/"},
        {"a/b\\", "a/b\\", "a/b\\"},
    };
    for (const auto &row : rows)
        QTest::newRow(row[0]) << QString(row[0]) << QString(row[1]) << QString(row[2]);
}

void tst_ZRText::fileNames()
{
    QFETCH(QString, path);
    QTEST(fileNameOf(path), "name");
    QTEST(fileBaseNameOf(path), "baseName");
}

void tst_ZRText::did_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("id");
    QTest::newRow("plain") << "did=ABC123"
                           << "ABC123";
    QTest::newRow("case and spaces") << " DID = ABC123 \t"
                                     << "ABC123";
    QTest::newRow("between others") << "key=1\ndid=ABC\nlicence=2\n"
                                    << "ABC";
    QTest::newRow("the first counts") << "did=A\ndid=B"
                                      << "A";
    QTest::newRow("the first counts, empty too") << "did=\ndid=B"
                                                 << "";
    QTest::newRow("carriage returns") << "key=1\r\ndid=ABC\r\n"
                                      << "ABC";
    QTest::newRow("empty lines") << "\n\n  \ndid=ABC"
                                 << "ABC";
    QTest::newRow("two signs are passed over") << "did=A=B\ndid=C"
                                               << "C";
    QTest::newRow("a sign behind") << "did=A="
                                   << "";
    QTest::newRow("spaces inside stay") << "did=A B"
                                        << "A B";
    QTest::newRow("another key") << "uuid=ABC\ndids=D\nxdid=E"
                                 << "";
    QTest::newRow("no sign") << "did ABC"
                             << "";
    QTest::newRow("old line ends make one line") << "did=A\rkey=B"
                                                 << "";
    QTest::newRow("nothing") << ""
                             << "";
    QTest::newRow("Chinese") << QString::fromUtf8("名称=值\ndid=一二三")
                             << QString::fromUtf8("一二三");
    QTest::newRow("zeros") << QString::fromLatin1("did=A\0B\n\0", 9)
                           << QString::fromLatin1("A\0B", 3);
}

void tst_ZRText::did()
{
    QFETCH(QString, text);
    QTEST(parseDid(text), "id");
}

QTEST_APPLESS_MAIN(tst_ZRText)
#include "tst_ZRText.moc"

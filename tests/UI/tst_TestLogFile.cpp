#include "TestLogFile.h"

#include "SmallDisk.h"
#include "TestLogColors.h"
#include "ZRLocalize.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTextEdit>
#include <QtTest>

using Format = TestLogFile::Format;

// Files of a log that the production tool could have written, byte by byte.
class tst_TestLogFile : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void asText();
    void asCsv();
    void csvInChinese();
    void emptyLog();
    void cells_data();
    void cells();
    void breakWithinALine();
    void formatBySuffix_data();
    void formatBySuffix();
    void keepsTheLinesOfItsMaking();
    void writes();
    void replaces();
    void noFolder();
    void folderInTheWay();
    void fullDisk_data();
    void fullDisk();

private:
    void append(const QString &text, const QColor &color)
    {
        log->setTextColor(color);
        log->append(text);
    }
    QByteArray contents(Format format) const
    {
        return TestLogFile(*log->document()).contents(format);
    }

    QScopedPointer<QTextEdit> log;
};

namespace {
const QByteArray mark = "\xef\xbb\xbf";
const QByteArray heading = "\"No.\",\"Kind\",\"Test Log\"\r\n";

QByteArray read(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("no file");
}

void writeOld(const QString &path)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("the old one");
}
}

void tst_TestLogFile::initTestCase()
{
    ZRLocalize::setLanguageFolder(LANGUAGE_FOLDER);
}

void tst_TestLogFile::init()
{
    QVERIFY(ZRLocalize::loadLanguage("en"));
    log.reset(new QTextEdit);
}

void tst_TestLogFile::asText()
{
    append("***Start Auto Test***", bannerColor);
    append(QString::fromUtf8("Name : 二号床"), passColor);
    append("SD Card : Fail", failureColor);
    QCOMPARE(contents(Format::Text),
        mark + "***Start Auto Test***\r\nName : 二号床\r\nSD Card : Fail\r\n");
}

void tst_TestLogFile::asCsv()
{
    append("***Start Auto Test***", bannerColor);
    append(QString::fromUtf8("Name : 二号床"), passColor);
    append("SD Card : Fail", failureColor);
    append("", passColor);
    append("Speaker : Pass", passColor);
    QCOMPARE(contents(Format::Csv),
        mark + heading
            + "\"1\",\"Heading\",\"***Start Auto Test***\"\r\n"
              "\"2\",\"Information or Pass\",\"Name : 二号床\"\r\n"
              "\"3\",\"Fail\",\"SD Card : Fail\"\r\n"
              "\"4\",\"Information or Pass\",\"\"\r\n"
              "\"5\",\"Information or Pass\",\"Speaker : Pass\"\r\n");
}

void tst_TestLogFile::csvInChinese()
{
    QVERIFY(ZRLocalize::loadLanguage("cn"));
    append("a", bannerColor);
    append("b", passColor);
    append("c", failureColor);
    const QString expected = QString("\"%1\",\"%2\",\"%3\"\r\n\"1\",\"%4\",\"a\"\r\n"
                                     "\"2\",\"%5\",\"b\"\r\n\"3\",\"%6\",\"c\"\r\n")
                                 .arg(ZRLocalize::translate("No."), QString::fromUtf8("类型"),
                                     QString::fromUtf8("测试日志"), QString::fromUtf8("标题"),
                                     QString::fromUtf8("信息或通过"), QString::fromUtf8("失败"));
    QCOMPARE(contents(Format::Csv), mark + expected.toUtf8());
}

void tst_TestLogFile::emptyLog()
{
    QCOMPARE(contents(Format::Text), mark);
    QCOMPARE(contents(Format::Csv), mark + heading);
}

void tst_TestLogFile::cells_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("cell");

    const struct {
        const char *text;
        const char *cell;
    } rows[] = {
        {"=1+1", "'=1+1"},
        {"+1", "'+1"},
        {"-1", "'-1"},
        {"@SUM(A1)", "'@SUM(A1)"},
        {"\t=1", "'\t'=1"},
        {"a;=1", "a;'=1"},
        {"a; +1", "a;' +1"},
        {"a\t=1", "a\t'=1"},
        {"a;-1;b;@c", "a;'-1;b;'@c"},
        {"a;b=1", "a;b=1"},
        {"a;", "a;"},
        {"a;＝1", "a;'＝1"},
        {"\tname", "'\tname"},
        {"   =1", "'   =1"},
        {"＝1", "'＝1"},
        {"＋1", "'＋1"},
        {"－1", "'－1"},
        {"＠1", "'＠1"},
        {"=\"a\"", "'=\"\"a\"\""},
        {"Name : =1", "Name : =1"},
        {"'=1", "'=1"},
        {"a \"b\", c;d", "a \"\"b\"\", c;d"},
        {"\"", "\"\""},
        {"二号床", "二号床"},
        {"  ", "  "},
        {"1,5", "1,5"},
    };
    for (const auto &row : rows)
        QTest::newRow(row.text) << QString::fromUtf8(row.text) << QString::fromUtf8(row.cell);
}

void tst_TestLogFile::cells()
{
    QFETCH(QString, text);
    QFETCH(QString, cell);
    append(text, passColor);
    QCOMPARE(contents(Format::Csv),
        mark + heading + "\"1\",\"Information or Pass\",\"" + cell.toUtf8() + "\"\r\n");
    QCOMPARE(contents(Format::Text), mark + text.toUtf8() + "\r\n"); // as it stands
}

// As the log has it from a device whose name has HTML in it.
void tst_TestLogFile::breakWithinALine()
{
    append("Name : a<br>b<br>=1", passColor);
    QCOMPARE(contents(Format::Text), mark + "Name : a\r\nb\r\n=1\r\n");
    QCOMPARE(contents(Format::Csv),
        mark + heading + "\"1\",\"Information or Pass\",\"Name : a\nb\n'=1\"\r\n");
}

void tst_TestLogFile::formatBySuffix_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<bool>("csv");
    QTest::newRow("csv") << "/a/log.csv" << true;
    QTest::newRow("capitals") << "/a/log.CSV" << true;
    QTest::newRow("last one counts") << "/a/log.txt.csv" << true;
    QTest::newRow("txt") << "/a/log.txt" << false;
    QTest::newRow("not the last") << "/a/log.csv.txt" << false;
    QTest::newRow("none") << "/a/log" << false;
    QTest::newRow("of the folder") << "/a.csv/log" << false;
    QTest::newRow("nothing else") << "/a/csv" << false;
}

void tst_TestLogFile::formatBySuffix()
{
    QFETCH(QString, path);
    QFETCH(bool, csv);
    QCOMPARE(TestLogFile::formatOf(path) == Format::Csv, csv);
}

void tst_TestLogFile::keepsTheLinesOfItsMaking()
{
    append("a", passColor);
    const TestLogFile file(*log->document());
    append("b", passColor);
    QCOMPARE(file.contents(Format::Text), mark + "a\r\n");
}

void tst_TestLogFile::writes()
{
    const QTemporaryDir folder;
    append("a", failureColor);
    const TestLogFile file(*log->document());
    for (const char *name : {"log.txt", "日志.CSV", "log"}) {
        const QString path = folder.filePath(QString::fromUtf8(name));
        QCOMPARE(file.write(path), QString());
        QCOMPARE(read(path), file.contents(TestLogFile::formatOf(path)));
    }
    QCOMPARE(QDir(folder.path()).entryList(QDir::Files).size(), 3); // and nothing else
}

void tst_TestLogFile::replaces()
{
    const QTemporaryDir folder;
    const QString path = folder.filePath("log.txt");
    writeOld(path);
    append("a", passColor);
    QCOMPARE(TestLogFile(*log->document()).write(path), QString());
    QCOMPARE(read(path), mark + "a\r\n");
}

void tst_TestLogFile::noFolder()
{
    const QTemporaryDir folder;
    const QString path = folder.filePath("gone/log.txt");
    QVERIFY(!TestLogFile(*log->document()).write(path).isEmpty());
    QVERIFY(!QFile::exists(path));
}

void tst_TestLogFile::folderInTheWay()
{
    const QTemporaryDir folder;
    QVERIFY(QDir(folder.path()).mkpath("log.txt/kept"));
    QVERIFY(!TestLogFile(*log->document()).write(folder.filePath("log.txt")).isEmpty());
    QVERIFY(QFileInfo(folder.filePath("log.txt/kept")).isDir());
}

void tst_TestLogFile::fullDisk_data()
{
    QTest::addColumn<int>("size");
    QTest::newRow("much") << 100000;
    QTest::newRow("little") << 10000; // which is written at the end
}

void tst_TestLogFile::fullDisk()
{
    QFETCH(int, size);
    SmallDisk disk;
    const QString path = disk.filePath("log.csv");
    writeOld(path);
    append(QString(size, 'a'), passColor);
    const TestLogFile file(*log->document());
    QVERIFY(disk.limit(size / 2));
    const QString problem = file.write(path);
    QVERIFY(disk.unlimit());
    QVERIFY(!problem.isEmpty());
    QCOMPARE(read(path), QByteArray("the old one"));
    QCOMPARE(QDir(disk.path()).entryList(QDir::Files), QStringList("log.csv"));
    QCOMPARE(file.write(path), QString()); // once there is room
    QCOMPARE(read(path), file.contents(Format::Csv));
}

QTEST_MAIN(tst_TestLogFile)
#include "tst_TestLogFile.moc"

#include "PostekPrinter.h"

#include "LoadedLibrary.h"
#include "LogCatcher.h"
#include "PostekLibrary.h"
#include "PrintSpooler.h"
#include "SettingsFile.h"

#include <QDir>
#include <QImage>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QtTest>

// Prints through the library of a simulated label printer, which lies beside the test program.
class tst_PostekLabels : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();
    void cleanupTestCase();
    void printed_data();
    void printed();
    void snIsUnchanged();
    void failures_data();
    void failures();
    void missingEntryPoint_data() { failures_data(); }
    void missingEntryPoint();
    void manyLabels();
};

namespace {
QString inFolder(const QString &name)
{
    return QCoreApplication::applicationDirPath() + '/' + name;
}

QString libraryFile()
{
    return inFolder(QFileInfo(QStringLiteral(WINPSK_LIBRARY)).fileName());
}

void writeScenario(const QByteArray &json)
{
    QFile file(inFolder("label-printer.json"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(json);
}

QVector<QJsonObject> calls()
{
    QVector<QJsonObject> found;
    QFile file(inFolder("labels/calls.jsonl"));
    if (file.open(QIODevice::ReadOnly)) {
        while (!file.atEnd())
            found.append(QJsonDocument::fromJson(file.readLine()).object());
    }
    return found;
}

QStringList callNames()
{
    QStringList names;
    for (const QJsonObject &call : calls())
        names.append(call["call"].toString());
    return names;
}

// Numbers and texts of the call with this index.
QVariantList argumentsOf(int index)
{
    return calls().value(index)["arguments"].toArray().toVariantList();
}

QStringList pictures()
{
    return QDir(inFolder("labels")).entryList({"*.png"}, QDir::Files, QDir::Name);
}

bool isLoaded()
{
    return loadedLibrary(libraryFile());
}

bool print(const QString &code = "KVMR2G0001")
{
    const LogCatcher log;
    QString sn = "AB-00041";
    return PostekPrinter::printMR2XQRCode(code, "MR2X", sn);
}

// Whose libraries lack one entry point.
class LackingSystem : public SharedLibrary
{
public:
    explicit LackingSystem(const QByteArray &lacking) : lacking(lacking) { }

    Handle load(const char *name) override { return system().load(name); }
    Symbol symbol(Handle library, const char *name) override
    {
        return lacking == name ? nullptr : system().symbol(library, name);
    }
    void free(Handle library) override { system().free(library); }

private:
    const QByteArray lacking;
};

const QStringList wholePrint = {"OpenPort", "PTK_ClearBuffer", "PTK_SetLabelHeight",
    "PTK_SetLabelWidth", "PTK_SetDarkness", "PTK_SetPrintSpeed", "PTK_SetDirection",
    "PTK_DrawTextTrueTypeW", "PTK_DrawBar2D_QR", "PTK_DrawTextTrueTypeW", "PTK_DrawTextTrueTypeW",
    "PTK_PrintLabel", "ClosePort"};
}

void tst_PostekLabels::initTestCase()
{
    QFile::remove(libraryFile());
    QVERIFY(QFile::copy(QStringLiteral(WINPSK_LIBRARY), libraryFile()));
}

void tst_PostekLabels::init()
{
    SettingsFile().write({{"printer name", "POSTEK"}});
}

void tst_PostekLabels::cleanup()
{
    SettingsFile().remove();
    QFile::remove(inFolder("label-printer.json"));
    QDir(inFolder("labels")).removeRecursively();
}

void tst_PostekLabels::cleanupTestCase()
{
    QVERIFY(QFile::remove(libraryFile()));
}

void tst_PostekLabels::printed_data()
{
    QTest::addColumn<QString>("printerName");
    QTest::addColumn<int>("side");
    QTest::addColumn<QVariantList>("model");
    QTest::addColumn<QVariantList>("qr");

    QTest::newRow("plain") << "POSTEK" << 529
                           << QVariantList{267, 172, 25, 0, "Arial", 1, 500, 0, 0, 0, "ModelStr",
                                  "MR2X"}
                           << QVariantList{71, 211, 1, 2, 0, 8, 2, 1, 8, "KVMR2G0001"};
    QTest::newRow("fine") << "POSTEK G6000" << 1059
                          << QVariantList{534, 345, 50, 0, "Arial", 1, 500, 0, 0, 0, "ModelStr",
                                 "MR2X"}
                          << QVariantList{143, 423, 1, 2, 0, 8, 2, 1, 8, "KVMR2G0001"};
}

void tst_PostekLabels::printed()
{
    QFETCH(QString, printerName);
    QFETCH(int, side);
    SettingsFile().write({{"printer name", printerName}});
    QVERIFY(!isLoaded());
    QVERIFY(print());
    QVERIFY(!isLoaded());

    QCOMPARE(callNames(), wholePrint);
    for (const QJsonObject &call : calls())
        QCOMPARE(call["result"].toInt(-1), 0);
    QCOMPARE(argumentsOf(0), QVariantList({printerName}));
    QTEST(argumentsOf(7), "model");
    QTEST(argumentsOf(8), "qr");

    QCOMPARE(pictures().size(), 1);
    const QImage label(inFolder("labels/" + pictures().value(0)));
    QCOMPARE(label.size(), QSize(side, side));
    QVERIFY(QImage(label.size(), label.format()) != label);
    QVERIFY(label.convertToFormat(QImage::Format_RGB32).pixelColor(0, 0) == Qt::white);
}

void tst_PostekLabels::snIsUnchanged()
{
    const LogCatcher log;
    QString sn = "AB-00041";
    QVERIFY(PostekPrinter::printMR2XQRCode("KVMR2G0001", "MR2X", sn));
    QCOMPARE(argumentsOf(10).value(11), QVariant("AB-00041"));
    QCOMPARE(sn, QString("AB-00041"));
}

void tst_PostekLabels::failures_data()
{
    QTest::addColumn<QString>("command");
    QTest::addColumn<bool>("result");
    QTest::addColumn<int>("given"); // calls of the whole print
    QTest::addColumn<int>("labels");

    QTest::newRow("port") << "OpenPort" << false << 1 << 0;
    QTest::newRow("first of the set-up") << "PTK_ClearBuffer" << false << 2 << 0;
    QTest::newRow("last of the set-up") << "PTK_SetDirection" << false << 7 << 0;
    QTest::newRow("QR code") << "PTK_DrawBar2D_QR" << true << 13 << 1;
    QTest::newRow("printing") << "PTK_PrintLabel" << true << 13 << 0;
    QTest::newRow("closing") << "ClosePort" << true << 13 << 1;
}

void tst_PostekLabels::failures()
{
    QFETCH(QString, command);
    QFETCH(int, given);
    QFETCH(int, labels);
    writeScenario("{\"fail\": {\"" + command.toUtf8() + "\": 5}}");
    QTEST(print(), "result");
    QCOMPARE(callNames(), wholePrint.mid(0, given));
    QCOMPARE(pictures().size(), labels);
    const bool left = isLoaded();
    QCOMPARE(left, given < wholePrint.size()); // a failed set-up leaves the library loaded

    writeScenario("{}"); // and the next print comes to its end all the same
    QVERIFY(print());
    QCOMPARE(pictures().size(), labels + 1);
    QCOMPARE(isLoaded(), left);
    if (left)
        SharedLibrary::system().free(loadedLibrary(libraryFile())); // the reference that was left
    QVERIFY(!isLoaded());
}

// A command that the library lacks fails like one that the printer refuses.
void tst_PostekLabels::missingEntryPoint()
{
    QFETCH(QString, command);
    QFETCH(int, given);
    const QByteArray name = command.toLatin1();
    LackingSystem libraries(name);
    WinpskLibrary library(libraries);
    const LogCatcher log;
    const bool printed = PostekPrinter::printMR2XQRCodeBy(
        library, PrintSpooler::system(), "KVMR2G0001", "MR2X", "AB-00041");
    QTEST(printed, "result");
    QCOMPARE(log.count("The printer's library lacks " + command), 1);
    QStringList expected = wholePrint.mid(0, given);
    expected.removeAll(command);
    QCOMPARE(callNames(), expected);
    QTEST(pictures().size(), "labels");
    QCOMPARE(isLoaded(), given < wholePrint.size());
    library.unload();
    QVERIFY(!isLoaded());
}

// Each with a library loaded and unloaded.
void tst_PostekLabels::manyLabels()
{
    for (int i = 1; i <= 25; ++i) {
        QVERIFY(print(QString("KVNR2G%1").arg(i, 4, 10, QChar('0'))));
        QVERIFY(!isLoaded());
    }
    QCOMPARE(pictures().size(), 25);
    QCOMPARE(argumentsOf(25 * wholePrint.size() - 5).value(9), QVariant("KVNR2G0025"));
}

QTEST_MAIN(tst_PostekLabels)
#include "tst_PostekLabels.moc"

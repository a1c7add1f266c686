#include "PostekPrinter.h"

#include "LogCatcher.h"
#include "ModalDriver.h"
#include "PostekFakes.h"
#include "SettingsFile.h"
#include "ZRConfigure.h"
#include "ZRPrinterSettingsDialog.h"

#include <QLineEdit>
#include <QtTest>

// No library of a printer lies beside this test program.
class tst_PostekPrinter : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void label_data();
    void label();
    void g6000HasTwiceTheDots();
    void unusableDotSize_data();
    void unusableDotSize();
    void zeroResolution();
    void oddMargins_data();
    void oddMargins();
    void texts();
    void failedLoad();
    void missingLibrary();
    void failedOpenPort_data();
    void failedOpenPort();
    void failedSetUp_data();
    void failedSetUp();
    void failedDrawing_data();
    void failedDrawing();
    void queueStateDoesNotStop_data();
    void queueStateDoesNotStop();
    void forcedSettings_data();
    void forcedSettings();
    void withoutSettings();
    void postekRoute_data();
    void postekRoute();
    void cancelledDialog_data();
    void cancelledDialog();
    void acceptedDialogServesTheNextPrint();
    void dialogShowsForcedSettings();
    void settingsShowTheLabelAfterwards();
    void debugLines();
    void debugLinesOfFailures();

private:
    bool print();

    SettingsFile settings;
    RecordingLibrary library;
    RecordingSpooler spooler;
};

namespace {
using Numbers = QList<int>;

// What goes to the printer between its opening and its closing: the label's height, its gap, its
// width, then x, y and height of the model, x and y of the QR code, x, y and height of the code's
// text and of the serial.
QStringList commands(const Numbers &n)
{
    const char *text = "PTK_DrawTextTrueTypeW(%d, %d, %d, 0, %s, 0, 0, 0, %s)";
    const auto drawText = [text](int x, int y, int height, const char *style, const char *what) {
        return QString::asprintf(text, x, y, height, style, what);
    };
    return {"PTK_ClearBuffer()", QString::asprintf("PTK_SetLabelHeight(%d, %d, 0, 0)", n[0], n[1]),
        QString::asprintf("PTK_SetLabelWidth(%d)", n[2]), "PTK_SetDarkness(14)",
        "PTK_SetPrintSpeed(5)", "PTK_SetDirection(66)",
        drawText(n[3], n[4], n[5], "Arial, 1, 500", "ModelStr, MR2X"),
        QString::asprintf("PTK_DrawBar2D_QR(%d, %d, 1, 2, 0, 8, 2, 1, 8, KVMR2G0001)", n[6], n[7]),
        drawText(n[8], n[9], n[10], "Arial Narrow, 5, 700", "P2PIDStr, KVMR2G0001"),
        drawText(n[11], n[12], n[13], "Arial, 1, 600", "SNStr, AB-00041"), "PTK_PrintLabel(1, 1)"};
}

QStringList wholePrint(const QString &printerName, const Numbers &numbers)
{
    return QStringList({"load()", "OpenPort(" + printerName + ')'}) + commands(numbers)
        + QStringList({"ClosePort()", "unload()"});
}

// What the commands have of them, in the same order.
Numbers lengthsOf(const QStringList &calls)
{
    const QMap<QString, int> counts = {{"PTK_SetLabelHeight", 2}, {"PTK_SetLabelWidth", 1},
        {"PTK_DrawTextTrueTypeW", 3}, {"PTK_DrawBar2D_QR", 2}};
    Numbers lengths;
    for (const QString &call : calls) {
        const QStringList arguments = call.section('(', 1).remove(')').split(", ");
        for (int i = 0; i < counts.value(call.section('(', 0, 0)); ++i)
            lengths.append(arguments[i].toInt());
    }
    return lengths;
}

const Numbers plainLabel = {529, 2, 529, 267, 172, 25, 71, 211, 123, 327, 15, 188, 409, 23};
const Numbers fineLabel = {1059, 4, 1059, 534, 345, 50, 143, 423, 248, 655, 31, 376, 818, 46};
const QStringList setUpCommands = {"PTK_ClearBuffer", "PTK_SetLabelHeight", "PTK_SetLabelWidth",
    "PTK_SetDarkness", "PTK_SetPrintSpeed", "PTK_SetDirection"};
}

bool tst_PostekPrinter::print()
{
    return PostekPrinter::printMR2XQRCodeBy(library, spooler, "KVMR2G0001", "MR2X", "AB-00041");
}

void tst_PostekPrinter::init()
{
    settings.write({{"printer name", "POSTEK"}});
    library = {};
    spooler = {};
}

void tst_PostekPrinter::cleanup()
{
    settings.remove();
}

void tst_PostekPrinter::label_data()
{
    QTest::addColumn<QString>("printerName");
    QTest::addColumn<int>("resolution"); // 0: the spooler doesn't know the queue
    QTest::addColumn<double>("left");
    QTest::addColumn<double>("top");
    QTest::addColumn<Numbers>("numbers");

    const QString plain = "POSTEK";
    const QString fine = "POSTEK G6000";
    QTest::newRow("0.85") << plain << 0 << 0.0 << 0.0 << plainLabel;
    QTest::newRow("0.85, left 1") << plain << 0 << 1.0 << 0.0
                                  << Numbers{529, 2, 529, 279, 172, 25, 83, 211, 147, 327, 15, 200,
                                         409, 23};
    QTest::newRow("0.85, left 1, top 2")
        << plain << 0 << 1.0 << 2.0
        << Numbers{529, 2, 529, 279, 196, 25, 83, 235, 147, 351, 15, 200, 433, 23};
    QTest::newRow("0.85, left 3, top 1")
        << plain << 0 << 3.0 << 1.0
        << Numbers{529, 2, 529, 302, 184, 25, 106, 223, 193, 339, 15, 223, 421, 23};
    QTest::newRow("0.85, left 2.5, top -1.5")
        << plain << 0 << 2.5 << -1.5
        << Numbers{529, 2, 529, 296, 155, 25, 100, 194, 181, 310, 15, 217, 392, 23};
    QTest::newRow("0.425") << fine << 0 << 0.0 << 0.0 << fineLabel;
    QTest::newRow("0.425, left 1, top 2")
        << fine << 0 << 1.0 << 2.0
        << Numbers{1059, 4, 1059, 558, 392, 50, 167, 470, 296, 702, 31, 400, 865, 46};
    QTest::newRow("0.425, left 3, top 1")
        << fine << 0 << 3.0 << 1.0
        << Numbers{1059, 4, 1059, 605, 369, 50, 214, 447, 390, 679, 31, 447, 842, 46};
    QTest::newRow("300 dpi") << plain << 300 << 0.0 << 0.0
                             << Numbers{
                                    531, 2, 531, 268, 173, 25, 72, 212, 125, 328, 15, 188, 411, 23};
    QTest::newRow("300 dpi, left 3, top 1")
        << plain << 300 << 3.0 << 1.0
        << Numbers{531, 2, 531, 303, 185, 25, 107, 224, 195, 340, 15, 223, 423, 23};
    QTest::newRow("203 dpi comes before the name")
        << fine << 203 << 1.0 << 2.0
        << Numbers{360, 1, 360, 189, 133, 17, 56, 159, 99, 237, 10, 135, 294, 15};
    QTest::newRow("G6000 in lower case") << "POSTEK g6000" << 0 << 0.0 << 0.0 << plainLabel;
}

void tst_PostekPrinter::label()
{
    QFETCH(QString, printerName);
    QFETCH(int, resolution);
    QFETCH(double, left);
    QFETCH(double, top);
    QFETCH(Numbers, numbers);
    settings.write({{"printer name", printerName}, {"label padding left", left},
        {"label padding top", top}, {"label padding right", 7.0}, {"label padding bottom", 8.0}});
    spooler.found = resolution != 0;
    spooler.queue.yResolution = short(resolution);

    QVERIFY(print());
    QCOMPARE(library.calls, wholePrint(printerName, numbers));
}

void tst_PostekPrinter::g6000HasTwiceTheDots()
{
    QVERIFY(print());
    const Numbers plain = lengthsOf(library.calls);
    settings.write({{"printer name", "POSTEK G6000"}});
    library = {};
    QVERIFY(print());
    const Numbers fine = lengthsOf(library.calls);
    QCOMPARE(plain.size(), plainLabel.size());
    QCOMPARE(fine.size(), plain.size());
    for (int i = 0; i < plain.size(); ++i)
        QVERIFY(qAbs(fine[i] - 2 * plain[i]) <= 3); // but for what rounding takes
}

void tst_PostekPrinter::unusableDotSize_data()
{
    QTest::addColumn<QString>("printerName");
    QTest::addColumn<Numbers>("numbers");

    QTest::newRow("plain") << "POSTEK" << plainLabel;
    QTest::newRow("fine") << "POSTEK G6000" << fineLabel;
}

// A device mode that names a quality has a negative number.
void tst_PostekPrinter::unusableDotSize()
{
    QFETCH(QString, printerName);
    QFETCH(Numbers, numbers);
    settings.write({{"printer name", printerName}});
    spooler.found = true;
    spooler.queue.yResolution = short(-4);

    QVERIFY(print());
    QCOMPARE(library.calls, wholePrint(printerName, numbers));
}

// Dots without an end: nothing has a length, and the print still comes to its end.
void tst_PostekPrinter::zeroResolution()
{
    spooler.found = true;
    spooler.queue.yResolution = short(0);

    QVERIFY(print());
    QCOMPARE(library.calls, wholePrint("POSTEK", Numbers::fromVector(QVector<int>(14, 0))));
}

void tst_PostekPrinter::oddMargins_data()
{
    QTest::addColumn<QVariant>("left");
    QTest::addColumn<int>("dots");

    const int most = 100000000;
    QTest::newRow("no number") << QVariant("left") << 0;
    QTest::newRow("nan") << QVariant("nan") << 0;
    QTest::newRow("infinite") << QVariant("inf") << most;
    QTest::newRow("huge") << QVariant(1e300) << most;
    QTest::newRow("hugely negative") << QVariant(-1e300) << -most;
    QTest::newRow("rounds to 12") << QVariant(1.0) << 12;
    QTest::newRow("just below half") << QVariant(0.042) << 0;
    QTest::newRow("just above half") << QVariant(0.043) << 1;
    QTest::newRow("cut towards zero") << QVariant(-1.0) << -11;
}

void tst_PostekPrinter::oddMargins()
{
    QFETCH(QVariant, left);
    QFETCH(int, dots);
    settings.write({{"printer name", "POSTEK"}, {"label padding left", left}});

    Numbers numbers = plainLabel;
    for (int x : {3, 6, 11})
        numbers[x] += dots;
    numbers[8] += 2 * dots; // the code's text has the left margin twice
    QVERIFY(print());
    QCOMPARE(library.calls, wholePrint("POSTEK", numbers));
}

void tst_PostekPrinter::texts()
{
    const QString beijing = QString::fromUtf8("\xe4\xba\xac %d %s");
    settings.write({{"printer name", "POSTEK " + beijing}});
    QVERIFY(PostekPrinter::printMR2XQRCodeBy(
        library, spooler, beijing + " code", beijing + " model", ""));
    QCOMPARE(library.calls.at(1), "OpenPort(POSTEK " + beijing + ")");
    QVERIFY(library.calls.at(8).endsWith(", ModelStr, " + beijing + " model)"));
    QVERIFY(library.calls.at(9).endsWith(", 8, " + beijing + " code)"));
    QVERIFY(library.calls.at(10).endsWith(", P2PIDStr, " + beijing + " code)"));
    QVERIFY(library.calls.at(11).endsWith(", SNStr, )"));
}

void tst_PostekPrinter::failedLoad()
{
    const LogCatcher log;
    const QVariantMap before = settings.read();
    library.results["load"] = 1;
    QVERIFY(!print());
    QCOMPARE(library.calls, QStringList({"load()", "unload()"}));
    QCOMPARE(log.lines(), QStringList({"init postek failure"}));
    QCOMPARE(spooler.calls, QStringList());
    QCOMPARE(settings.read(), before);
}

void tst_PostekPrinter::missingLibrary()
{
    const LogCatcher log;
    const QVariantMap before = settings.read();
    QString sn = "AB-00041";
    QVERIFY(!PostekPrinter::printMR2XQRCode("KVMR2G0001", "MR2X", sn));
    QCOMPARE(log.lines(), QStringList({"init postek failure"}));
    QCOMPARE(settings.read(), before);
    QCOMPARE(sn, QString("AB-00041"));
}

void tst_PostekPrinter::failedOpenPort_data()
{
    QTest::addColumn<int>("result");

    QTest::newRow("positive") << 1;
    QTest::newRow("negative") << -1;
}

void tst_PostekPrinter::failedOpenPort()
{
    QFETCH(int, result);
    library.results["OpenPort"] = result;
    QVERIFY(!print());
    QCOMPARE(library.calls, QStringList({"load()", "OpenPort(POSTEK)"})); // left loaded
}

void tst_PostekPrinter::failedSetUp_data()
{
    QTest::addColumn<QString>("command");
    QTest::addColumn<int>("result");
    QTest::addColumn<int>("given");

    for (const QString &command : setUpCommands) {
        const int given = setUpCommands.indexOf(command) + 1;
        QTest::newRow(qPrintable(command)) << command << 1 << given;
        QTest::newRow(qPrintable(command + ", negative")) << command << -1 << given;
    }
}

// Nothing follows: neither a drawing nor the closing of the port nor an unloading.
void tst_PostekPrinter::failedSetUp()
{
    QFETCH(QString, command);
    QFETCH(int, result);
    QFETCH(int, given);
    library.results[command] = result;
    QVERIFY(!print());
    QCOMPARE(library.calls,
        QStringList({"load()", "OpenPort(POSTEK)"}) + commands(plainLabel).mid(0, given));

    library.results.clear(); // and the next print is as any
    library.calls.clear();
    QVERIFY(print());
    QCOMPARE(library.calls, wholePrint("POSTEK", plainLabel));
}

void tst_PostekPrinter::failedDrawing_data()
{
    QTest::addColumn<QString>("command");

    for (const char *command :
        {"PTK_DrawTextTrueTypeW", "PTK_DrawBar2D_QR", "PTK_PrintLabel", "ClosePort"})
        QTest::newRow(command) << command;
}

void tst_PostekPrinter::failedDrawing()
{
    QFETCH(QString, command);
    for (int result : {-1, 1}) {
        library.calls.clear();
        library.results[command] = result;
        QVERIFY(print());
        QCOMPARE(library.calls, wholePrint("POSTEK", plainLabel));
    }
}

void tst_PostekPrinter::queueStateDoesNotStop_data()
{
    QTest::addColumn<bool>("readable");
    QTest::addColumn<bool>("offline");
    QTest::addColumn<bool>("network");

    QTest::newRow("ready") << true << false << false;
    QTest::newRow("offline") << true << true << false;
    QTest::newRow("network") << true << false << true;
    QTest::newRow("offline network") << true << true << true;
    QTest::newRow("unreadable") << false << false << false;
}

void tst_PostekPrinter::queueStateDoesNotStop()
{
    QFETCH(bool, readable);
    QFETCH(bool, offline);
    QFETCH(bool, network);
    spooler.found = true;
    spooler.readable = readable;
    spooler.queue.offline = offline;
    spooler.queue.network = network;
    QVERIFY(print());
    QCOMPARE(library.calls, wholePrint("POSTEK", plainLabel));
    QCOMPARE(spooler.calls, QStringList({"open", "read", "close"}));
}

void tst_PostekPrinter::forcedSettings_data()
{
    QTest::addColumn<QString>("failing");
    QTest::addColumn<bool>("printed");

    QTest::newRow("printed") << "" << true;
    QTest::newRow("port not opened") << "OpenPort" << false;
    QTest::newRow("set-up failed") << "PTK_ClearBuffer" << false;
}

void tst_PostekPrinter::forcedSettings()
{
    QFETCH(QString, failing);
    settings.write({{"printer name", "POSTEK"}, {"label width", 30.0}, {"label height", 20.0},
        {"label column", 3}, {"label padding", 4.0}, {"label padding left", 1.25},
        {"label padding top", 2.5}, {"label padding right", 3.75}, {"label padding bottom", 5.5}});
    library.results[failing] = 1;
    QTEST(print(), "printed");

    double width, height, left, top, right, bottom, gap;
    int columns;
    ZRConfigure().labelSettings(width, height, columns, left, top, right, bottom, gap);
    QCOMPARE(width, 45.0);
    QCOMPARE(height, 45.0);
    QCOMPARE(columns, 1);
    QCOMPARE(gap, 2.0);
    QCOMPARE(left, 1.25);
    QCOMPARE(top, 2.5);
    QCOMPARE(right, 3.75);
    QCOMPARE(bottom, 5.5);
    QCOMPARE(ZRConfigure().printerName(), QString("POSTEK"));
    QCOMPARE(settings.read().value("label width").toDouble(), 45.0); // in the file too
}

void tst_PostekPrinter::withoutSettings()
{
    QVERIFY(print());
    const QVariantMap values = settings.read();
    QCOMPARE(values.value("label height").toDouble(), 45.0);
    QCOMPARE(values.value("label column").toInt(), 1);
    QCOMPARE(values.value("label padding left").toDouble(), 0.0);
}

void tst_PostekPrinter::postekRoute_data()
{
    QTest::addColumn<QString>("printerName");

    for (const char *name : {"POSTEK", "POSTEK G6000", "Label POSTEK", "xPOSTEKx"})
        QTest::newRow(name) << name;
}

// No dialog comes.
void tst_PostekPrinter::postekRoute()
{
    QFETCH(QString, printerName);
    settings.write({{"printer name", printerName}});
    QVERIFY(print());
    QCOMPARE(library.calls.at(1), "OpenPort(" + printerName + ')');
}

void tst_PostekPrinter::cancelledDialog_data()
{
    QTest::addColumn<QString>("printerName");

    for (const char *name : {"", "postek", "Postek G6000", "POSTE K", "Other"})
        QTest::newRow(*name ? name : "empty") << name;
}

void tst_PostekPrinter::cancelledDialog()
{
    QFETCH(QString, printerName);
    settings.write({{"printer name", printerName}});
    const ModalDriver<ZRPrinterSettingsDialog> driver(
        [](ZRPrinterSettingsDialog &dialog) { dialog.reject(); });
    QVERIFY(!print());
    QCOMPARE(library.calls, QStringList({"load()"})); // left loaded
    QCOMPARE(spooler.calls, QStringList());
    QCOMPARE(settings.read().value("label width").toDouble(), 45.0);
}

// The print at hand goes on with the name that it began with.
void tst_PostekPrinter::acceptedDialogServesTheNextPrint()
{
    settings.write({{"printer name", "postek G6000"}, {"label padding left", 1.0}});
    {
        const ModalDriver<ZRPrinterSettingsDialog> driver([](ZRPrinterSettingsDialog &dialog) {
            QVERIFY(!dialog.parent());
            ZRConfigure configure;
            configure.setPrinterName("POSTEK");
            configure.saveLabelSettings(30.0, 20.0, 2, 3.0, 1.0, 0.0, 0.0, 5.0);
            dialog.accept();
        });
        QVERIFY(print());
    }
    QCOMPARE(library.calls,
        wholePrint(
            "postek G6000", {1059, 4, 1059, 558, 345, 50, 167, 423, 296, 655, 31, 400, 818, 46}));
    QCOMPARE(ZRConfigure().printerName(), QString("POSTEK"));
    QCOMPARE(settings.read().value("label width").toDouble(), 30.0);

    library.calls.clear();
    QVERIFY(print());
    QCOMPARE(library.calls,
        wholePrint("POSTEK", {529, 2, 529, 302, 184, 25, 106, 223, 193, 339, 15, 223, 421, 23}));
}

// They are saved before the dialog opens.
void tst_PostekPrinter::dialogShowsForcedSettings()
{
    settings.write({{"label width", 30.0}, {"label height", 20.0}, {"label column", 3}});
    QStringList shown;
    const ModalDriver<ZRPrinterSettingsDialog> driver([&shown](ZRPrinterSettingsDialog &dialog) {
        for (const QLineEdit *edit : dialog.findChildren<QLineEdit *>())
            shown.append(edit->text());
        dialog.reject();
    });
    QVERIFY(!print());
    QCOMPARE(shown, QStringList({"45", "45", "1", "2", "0", "0", "0", "0"}));
}

void tst_PostekPrinter::settingsShowTheLabelAfterwards()
{
    settings.write({{"printer name", "POSTEK"}, {"label width", 30.0}, {"label height", 20.0}});
    QVERIFY(print());
    const ZRPrinterSettingsDialog dialog(nullptr);
    for (const char *name : {"widthEdit", "heightEdit"})
        QCOMPARE(dialog.findChild<QLineEdit *>(name)->text(), QString("45"));
}

void tst_PostekPrinter::debugLines()
{
    const LogCatcher log;
    QVERIFY(PostekPrinter::printMR2XQRCodeBy(library, spooler,
        QString::fromUtf8("c\xc3\xb6"
                          "de"),
        "model", "serial"));
    const QStringList lines = log.lines();
    QCOMPARE(lines.size(), 2);
    const QRegularExpression first(
        QString::fromUtf8("\\APostekPrinter::printMR2XQRCode \\d+ 0\\.850000 model serial c\xc3\xb6"
                          "de\n\\z"));
    const QRegularExpression second(
        "\\APostekPrinter::printMR2XQRCode \\d+ rect 1 = \\(0,0,528,528\\)\n\\z");
    QVERIFY2(first.match(lines.at(0)).hasMatch(), qPrintable(lines.at(0)));
    QVERIFY2(second.match(lines.at(1)).hasMatch(), qPrintable(lines.at(1)));
    // The lines of the source, one behind the other.
    QVERIFY(lines.at(0).section(' ', 1, 1).toInt() < lines.at(1).section(' ', 1, 1).toInt());
}

void tst_PostekPrinter::debugLinesOfFailures()
{
    LogCatcher log;
    library.results["OpenPort"] = 1;
    QVERIFY(!print());
    QCOMPARE(log.lines(), QStringList());

    library.results = {{"PTK_SetDirection", 1}};
    QVERIFY(!print());
    QCOMPARE(log.lines().size(), 1); // the one before the set-up
}

QTEST_MAIN(tst_PostekPrinter)
#include "tst_PostekPrinter.moc"

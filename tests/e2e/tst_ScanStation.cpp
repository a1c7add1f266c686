#include "HostProcess.h"
#include "MediaButton.h"
#include "OpenGLDriver.h"
#include "ProgramFolder.h"
#include "SettingsFile.h"
#include "WindowHeaderWidget.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QScopedPointer>
#include <QtTest>

// The scan station of the program itself, beside which lies the library of a simulated label
// printer, in a folder with a Chinese name. The scanner is the keyboard, as fast as it can be.
class tst_ScanStation : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void hundredCodes_data();
    void hundredCodes();
    void printsOnlyWhatItShould();
    void failedLabelKeepsItsSerial();
    void withoutThePrintersLibrary();
    void printerSettings();

private:
    void openDialog(MediaButton *WindowHeaderWidget::*button);
    // Closed by the window manager, as the window's close control has it do.
    void closeDialog();
    void fillModelAndSerial();
    void configurePrinter(const QByteArray &scenario);

    QScopedPointer<ProgramFolder> program;
};

namespace {

// What went to the printer for one label.
struct Label {
    QString model, code, qrCode, sn;
};

QVector<Label> labelsOf(const ProgramFolder &program)
{
    QVector<Label> labels;
    QFile file(program.filePath("labels/calls.jsonl"));
    if (!file.open(QIODevice::ReadOnly))
        return labels;
    Label label;
    while (!file.atEnd()) {
        const QJsonObject call = QJsonDocument::fromJson(file.readLine()).object();
        const QString name = call["call"].toString();
        const QJsonArray arguments = call["arguments"].toArray();
        if (name == "PTK_ClearBuffer")
            label = Label();
        else if (name == "PTK_DrawBar2D_QR")
            label.qrCode = arguments.last().toString();
        else if (name == "PTK_PrintLabel")
            labels << label;
        else if (name == "PTK_DrawTextTrueTypeW") {
            const QMap<QString, QString *> fields = {
                {"ModelStr", &label.model}, {"P2PIDStr", &label.code}, {"SNStr", &label.sn}};
            *fields[arguments[10].toString()] = arguments[11].toString();
        }
    }
    return labels;
}

QStringList picturesOf(const ProgramFolder &program)
{
    return QDir(program.filePath("labels")).entryList({"label-*.png"}, QDir::Files, QDir::Name);
}

// All that the QR codes of a picture say.
QString decoded(const QString &path)
{
    const QStringList arguments = {"--quiet", "--raw", "--nodbus", HostProcess::path(path)};
    return HostProcess::output("zbarimg", arguments).trimmed();
}

// One scan after the other, without a pause.
bool scan(const QStringList &codes, const QString &end = "Return")
{
    QStringList arguments;
    for (const QString &code : codes)
        arguments << QStringList{"type", "--delay", "0", "--args", "1", code, "key", end};
    return Hands::xdotool(arguments);
}

// An operator clears the field.
bool scanAnew(const QString &code, const QString &end = "Return")
{
    return Hands::xdotool({"key", "ctrl+a", "key", "Delete"}) && scan({code}, end);
}

const char firstSerial[] = "LN-00096";

}

void tst_ScanStation::init()
{
    program.reset(new ProgramFolder("VorlynIPTool", QString::fromUtf8("用户/扫码 1")));
    QVERIFY(program->isValid());
    // Nothing here needs a graphics driver, and one that was unloaded looks like a leak.
    program->process.setProcessEnvironment(environmentWithoutOpenGL());
    const QFileInfo library(QStringLiteral(WINPSK_LIBRARY));
    QVERIFY(QFile::copy(library.filePath(), program->filePath(library.fileName())));
    SettingsFile(program->path())
        .write({{"langage", "en"}, {"search seconds", ProgramFolder::searchSeconds},
            {"printer name", "POSTEK G6000"}, {"label padding left", 1.5}});
}

void tst_ScanStation::cleanup()
{
    program.reset();
}

void tst_ScanStation::configurePrinter(const QByteArray &scenario)
{
    QFile file(program->filePath("label-printer.json"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(scenario);
}

// The header lies in the window as it lies here.
void tst_ScanStation::openDialog(MediaButton *WindowHeaderWidget::*button)
{
    ZRLocalize::setLanguageFolder(program->filePath("language"));
    QVERIFY(ZRLocalize::loadLanguage("en"));
    const WindowHeaderWidget header(nullptr);
    const QPoint place = (header.*button)->geometry().center() + QPoint(2, 2);
    QVERIFY(Hands::clickAt(program->mainWindow(), place));
    QVERIFY(program->awaitWindows(2));
    QVERIFY(Hands::xdotool({"windowactivate", "--sync", program->windows().last()}));
}

void tst_ScanStation::closeDialog()
{
    QVERIFY(Hands::xdotool({"key", "alt+F4"}));
    QVERIFY(program->awaitWindows(1));
}

// The dialog starts at the scanner's field, and ends there; between the serial and it are the two
// margins.
void tst_ScanStation::fillModelAndSerial()
{
    const QStringList type = {"type", "--delay", "0", "--args", "1"};
    QVERIFY(Hands::xdotool({"key", "Tab"}));
    QVERIFY(Hands::xdotool(type + QStringList{"MR2G-100", "key", "Tab"}));
    QVERIFY(Hands::xdotool(type + QStringList{firstSerial, "key", "Tab", "Tab", "Tab"}));
}

void tst_ScanStation::hundredCodes_data()
{
    QTest::addColumn<QByteArray>("scenario");
    QTest::addColumn<int>("failing"); // code without a label, or -1
    QTest::newRow("all are printed") << QByteArray("{}") << -1;
    QTest::newRow("the 50th fails")
        << QByteArray(R"({"fail": {"PTK_SetDarkness": {"result": 5, "at": 50}}})") << 49;
}

// One label each, in order, and no serial is lost or printed twice, not even where a label fails.
void tst_ScanStation::hundredCodes()
{
    QFETCH(QByteArray, scenario);
    QFETCH(int, failing);
    configurePrinter(scenario);
    QVERIFY(program->start());
    openDialog(&WindowHeaderWidget::scanCodeButton);
    fillModelAndSerial();
    QStringList codes;
    for (int i = 0; i < 100; ++i)
        codes << QString::asprintf("KV%cR2G-%04d-x%d", i % 3 ? 'M' : 'N', i, i * 7919);
    QVERIFY(scan(codes));
    if (failing >= 0)
        codes.removeAt(failing);
    const int printed = codes.size();
    QTRY_COMPARE_WITH_TIMEOUT(labelsOf(*program).size(), printed, ProgramFolder::patience);
    closeDialog();
    QVERIFY(program->quit());

    const QVector<Label> labels = labelsOf(*program);
    QCOMPARE(labels.size(), printed);
    for (int i = 0; i < printed; ++i) {
        QCOMPARE(labels[i].model, QString("MR2G-100"));
        QCOMPARE(labels[i].code, codes[i]);
        QCOMPARE(labels[i].qrCode, codes[i]);
        QCOMPARE(labels[i].sn, QString::asprintf("LN-%05d", 96 + i));
    }
    QCOMPARE(picturesOf(*program).size(), printed);
    for (const int i : {0, 49, printed - 1}) {
        const QString picture =
            program->filePath(QString::asprintf("labels/label-%06d.png", i + 1));
        QCOMPARE(decoded(picture), codes[i]);
    }

    const QVariantMap stored = SettingsFile(program->path()).read();
    const QVariantMap expected = {{"label width", 45}, {"label height", 45}, {"label column", 1},
        {"label padding", 2}, {"label padding left", 1.5}, {"label padding top", 0},
        {"printer name", "POSTEK G6000"}};
    for (auto it = expected.begin(); it != expected.end(); ++it)
        QCOMPARE(stored[it.key()].toString(), it.value().toString());
}

// Each of these is followed by a code that prints, so that none is late.
void tst_ScanStation::printsOnlyWhatItShould()
{
    QVERIFY(program->start());
    openDialog(&WindowHeaderWidget::scanCodeButton);
    QVERIFY(scan({"KVMR2G0001"})); // right after opening, without a model
    fillModelAndSerial();
    int labels = 0;
    const auto nextLabel = [&](const QString &code) {
        QVERIFY(scanAnew(code));
        ++labels;
        QTRY_COMPARE_WITH_TIMEOUT(labelsOf(*program).size(), labels, ProgramFolder::patience);
        QCOMPARE(labelsOf(*program).last().code, code);
        QCOMPARE(labelsOf(*program).last().sn, QString::asprintf("LN-%05d", 95 + labels));
        QCOMPARE(program->windows().size(), 2);
    };
    nextLabel("KVMR2G0001");
    QVERIFY(scanAnew("6901234567892")); // a foreign barcode
    nextLabel("KVMR2G0002");
    QVERIFY(scanAnew("KVMR2G0003", "Linefeed")); // a scanner set to line feeds
    nextLabel("KVMR2G0004");
    QVERIFY(Hands::xdotool({"key", "Escape", "key", "Escape"}));
    nextLabel("KVMR2G0005");
    closeDialog();
    QVERIFY(program->quit());
    QCOMPARE(labelsOf(*program).size(), labels);
}

void tst_ScanStation::failedLabelKeepsItsSerial()
{
    QVERIFY(program->start());
    openDialog(&WindowHeaderWidget::scanCodeButton);
    fillModelAndSerial();
    QVERIFY(scan({"KVMR2G0001"}));
    QTRY_COMPARE_WITH_TIMEOUT(labelsOf(*program).size(), 1, ProgramFolder::patience);

    configurePrinter(R"({"fail": {"PTK_SetDarkness": 5}})");
    QVERIFY(scan({"KVMR2G0002", "KVMR2G0002"}));
    const auto refusals = [this] {
        QFile file(program->filePath("labels/calls.jsonl"));
        return file.open(QIODevice::ReadOnly) ? file.readAll().count("\"result\":5") : -1;
    };
    QTRY_COMPARE_WITH_TIMEOUT(refusals(), 2, ProgramFolder::patience);
    QCOMPARE(labelsOf(*program).size(), 1);
    QCOMPARE(picturesOf(*program).size(), 1);
    QCOMPARE(program->windows().size(), 2); // no message

    configurePrinter("{}");
    QVERIFY(scan({"KVMR2G0002"}));
    QTRY_COMPARE_WITH_TIMEOUT(labelsOf(*program).size(), 2, ProgramFolder::patience);
    QCOMPARE(labelsOf(*program).last().code, QString("KVMR2G0002"));
    QCOMPARE(labelsOf(*program).last().sn, QString("LN-00097"));
    closeDialog();
    QVERIFY(program->quit());
}

void tst_ScanStation::withoutThePrintersLibrary()
{
    QVERIFY(QFile::remove(program->filePath(QFileInfo(WINPSK_LIBRARY).fileName())));
    QVERIFY(program->start());
    openDialog(&WindowHeaderWidget::scanCodeButton);
    fillModelAndSerial();
    QVERIFY(scan({"KVMR2G0001", "KVMR2G0002"}));
    QTRY_COMPARE_WITH_TIMEOUT(
        program->log().filter("init postek failure").size(), 2, ProgramFolder::patience);
    QCOMPARE(program->windows().size(), 2);
    closeDialog();
    QVERIFY(program->quit());
    QVERIFY(labelsOf(*program).isEmpty());
}

void tst_ScanStation::printerSettings()
{
    QVERIFY(program->start());
    openDialog(&WindowHeaderWidget::printerButton);
    const QStringList type = {"key", "Tab", "type", "--delay", "0", "--args", "1"};
    QVERIFY(Hands::xdotool(type + QStringList{"0"}));
    QVERIFY(Hands::xdotool(type + QStringList{"60.5", "key", "Return"})); // no width: refused
    QVERIFY(Hands::xdotool({"key", "shift+Tab"}));
    QVERIFY(Hands::xdotool({"type", "--delay", "0", "--args", "1", "30", "key", "Return"}));
    QVERIFY(program->awaitWindows(1));
    QVERIFY(program->quit());
    const QVariantMap stored = SettingsFile(program->path()).read();
    QCOMPARE(stored["label width"].toDouble(), 30.0);
    QCOMPARE(stored["label height"].toDouble(), 60.5);
    QCOMPARE(stored["label padding left"].toDouble(), 1.5);
}

QTEST_MAIN(tst_ScanStation)
#include "tst_ScanStation.moc"

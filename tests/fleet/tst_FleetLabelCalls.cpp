#include "FleetLabelPrinter.h"
#include "LabelBench.h"

#include <QRegularExpression>

#include <climits>

// What the simulated label printer does with each call besides drawing: its journal, its settings,
// refusals and failures. Without a QGuiApplication, as a program without windows has it.

namespace {

constexpr int refused = FleetLabelPrinter::Refused;
constexpr int closed = FleetLabelPrinter::PortClosed;

using Call = std::function<int(FleetLabelPrinter &)>;

struct NamedCall {
    const char *name;
    Call call;
};

// Every call that goes through a port, with values that are taken.
const NamedCall commands[] = {
    {"ClosePort", [](FleetLabelPrinter &p) { return p.closePort(); }},
    {"PTK_ClearBuffer", [](FleetLabelPrinter &p) { return p.clearBuffer(); }},
    {"PTK_SetLabelHeight", [](FleetLabelPrinter &p) { return p.setLabelHeight(100, 4, 0, 0); }},
    {"PTK_SetLabelWidth", [](FleetLabelPrinter &p) { return p.setLabelWidth(100); }},
    {"PTK_SetDarkness", [](FleetLabelPrinter &p) { return p.setDarkness(14); }},
    {"PTK_SetPrintSpeed", [](FleetLabelPrinter &p) { return p.setPrintSpeed(5); }},
    {"PTK_SetDirection", [](FleetLabelPrinter &p) { return p.setDirection(66); }},
    {"PTK_DrawBar2D_QR",
        [](FleetLabelPrinter &p) { return p.drawQRCode(0, 0, 1, 2, 0, 4, 2, 1, 8, "x"); }},
    {"PTK_PrintLabel", [](FleetLabelPrinter &p) { return p.printLabel(1, 1); }},
};

int drawText(FleetLabelPrinter &printer, const char *font, const char *text)
{
    return printer.drawText(1, 2, 30, 0, font, 1, 500, 0, 0, 0, "Name", text);
}

}

Q_DECLARE_METATYPE(Call)

class tst_FleetLabelCalls : public QObject
{
    Q_OBJECT

private slots:
    void lines();
    void time();
    void nullTextsInLines();
    void recordedCalls();
    void portClosed_data();
    void portClosed();
    void portTakenOver();
    void refusedValues_data();
    void refusedValues();
    void takenValues_data();
    void takenValues();
    void anyValues_data();
    void anyValues();
    void noTextWithoutApplication();
    void largestLabel();

    void folder_data();
    void folder();
    void unwritable();
    void ports();
    void failures_data();
    void failures();
    void failedCallsDoNothing();
    void failureAt();
    void failureAtOverPrinters();
    void failureAtByName();
    void damagedCounts_data();
    void damagedCounts();
    void failureOfRecordedCall();
    void changedWhileRunning();
    void wrongFile_data();
    void wrongFile();
};

void tst_FleetLabelCalls::lines()
{
    const LabelBench bench;
    FleetLabelPrinter printer(bench.home());
    printer.openPort("POSTEK G6000");
    printer.setLabelHeight(100, 4, 0, 0);
    printer.setLabelWidth(90);
    printer.drawQRCode(5, 6, 1, 2, 0, 4, 2, 1, 8, "\xc3\xa4");
    printer.printLabel(1, 2);
    printer.setDarkness(21);
    printer.closePort();

    const QVector<QJsonObject> expected{
        {{"call", "OpenPort"}, {"arguments", QJsonArray{"POSTEK G6000"}}, {"result", 0}},
        {{"call", "PTK_SetLabelHeight"}, {"arguments", QJsonArray{100, 4, 0, 0}}, {"result", 0}},
        {{"call", "PTK_SetLabelWidth"}, {"arguments", QJsonArray{90}}, {"result", 0}},
        {{"call", "PTK_DrawBar2D_QR"},
            {"arguments", QJsonArray{5, 6, 1, 2, 0, 4, 2, 1, 8, QString(QChar(0xe4))}},
            {"result", 0}},
        {{"call", "PTK_PrintLabel"}, {"arguments", QJsonArray{1, 2}}, {"result", 0},
            {"labels", QJsonArray{"label-000001.png", "label-000002.png"}}},
        {{"call", "PTK_SetDarkness"}, {"arguments", QJsonArray{21}}, {"result", refused},
            {"reason", "darkness must be 0 to 20"}},
        {{"call", "ClosePort"}, {"arguments", QJsonArray{}}, {"result", 0}},
    };
    QVector<QJsonObject> lines = bench.lines();
    for (QJsonObject &line : lines)
        line.remove("time");
    QCOMPARE(lines, expected);
}

void tst_FleetLabelCalls::time()
{
    const LabelBench bench;
    FleetLabelPrinter printer(bench.home());
    const QDateTime before = QDateTime::currentDateTimeUtc();
    printer.openPort("any");
    const QDateTime time =
        QDateTime::fromString(bench.line()["time"].toString(), Qt::ISODateWithMs);
    QVERIFY(time >= before);
    QVERIFY(time <= QDateTime::currentDateTimeUtc());
}

void tst_FleetLabelCalls::nullTextsInLines()
{
    const LabelBench bench;
    FleetLabelPrinter printer(bench.home());
    QCOMPARE(printer.openPort(nullptr), refused);
    QCOMPARE(bench.line()["arguments"].toArray(), QJsonArray{QJsonValue()});
}

void tst_FleetLabelCalls::recordedCalls()
{
    const LabelBench bench;
    FleetLabelPrinter printer(bench.home());
    QCOMPARE(printer.record("PTK_MediaDetect"), 0); // with a port or without
    QCOMPARE(bench.lines().size(), 1);
    QCOMPARE(bench.line()["call"].toString(), QString("PTK_MediaDetect"));
    QCOMPARE(bench.line()["result"].toInt(-9), 0);
    QVERIFY(!bench.line().contains("arguments")); // nobody knows them
}

void tst_FleetLabelCalls::portClosed_data()
{
    QTest::addColumn<Call>("call");
    for (const NamedCall &command : commands)
        QTest::newRow(command.name) << command.call;
    QTest::newRow("PTK_DrawTextTrueTypeW")
        << Call([](FleetLabelPrinter &p) { return drawText(p, "Arial", "x"); });
}

void tst_FleetLabelCalls::portClosed()
{
    QFETCH(Call, call);
    const LabelBench bench;
    FleetLabelPrinter printer(bench.home());
    QCOMPARE(call(printer), closed);
    printer.openPort("any");
    printer.closePort();
    QCOMPARE(call(printer), closed);
    QCOMPARE(bench.line()["call"].toString(), QString(QTest::currentDataTag()));
    QCOMPARE(bench.line()["result"].toInt(), closed);
    QCOMPARE(bench.line()["reason"].toString(), QString("no open port"));
    QCOMPARE(bench.labels(), QStringList());
}

void tst_FleetLabelCalls::portTakenOver()
{
    const LabelBench bench;
    FleetLabelPrinter printer(bench.home());
    QCOMPARE(printer.openPort("any"), 0);
    QCOMPARE(printer.openPort("any"), 0);
    QCOMPARE(printer.closePort(), 0);
    QCOMPARE(printer.closePort(), closed);
}

void tst_FleetLabelCalls::refusedValues_data()
{
    QTest::addColumn<Call>("call");
    const auto height = [](int height, int gap) {
        return Call([=](FleetLabelPrinter &p) { return p.setLabelHeight(height, gap, 0, 0); });
    };
    QTest::newRow("no height") << height(0, 0);
    QTest::newRow("negative height") << height(-1, 0);
    QTest::newRow("huge height") << height(20001, 0);
    QTest::newRow("negative gap") << height(100, -1);
    const auto width = [](int width) {
        return Call([=](FleetLabelPrinter &p) { return p.setLabelWidth(width); });
    };
    QTest::newRow("no width") << width(0);
    QTest::newRow("huge width") << width(20001);
    const auto darkness = [](int darkness) {
        return Call([=](FleetLabelPrinter &p) { return p.setDarkness(darkness); });
    };
    QTest::newRow("darkness -1") << darkness(-1);
    QTest::newRow("darkness 21") << darkness(21);
    QTest::newRow("speed") << Call([](FleetLabelPrinter &p) { return p.setPrintSpeed(-1); });
    QTest::newRow("direction") << Call([](FleetLabelPrinter &p) { return p.setDirection('b'); });
    const auto code = [](int version, int orientation, int magnification, int mode, int level,
                          int mask, const char *text) {
        return Call([=](FleetLabelPrinter &p) {
            return p.drawQRCode(
                0, 0, 1, version, orientation, magnification, mode, level, mask, text);
        });
    };
    QTest::newRow("version") << code(41, 0, 8, 2, 1, 8, "x");
    QTest::newRow("quarters") << code(2, 4, 8, 2, 1, 8, "x");
    QTest::newRow("no modules") << code(2, 0, 0, 2, 1, 8, "x");
    QTest::newRow("digits mode") << code(2, 0, 8, 0, 1, 8, "1");
    QTest::newRow("level") << code(2, 0, 8, 2, 4, 8, "x");
    QTest::newRow("mask") << code(2, 0, 8, 2, 1, 0, "x");
    QTest::newRow("no code") << code(2, 0, 8, 2, 1, 8, "");
    QTest::newRow("null code") << code(2, 0, 8, 2, 1, 8, nullptr);
    static const QByteArray most(2953, 'x'), tooMany(2954, 'x'), longest(5000, 'x');
    QTest::newRow("too much for any version") << code(2, 0, 8, 2, 0, 8, tooMany);
    QTest::newRow("too much for the level") << code(2, 0, 8, 2, 1, 8, most);
    QTest::newRow("longer than any text") << code(2, 0, 8, 2, 0, 8, longest);
    const auto print = [](int sets, int copies) {
        return Call([=](FleetLabelPrinter &p) { return p.printLabel(sets, copies); });
    };
    QTest::newRow("no sets") << print(0, 1);
    QTest::newRow("no copies") << print(1, 0);
    QTest::newRow("too many sets") << print(1001, 1);
    QTest::newRow("too many in all") << print(100, 11);
}

void tst_FleetLabelCalls::refusedValues()
{
    QFETCH(Call, call);
    const LabelBench bench;
    FleetLabelPrinter printer(bench.home());
    printer.openPort("any");
    printer.setLabelWidth(10);
    printer.setLabelHeight(10, 0, 0, 0);
    QCOMPARE(call(printer), refused);
    QCOMPARE(bench.line()["result"].toInt(), refused);
    QVERIFY(!bench.line()["reason"].toString().isEmpty());
    QCOMPARE(printer.printLabel(1, 1), 0);
    QCOMPARE(QImage(bench.path("labels/label-000001.png")).size(), QSize(10, 10));
}

void tst_FleetLabelCalls::takenValues_data()
{
    QTest::addColumn<Call>("call");
    for (const NamedCall &command : commands)
        QTest::newRow(command.name) << command.call;
    QTest::newRow("offset and flag")
        << Call([](FleetLabelPrinter &p) { return p.setLabelHeight(20000, 20000, -5, 9); });
    static const QByteArray most(2953, 'x');
    QTest::newRow("fullest code") << Call(
        [](FleetLabelPrinter &p) { return p.drawQRCode(0, 0, 1, 2, 0, 1, 2, 0, 8, most); });
}

void tst_FleetLabelCalls::takenValues()
{
    QFETCH(Call, call);
    const LabelBench bench;
    FleetLabelPrinter printer(bench.home());
    printer.openPort("any");
    printer.setLabelWidth(10);
    printer.setLabelHeight(10, 0, 0, 0);
    QCOMPARE(call(printer), 0);
    QVERIFY(!bench.line().contains("reason"));
}

void tst_FleetLabelCalls::anyValues_data()
{
    QTest::addColumn<int>("value");
    for (int value : {INT_MIN, -1, 0, 1, 70000, INT_MAX})
        QTest::addRow("%d", value) << value;
}

// Nothing but a result, whatever comes.
void tst_FleetLabelCalls::anyValues()
{
    QFETCH(int, value);
    const LabelBench bench;
    FleetLabelPrinter printer(bench.home());
    printer.openPort("any");
    const int v = value;
    const int results[] = {printer.setLabelHeight(v, v, v, v), printer.setLabelWidth(v),
        printer.setDarkness(v), printer.setPrintSpeed(v), printer.setDirection(v),
        printer.drawText(v, v, v, v, nullptr, v, v, v, v, v, nullptr, nullptr),
        printer.drawText(v, v, 20, 0, "Arial", 1, 400, v, v, v, nullptr, "x"),
        printer.drawQRCode(v, v, v, v, v, v, v, v, v, nullptr),
        printer.drawQRCode(v, v, v, 2, 0, 4, 2, 1, 8, "x"), printer.printLabel(v, v)};
    QCOMPARE(bench.lines().size(), 1 + int(std::size(results)));
    for (int result : results)
        QVERIFY(result <= 0);
}

void tst_FleetLabelCalls::noTextWithoutApplication()
{
    const LabelBench bench;
    FleetLabelPrinter printer(bench.home());
    printer.openPort("any");
    printer.setLabelWidth(100);
    printer.setLabelHeight(100, 0, 0, 0);
    QCOMPARE(drawText(printer, "Arial", "Text"), refused);
    QCOMPARE(bench.line()["reason"].toString(),
        QString("no text in a process without a QGuiApplication"));
    QCOMPARE(printer.drawQRCode(0, 0, 1, 2, 0, 4, 2, 1, 8, "code"), 0);
    QCOMPARE(printer.printLabel(1, 1), 0);
    QCOMPARE(LabelEyes::ink(bench.label()), QRect(0, 0, 100, 100));
}

void tst_FleetLabelCalls::largestLabel()
{
    const LabelBench bench;
    FleetLabelPrinter printer(bench.home());
    printer.openPort("any");
    QCOMPARE(printer.setLabelWidth(20000), 0);
    QCOMPARE(printer.setLabelHeight(20000, 0, 0, 0), 0);
    QCOMPARE(printer.drawQRCode(17700, 17700, 1, 40, 0, 100, 2, 1, 8, "x"), 0);
    QCOMPARE(printer.printLabel(1, 1), 0);
    QCOMPARE(bench.label().size(), QSize(20000, 20000));
}

void tst_FleetLabelCalls::folder_data()
{
    QTest::addColumn<QString>("told");
    QTest::addColumn<QString>("folder"); // in the home folder
    QTest::newRow("relative") << "out/today"
                              << "out/today";
    QTest::newRow("absolute") << "%1/elsewhere"
                              << "elsewhere";
}

void tst_FleetLabelCalls::folder()
{
    QFETCH(QString, told);
    QFETCH(QString, folder);
    const LabelBench bench;
    const QString path = told.contains('%') ? told.arg(bench.home()) : told;
    bench.configure(QJsonDocument(QJsonObject{{"folder", path}}).toJson());
    FleetLabelPrinter printer(bench.home());
    printer.openPort("any");
    printer.setLabelWidth(10);
    printer.setLabelHeight(10, 0, 0, 0);
    QCOMPARE(printer.printLabel(1, 1), 0);
    QCOMPARE(bench.labels(folder), QStringList("label-000001.png"));
    QCOMPARE(bench.lines(folder).size(), 4);
    QVERIFY(!QFile::exists(bench.path("labels")));
}

// Labels that can't be written are a result, not a crash.
void tst_FleetLabelCalls::unwritable()
{
    const LabelBench bench;
    QFile file(bench.path("labels"));
    QVERIFY(file.open(QIODevice::WriteOnly)); // where the folder would be
    FleetLabelPrinter printer(bench.home());
    const QRegularExpression complaint("labels/calls\\.jsonl");
    for (int i = 0; i < 4; ++i)
        QTest::ignoreMessage(QtWarningMsg, complaint);
    printer.openPort("any");
    printer.setLabelWidth(10);
    printer.setLabelHeight(10, 0, 0, 0);
    QCOMPARE(printer.printLabel(1, 1), int(FleetLabelPrinter::NotWritten));
}

void tst_FleetLabelCalls::ports()
{
    const LabelBench bench;
    bench.configure(R"({"ports": ["POSTEK G6000", "COM1"]})");
    FleetLabelPrinter printer(bench.home());
    QCOMPARE(printer.openPort("POSTEK"), refused);
    QCOMPARE(bench.line()["reason"].toString(), QString("no such port"));
    QCOMPARE(printer.clearBuffer(), closed);
    QCOMPARE(printer.openPort("COM1"), 0);
    bench.configure(R"({"ports": []})");
    QCOMPARE(printer.openPort("COM1"), refused);
}

void tst_FleetLabelCalls::failures_data()
{
    QTest::addColumn<Call>("call");
    for (const NamedCall &command : commands)
        QTest::newRow(command.name) << command.call;
    QTest::newRow("OpenPort") << Call([](FleetLabelPrinter &p) { return p.openPort("any"); });
    QTest::newRow("PTK_DrawTextTrueTypeW")
        << Call([](FleetLabelPrinter &p) { return drawText(p, "Arial", "x"); });
}

void tst_FleetLabelCalls::failures()
{
    QFETCH(Call, call);
    const QString name = QTest::currentDataTag();
    const LabelBench bench;
    FleetLabelPrinter printer(bench.home());
    printer.openPort("any");
    bench.configure(QJsonDocument(QJsonObject{{"fail", QJsonObject{{name, 5}}}}).toJson());
    for (int i = 0; i < 2; ++i)
        QCOMPARE(call(printer), 5);
    QCOMPARE(bench.line()["call"].toString(), name);
    QCOMPARE(bench.line()["result"].toInt(), 5);
    QCOMPARE(bench.line()["reason"].toString(), QString("as told"));
    QVERIFY(bench.line()["arguments"].isArray());
}

void tst_FleetLabelCalls::failedCallsDoNothing()
{
    const LabelBench bench;
    bench.configure(R"({"fail": {"OpenPort": -1}})");
    FleetLabelPrinter printer(bench.home());
    QCOMPARE(printer.openPort("any"), -1);
    QCOMPARE(printer.clearBuffer(), closed);

    bench.configure(R"({"fail": {"PTK_SetLabelWidth": 0, "PTK_DrawBar2D_QR": 3,
                                 "PTK_ClearBuffer": 1, "ClosePort": 2}})");
    printer.openPort("any");
    printer.setLabelHeight(50, 0, 0, 0);
    QCOMPARE(printer.setLabelWidth(50), 0); // told to look like success
    QCOMPARE(printer.printLabel(1, 1), refused); // still without a size
    bench.configure("{}");
    printer.setLabelWidth(50);
    bench.configure(R"({"fail": {"PTK_DrawBar2D_QR": 3, "ClosePort": 2}})");
    printer.drawQRCode(0, 0, 1, 2, 0, 2, 2, 1, 8, "x");
    QCOMPARE(printer.closePort(), 2);
    QCOMPARE(printer.printLabel(1, 1), 0); // the port is open
    QCOMPARE(LabelEyes::inkDots(bench.label()), 0); // nothing was drawn
    bench.configure(R"({"fail": {"PTK_PrintLabel": -7}})");
    QCOMPARE(printer.printLabel(1, 1), -7);
    QCOMPARE(bench.labels().size(), 1);
}

void tst_FleetLabelCalls::failureAt()
{
    const LabelBench bench;
    bench.configure(R"({"fail": {"PTK_SetDarkness": {"result": 5, "at": 3}}})");
    FleetLabelPrinter printer(bench.home());
    printer.openPort("any");
    QVector<int> results;
    for (int i = 0; i < 4; ++i)
        results.append(printer.setDarkness(14));
    QCOMPARE(results, QVector<int>({0, 0, 5, 0}));
    // The change of the file begins the count afresh.
    bench.configure(R"({"fail": {"PTK_SetDarkness": {"result": 6, "at": 1}}})");
    QCOMPARE(printer.setDarkness(14), 6);
    QCOMPARE(printer.setDarkness(14), 0);
}

// As a program that loads the library for each label has them.
void tst_FleetLabelCalls::failureAtOverPrinters()
{
    const LabelBench bench;
    const QByteArray third = R"({"fail": {"PTK_SetDarkness": {"result": 5, "at": 3}}})";
    const auto fourLabels = [&bench] {
        QVector<int> results;
        for (int i = 0; i < 4; ++i) {
            FleetLabelPrinter printer(bench.home());
            printer.openPort("any");
            results.append(printer.setDarkness(14));
            printer.closePort();
        }
        return results;
    };
    bench.configure(third);
    QCOMPARE(fourLabels(), QVector<int>({0, 0, 5, 0}));
    QCOMPARE(fourLabels(), QVector<int>({0, 0, 0, 0}));

    bench.configure(third); // the same once more, a while later
    QFile file(bench.path("label-printer.json"));
    QVERIFY(file.open(QIODevice::ReadWrite));
    QVERIFY(file.setFileTime(
        QDateTime::currentDateTime().addSecs(1), QFileDevice::FileModificationTime));
    file.close();
    QCOMPARE(fourLabels(), QVector<int>({0, 0, 5, 0}));
}

void tst_FleetLabelCalls::failureAtByName()
{
    const LabelBench bench;
    bench.configure(R"({"fail": {"PTK_SetDarkness": {"result": 5, "at": 2},
                                 "PTK_SetPrintSpeed": {"result": 6, "at": 3}}})");
    QVector<int> results;
    for (int i = 0; i < 3; ++i) {
        FleetLabelPrinter printer(bench.home());
        printer.openPort("any");
        results << printer.setDarkness(14) << printer.setPrintSpeed(5) << printer.clearBuffer();
    }
    QCOMPARE(results, QVector<int>({0, 0, 0, 5, 0, 0, 0, 6, 0}));
}

void tst_FleetLabelCalls::damagedCounts_data()
{
    QTest::addColumn<QByteArray>("counts");
    for (const char *counts : {"", "{", "[]", "no JSON", R"({"PTK_SetDarkness": 1})"})
        QTest::newRow(counts) << QByteArray(counts);
}

// They begin afresh.
void tst_FleetLabelCalls::damagedCounts()
{
    QFETCH(QByteArray, counts);
    const LabelBench bench;
    bench.configure(R"({"fail": {"PTK_SetDarkness": {"result": 5, "at": 2}}})");
    QFile file(bench.path("label-printer.counts"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(counts), qint64(counts.size()));
    file.close();
    FleetLabelPrinter printer(bench.home());
    printer.openPort("any");
    QCOMPARE(printer.setDarkness(14), 0);
    QCOMPARE(printer.setDarkness(14), 5);
}

void tst_FleetLabelCalls::failureOfRecordedCall()
{
    const LabelBench bench;
    bench.configure(R"({"fail": {"PTK_GetErrState": 9}})");
    FleetLabelPrinter printer(bench.home());
    QCOMPARE(printer.record("PTK_GetErrState"), 9);
    QCOMPARE(printer.record("PTK_GetInfo"), 0);
}

void tst_FleetLabelCalls::changedWhileRunning()
{
    const LabelBench bench;
    FleetLabelPrinter printer(bench.home());
    printer.openPort("any");
    QCOMPARE(printer.clearBuffer(), 0);
    bench.configure(R"({"fail": {"PTK_ClearBuffer": 4}})");
    QCOMPARE(printer.clearBuffer(), 4);
    bench.configure(R"({"fail": {"PTK_ClearBuffer": 5}})"); // as long, and as old
    QCOMPARE(printer.clearBuffer(), 5);
    QFile::remove(bench.path("label-printer.json"));
    QCOMPARE(printer.clearBuffer(), 0);
}

void tst_FleetLabelCalls::wrongFile_data()
{
    QTest::addColumn<QByteArray>("json");
    QTest::addColumn<QString>("reason"); // a pattern of a part
    QTest::newRow("no JSON") << QByteArray("{\n \"density\": }") << "line 2, column";
    QTest::newRow("no object") << QByteArray("[]") << "must be an object";
    QTest::newRow("unknown key") << QByteArray(R"({"port": []})") << "unknown key \"port\"";
    QTest::newRow("folder") << QByteArray(R"({"folder": 1})") << "\"folder\" must be a text";
    QTest::newRow("folder that can't be")
        << QByteArray(R"({"folder": "label-printer.json/labels"})")
        << "can't make the folder .*/label-printer\\.json/labels";
    QTest::newRow("no density") << QByteArray(R"({"density": 0})") << "\"density\" must be";
    QTest::newRow("density text") << QByteArray(R"({"density": "8"})") << "\"density\" must be";
    QTest::newRow("ports") << QByteArray(R"({"ports": ["a", 1]})") << "\"ports\" must be";
    const QString fail = "\"fail\" must be";
    QTest::newRow("no call") << QByteArray(R"({"fail": {"Print": 1}})") << fail;
    QTest::newRow("result text") << QByteArray(R"({"fail": {"OpenPort": "1"}})") << fail;
    QTest::newRow("result fraction") << QByteArray(R"({"fail": {"OpenPort": 0.5}})") << fail;
    QTest::newRow("no result") << QByteArray(R"({"fail": {"OpenPort": {"at": 1}}})") << fail;
    QTest::newRow("at 0") << QByteArray(R"({"fail": {"OpenPort": {"result": 1, "at": 0}}})")
                          << fail;
    QTest::newRow("further key") << QByteArray(R"({"fail": {"OpenPort": {"result": 1, "in": 1}}})")
                                 << fail;
}

void tst_FleetLabelCalls::wrongFile()
{
    QFETCH(QByteArray, json);
    QFETCH(QString, reason);
    const LabelBench bench;
    bench.configure(json);
    FleetLabelPrinter printer(bench.home());
    QCOMPARE(printer.openPort("any"), 0); // by the defaults
    QCOMPARE(printer.clearBuffer(), 0);
    const QVector<QJsonObject> lines = bench.lines();
    QCOMPARE(lines.size(), 3); // told once
    const QString trouble = lines.first()["trouble"].toString();
    QVERIFY2(trouble.startsWith("label-printer.json: "), qPrintable(trouble));
    QVERIFY2(trouble.contains(QRegularExpression(reason)), qPrintable(trouble));
    QVERIFY(lines.first().contains("time"));
}

QTEST_GUILESS_MAIN(tst_FleetLabelCalls)
#include "tst_FleetLabelCalls.moc"

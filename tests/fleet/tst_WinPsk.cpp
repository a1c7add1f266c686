#include "LabelBench.h"
#include "LoadedLibrary.h"

#include <QLibrary>

#include <memory>

namespace {

// The names that a program binds, in its order.
const QStringList entryPoints = QString(
    "OpenPort SetPCComPort ClosePort PTK_GetErrState PTK_PrintLabel PTK_GetInfo PTK_ClearBuffer "
    "PTK_SetDarkness PTK_SetPrintSpeed PTK_SetLabelHeight PTK_SetLabelWidth PTK_SetDirection "
    "PTK_DrawText PTK_DrawTextEx PTK_DrawTextTrueTypeW PTK_DrawBarcode PTK_DrawBarcodeEx "
    "PTK_DrawBar2D_DATAMATRIX PTK_DrawBar2D_QR PTK_DrawBar2D_QREx PTK_DrawBar2D_MaxiCode "
    "PTK_DrawBar2D_Pdf417 PTK_DrawBar2D_HANXIN PTK_PcxGraphicsList PTK_PcxGraphicsDel "
    "PTK_PcxGraphicsDownload PTK_DrawPcxGraphics PTK_PrintPCX PTK_BinGraphicsList "
    "PTK_BinGraphicsDel PTK_BinGraphicsDownload PTK_RecallBinGraphics PTK_DrawBinGraphics "
    "PTK_BmpGraphicsDownload PTK_DrawRectangle PTK_DrawLineXor PTK_DrawLineOr PTK_DrawDiagonal "
    "PTK_DrawWhiteLine PTK_RWRFIDLabel PTK_SetRFLabelPWAndLockRFLabel "
    "PTK_SetRFIDLabelRetryCount PTK_SetRFID PTK_FeedBack PTK_ErrorReportUSB PTK_ErrorReport "
    "PTK_GetUSBID PTK_SendFile PTK_SoftFontList PTK_SoftFontDel PTK_FormList PTK_FormDel "
    "PTK_FormDownload PTK_DefineCounter PTK_DefineVariable PTK_FormEnd PTK_ExecForm PTK_Download "
    "PTK_DownloadInitVar PTK_PrintLabelAuto PTK_PrintConfiguration PTK_DisableBackFeed "
    "PTK_EnableBackFeed PTK_EnableFLASH PTK_DisableFLASH PTK_Reset PTK_FeedMedia PTK_MediaDetect "
    "PTK_CutPage PTK_CutPageEx PTK_SetPrinterState PTK_SetCoordinateOrigin PTK_SetFontGap "
    "PTK_SetBarCodeFontName PTK_SetCharSets")
                                    .split(' ');
const QStringList obeyed = QString(
    "OpenPort ClosePort PTK_ClearBuffer PTK_SetLabelHeight PTK_SetLabelWidth PTK_SetDarkness "
    "PTK_SetPrintSpeed PTK_SetDirection PTK_DrawTextTrueTypeW PTK_DrawBar2D_QR PTK_PrintLabel")
                               .split(' ');

using Text = const char *;

// What this library printed once, without anybody's complaint.
QImage keptPicture(const char *name)
{
    return QImage(QStringLiteral(KEPT_PICTURES "/") + name);
}

// Ink that has none of the other picture's within so many dots on either side.
int strayDots(const QImage &label, const QImage &other, int reach)
{
    constexpr QRgb paper = 0xffffffff;
    const QRect all = label.rect();
    const auto hasInk = [](const QImage &of, int x, int y) { return of.pixel(x, y) != paper; };
    const auto isNear = [&](int x, int y) {
        const QRect around = QRect(x - reach, y - reach, 2 * reach + 1, 2 * reach + 1) & all;
        for (int row = around.top(); row <= around.bottom(); ++row) {
            for (int column = around.left(); column <= around.right(); ++column) {
                if (hasInk(other, column, row))
                    return true;
            }
        }
        return false;
    };
    int count = 0;
    for (int y = 0; y < label.height(); ++y) {
        for (int x = 0; x < label.width(); ++x)
            count += hasInk(label, x, y) && !isNear(x, y);
    }
    return count;
}

// As the library writes beside itself, each test has a copy.
QString copyIn(const LabelBench &bench)
{
    return bench.path(QFileInfo(WINPSK_LIBRARY).fileName());
}

}

// The library as a program has it: loaded by its path, its functions bound by name.
class Library
{
public:
    explicit Library(const LabelBench &bench) : library(copyIn(bench))
    {
        if (!QFile::exists(library.fileName()))
            QFile::copy(WINPSK_LIBRARY, library.fileName());
    }
    ~Library() { library.unload(); }

    bool load() { return library.load(); }
    bool has(const QString &name) { return library.resolve(name.toLatin1()); }

    template <class... Arguments> int call(const QString &name, Arguments... arguments)
    {
        return reinterpret_cast<int (*)(Arguments...)>(library.resolve(name.toLatin1()))(
            arguments...);
    }

    int openPort(Text name) { return call("OpenPort", name); }
    int closePort() { return call("ClosePort"); }
    int clearBuffer() { return call("PTK_ClearBuffer"); }
    int setLabelHeight(int height, int gap, int offset, int flag)
    {
        return call("PTK_SetLabelHeight", height, gap, offset, flag);
    }
    int setLabelWidth(int width) { return call("PTK_SetLabelWidth", width); }
    int setDarkness(int darkness) { return call("PTK_SetDarkness", darkness); }
    int setPrintSpeed(int speed) { return call("PTK_SetPrintSpeed", speed); }
    int setDirection(int direction) { return call("PTK_SetDirection", direction); }
    template <class... Arguments> int drawText(Arguments... arguments)
    {
        return call("PTK_DrawTextTrueTypeW", arguments...);
    }
    int drawQRCode(int x, int y, int width, int height, int orientation, int magnification,
        int mode, int level, int mask, Text text)
    {
        return call("PTK_DrawBar2D_QR", x, y, width, height, orientation, magnification, mode,
            level, mask, text);
    }
    int printLabel(int sets, int copies) { return call("PTK_PrintLabel", sets, copies); }

private:
    QLibrary library;
};

class tst_WinPsk : public QObject
{
    Q_OBJECT

private slots:
    void names();
    void productLabel();
    void codesEverywhereAlike();
    void textsEverywhereAlike();
    void recorded_data();
    void recorded();
    void toldFailures();
    void loadedTwice();
    void loadedAgain();
    void failureAtOverLoads();
};

void tst_WinPsk::names()
{
    QCOMPARE(entryPoints.size(), 75);
    const LabelBench bench;
    Library library(bench);
    QVERIFY(library.load());
    for (const QString &name : entryPoints)
        QVERIFY2(library.has(name), qPrintable(name));
    QVERIFY(!library.has("PTK_NoSuchCall"));
    QCOMPARE(bench.labels(), QStringList()); // loading does nothing
    QVERIFY(!QFile::exists(bench.path("labels")));
}

void tst_WinPsk::productLabel()
{
    const LabelBench bench;
    Library library(bench);
    QVERIFY(library.load());
    ProductLabel::print(library);
    QCOMPARE(bench.labels(), QStringList("label-000001.png"));
    QCOMPARE(bench.label().size(), QSize(1059, 1059));
    QCOMPARE(LabelEyes::decoded(bench.label(), bench.label().rect()), QString(ProductLabel::code));

    using namespace ProductLabel;
    const QVector<QPair<QString, QJsonArray>> expected{
        {"OpenPort", {"POSTEK G6000"}},
        {"PTK_ClearBuffer", {}},
        {"PTK_SetLabelHeight", {1059, 4, 0, 0}},
        {"PTK_SetLabelWidth", {1059}},
        {"PTK_SetDarkness", {14}},
        {"PTK_SetPrintSpeed", {5}},
        {"PTK_SetDirection", {66}},
        {"PTK_DrawTextTrueTypeW", {534, 345, 50, 0, "Arial", 1, 500, 0, 0, 0, "ModelStr", model}},
        {"PTK_DrawBar2D_QR", {143, 423, 1, 2, 0, 8, 2, 1, 8, code}},
        {"PTK_DrawTextTrueTypeW",
            {248, 655, 31, 0, "Arial Narrow", 5, 700, 0, 0, 0, "P2PIDStr", code}},
        {"PTK_DrawTextTrueTypeW", {376, 818, 46, 0, "Arial", 1, 600, 0, 0, 0, "SNStr", serial}},
        {"PTK_PrintLabel", {1, 1}},
        {"ClosePort", {}},
    };
    const QVector<QJsonObject> lines = bench.lines();
    QCOMPARE(lines.size(), expected.size());
    for (int i = 0; i < lines.size(); ++i) {
        QCOMPARE(lines[i]["call"].toString(), expected[i].first);
        QCOMPARE(lines[i]["arguments"].toArray(), expected[i].second);
        QCOMPARE(lines[i]["result"].toInt(-9), 0);
    }
}

// Dot by dot as on the system where the picture was kept: codes need no fonts.
void tst_WinPsk::codesEverywhereAlike()
{
    const LabelBench bench;
    Library library(bench);
    QVERIFY(library.load());
    ProductLabel::setUp(library);
    for (int i = 0; i < 4; ++i) // each orientation and level, with dots from 2 to 8 to a module
        QCOMPARE(library.drawQRCode(20 + 230 * i, 30 + 230 * i, 1, 2 * i, i, 2 + 2 * i, 2, i, 8,
                     ProductLabel::code),
            0);
    QCOMPARE(library.printLabel(1, 1), 0);
    const QImage kept = keptPicture("codes.png");
    QVERIFY(LabelEyes::inkDots(kept) > 10000);
    QCOMPARE(bench.label().convertToFormat(kept.format()), kept);
}

// Letters depend on how a system draws its fonts: all ink of either picture has some of the other
// one within four dots, a sixth of a millimetre.
void tst_WinPsk::textsEverywhereAlike()
{
    const LabelBench bench;
    Library library(bench);
    QVERIFY(library.load());
    ProductLabel::print(library);
    const QImage kept = keptPicture("product-label.png");
    const QImage label = bench.label();
    QCOMPARE(label.size(), kept.size());
    QVERIFY(LabelEyes::inkDots(kept) > 10000);
    QCOMPARE(strayDots(label, kept, 4), 0);
    QCOMPARE(strayDots(kept, label, 4), 0);
}

void tst_WinPsk::recorded_data()
{
    QTest::addColumn<QString>("name");
    for (const QString &name : entryPoints) {
        if (!obeyed.contains(name))
            QTest::newRow(qPrintable(name)) << name;
    }
}

void tst_WinPsk::recorded()
{
    QFETCH(QString, name);
    const LabelBench bench;
    Library library(bench);
    QVERIFY(library.load());
    QCOMPARE(library.call(name, 1, Text("two"), 3), 0);
    QCOMPARE(bench.lines().size(), 1);
    QCOMPARE(bench.line()["call"].toString(), name);
    QCOMPARE(bench.line()["result"].toInt(-9), 0);
}

void tst_WinPsk::toldFailures()
{
    const LabelBench bench;
    bench.configure(R"({"fail": {"OpenPort": -1}})");
    Library library(bench);
    QVERIFY(library.load());
    QCOMPARE(library.openPort("POSTEK G6000"), -1);
    bench.configure(R"({"fail": {"PTK_SetDarkness": 5}, "folder": "there"})");
    QCOMPARE(library.openPort("POSTEK G6000"), 0);
    QCOMPARE(library.setDarkness(14), 5);
    QCOMPARE(library.setPrintSpeed(5), 0);
    QCOMPARE(bench.lines().size(), 1);
    QCOMPARE(bench.lines("there").size(), 3);
}

// Two loads of one file are one printer, as they are one library.
void tst_WinPsk::loadedTwice()
{
    const LabelBench bench;
    auto first = std::make_unique<Library>(bench);
    QVERIFY(first->load());
    QCOMPARE(first->openPort("POSTEK G6000"), 0);
    Library second(bench);
    QVERIFY(second.load());
    QCOMPARE(second.setLabelWidth(20), 0); // the port is open
    first.reset();
    QCOMPARE(second.setLabelHeight(20, 0, 0, 0), 0);
    QCOMPARE(second.printLabel(1, 1), 0);
    QCOMPARE(bench.labels().size(), 1);
}

// An unloaded library is gone: the next one has a printer that was just switched on, in the same
// folder. Fonts that the first one used don't bother the second one.
void tst_WinPsk::loadedAgain()
{
    const LabelBench bench;
    for (int i = 0; i < 3; ++i) {
        Library library(bench);
        QVERIFY(library.load());
        QVERIFY(loadedLibrary(copyIn(bench)));
        QCOMPARE(library.setLabelWidth(20), -1); // no open port
        ProductLabel::print(library);
        QCOMPARE(library.openPort("POSTEK G6000"), 0); // left open
    }
    QCOMPARE(bench.labels().size(), 3);
    QVERIFY(!loadedLibrary(copyIn(bench)));
}

// What it counts to a failure goes on.
void tst_WinPsk::failureAtOverLoads()
{
    const LabelBench bench;
    bench.configure(R"({"fail": {"PTK_SetDarkness": {"result": 5, "at": 3}}})");
    QVector<int> results;
    for (int i = 0; i < 4; ++i) {
        Library library(bench);
        QVERIFY(library.load());
        QCOMPARE(library.openPort("POSTEK G6000"), 0);
        results.append(library.setDarkness(14));
    }
    QCOMPARE(results, QVector<int>({0, 0, 5, 0}));
}

QTEST_MAIN(tst_WinPsk)
#include "tst_WinPsk.moc"

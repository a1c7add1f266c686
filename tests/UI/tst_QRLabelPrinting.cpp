#include "EncodedCode.h"
#include "LogCatcher.h"
#include "ModalDriver.h"
#include "PrintedPage.h"
#include "PrintersHere.h"
#include "SettingsFile.h"
#include "VorlynDeviceMPToolWidget.h"
#include "ZRLabel.h"
#include "ZRLocalize.h"
#include "ZRPrinterSettingsDialog.h"

#include <QComboBox>
#include <QLineEdit>
#include <QPrinter>
#include <QPrinterInfo>
#include <QPushButton>
#include <QtTest>

#include <algorithm>
#include <memory>
#include <vector>

namespace {

const QString id = "VLTEST-000123-ABCDE";

// A strip on which one millimetre is 329 / 87 pixels, at 96 pixels to the inch.
const QVariantMap twoColumns = {{"printer name", "LABEL-300"}, {"label width", 40.0},
    {"label height", 30.0}, {"label column", 2}, {"label padding", 3.0},
    {"label padding left", 1.0}, {"label padding top", 1.5}, {"label padding right", 3.0},
    {"label padding bottom", 0.5}};

const char labelLine[] = "print QRCode on = ";

QVariantMap with(const QVariantMap &changes, QVariantMap settings = twoColumns)
{
    for (auto it = changes.begin(); it != changes.end(); ++it)
        settings[it.key()] = it.value();
    return settings;
}

// Without what the window system says when a dialog goes away under it.
QStringList linesOf(const LogCatcher &log)
{
    QStringList lines = log.lines();
    const auto isForeign = [](const QString &line) { return line.startsWith("QXcb"); };
    lines.erase(std::remove_if(lines.begin(), lines.end(), isForeign), lines.end());
    return lines;
}

// "name = (1, 2, 3, 4)"
QRectF rectOf(const QString &line)
{
    const QStringList numbers = line.section('(', -1).section(')', 0, 0).split(", ");
    return QRectF(numbers.value(0).toDouble(), numbers.value(1).toDouble(),
        numbers.value(2).toDouble(), numbers.value(3).toDouble());
}

QString lineOf(const QString &name, const QRectF &rect)
{
    return QString::asprintf(
        "%s = (%f, %f, %f, %f)", qPrintable(name), rect.x(), rect.y(), rect.width(), rect.height());
}

bool isNear(const QRectF &a, const QRectF &b, double pixels)
{
    return qAbs(a.left() - b.left()) < pixels && qAbs(a.top() - b.top()) < pixels
        && qAbs(a.right() - b.right()) < pixels && qAbs(a.bottom() - b.bottom()) < pixels;
}

const QString longText = QString("vl-0123456789").repeated(9) + "abc"; // 120 characters

// The dark modules of a code in a label of a strip, millimetres a pixel being as they are.
QVector<QRectF> modulesOf(const EncodedCode &code, const QRect &label, int size, double scale)
{
    const double cell = double(size) / code->width;
    const QPoint corner(
        label.x() + (label.width() - size) / 2, label.y() + (label.height() - size) / 2);
    QVector<QRectF> modules;
    for (int i = 0; i < code->width * code->width; ++i) {
        const QPointF place(i % code->width, i / code->width);
        if (code->data[i] & 1)
            modules.append(QRectF(place * cell + corner, QSizeF(cell, cell) * scale));
    }
    return modules;
}

// The square of a code in a label of the strip on a page of these pixels: 70 per cent of the
// label's height, in the middle of its width.
QRectF squareOf(const QVariantMap &strip, int column, const QSize &page)
{
    const auto length = [&strip](const char *name) { return strip[name].toDouble(); };
    const int columns = strip["label column"].toInt();
    const double width = length("label width");
    const double paperWidth = columns * width + (columns - 1) * length("label padding")
        + length("label padding left") + length("label padding right");
    const double across = page.width() / paperWidth;
    const double down = page.height() / length("label height");

    const double size = page.height() * 0.7;
    const double rest = page.height() - size;
    const double middle =
        length("label padding left") + column * (width + length("label padding")) + width / 2;
    const double top = length("label padding top") * down + (page.height() < 80 ? rest : rest / 2);
    return QRectF(middle * across - size / 2, top, size, size);
}

// What the operator does in the dialog.
using Dialog = ZRPrinterSettingsDialog;
using Deed = void (*)(Dialog &);

void cancel(Dialog &dialog)
{
    dialog.reject();
}

// Somebody else has set everything meanwhile.
void cancelWithAllSet(Dialog &dialog)
{
    SettingsFile().write(twoColumns);
    dialog.reject();
}

// Nothing is saved.
void accept(Dialog &dialog)
{
    dialog.accept();
}

// Sizes for a printer that nobody has.
void saveSizesOnly(Dialog &dialog)
{
    SettingsFile().write(
        with({{"label width", 50}, {"label height", 40}, {"printer name", "NO-SUCH"}}));
    dialog.accept();
}

void chooseAndSave(Dialog &dialog)
{
    dialog.findChild<QLineEdit *>("widthEdit")->setText("60");
    dialog.findChild<QLineEdit *>("heightEdit")->setText("50");
    dialog.findChild<QComboBox *>("printerCombo")->setCurrentText("LABEL-300");
    QTest::mouseClick(dialog.findChild<QPushButton *>("saveButton"), Qt::LeftButton);
}

}

Q_DECLARE_METATYPE(Deed)

class tst_QRLabelPrinting : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();
    void emptyIdGivesAToast_data();
    void emptyIdGivesAToast();
    void dialogRoads_data();
    void dialogRoads();
    void findsThePrinterInAnyCase_data();
    void findsThePrinterInAnyCase();
    void logsInOrder();
    void wholeSheetIsThePage();
    void columns_data();
    void columns();
    void wholeMillimetresDecide();
    void pageHasTheSizeOfTheStrip_data();
    void pageHasTheSizeOfTheStrip();
    void modulesLieWhereTheyShould_data();
    void modulesLieWhereTheyShould();
    void nothingButCodesIsPrinted_data();
    void nothingButCodesIsPrinted();
    void lowCodeSitsOnTheEdge_data();
    void lowCodeSitsOnTheEdge();
    void codesCanBeRead_data();
    void codesCanBeRead();
    void textThatIsTooLongLeavesTheLabelBlank();
    void strangeSizes_data();
    void strangeSizes();
    void settingsAreReadAfresh();

private:
    // Presses the button and returns the new jobs. A dialog that nobody serves fails the test.
    QStringList print()
    {
        const QStringList before = printJobs();
        QTimer guard;
        connect(&guard, &QTimer::timeout, this, [] {
            if (QWidget *dialog = QApplication::activeModalWidget()) {
                dialog->close();
                QTest::qFail("An unexpected dialog opened", __FILE__, __LINE__);
            }
        });
        guard.start(40000); // longer than a driver waits
        panel->onClickQRCodeButton();
        QStringList jobs = printJobs();
        for (const QString &job : before)
            jobs.removeAll(job);
        return jobs;
    }
    void setId(const QString &text)
    {
        VorlynDevice device;
        device.setMac("02:00:00:00:00:01");
        device.setP2pid(text);
        panel->setDevice(device);
    }
    ZRLabel *toast() const { return panel->findChild<ZRLabel *>("toast"); }

    SettingsFile settings;
    std::unique_ptr<VorlynDeviceMPToolWidget> panel;
};

void tst_QRLabelPrinting::initTestCase()
{
    ZRLocalize::setLanguageFolder(LANGUAGE_FOLDER);
    QVERIFY(ZRLocalize::loadLanguage("en"));
    QCOMPARE(QPrinterInfo::availablePrinterNames(),
        QStringList({"EDGE-BENCH", "LABEL-300", "RAW-BENCH"}));
    // The pixels of a page are the screen's.
    QCOMPARE(QPrinter(QPrinter::ScreenResolution).resolution(), 96);
}

void tst_QRLabelPrinting::init()
{
    settings.write(twoColumns);
    panel = std::make_unique<VorlynDeviceMPToolWidget>(nullptr);
    setId(id);
    panel->resize(1200, 800);
    panel->show();
    QVERIFY(QTest::qWaitForWindowExposed(panel.get()));
}

void tst_QRLabelPrinting::cleanup()
{
    panel.reset();
    settings.remove();
}

void tst_QRLabelPrinting::emptyIdGivesAToast_data()
{
    QTest::addColumn<QVariantMap>("saved");

    QTest::newRow("all is set") << twoColumns;
    QTest::newRow("neither printer nor label") << QVariantMap();
}

void tst_QRLabelPrinting::emptyIdGivesAToast()
{
    QFETCH(QVariantMap, saved);
    settings.write(saved);
    setId(QString());
    QCOMPARE(print(), QStringList());
    QVERIFY(toast());
    QCOMPARE(toast()->text(), ZRLocalize::translate("Please set p2pid first"));
    QCOMPARE(toast()->geometry().bottom(), panel->height() - 5 - 1);
    QCOMPARE(toast()->x(), (panel->width() - toast()->width()) / 2);
}

void tst_QRLabelPrinting::dialogRoads_data()
{
    QTest::addColumn<QVariantMap>("saved");
    QTest::addColumn<QVector<Deed>>("deeds"); // a dialog each
    QTest::addColumn<QString>("paper"); // of what is printed; empty for nothing

    const QVariantMap noWidth = with({{"label width", 0}});
    const QVariantMap noHeight = with({{"label height", 0}});
    const QVariantMap noPrinter = with({{"printer name", "NO-SUCH"}});
    const QVariantMap neither = with({{"printer name", "NO-SUCH"}}, noWidth);
    using Deeds = QVector<Deed>;

    QTest::newRow("all is set") << twoColumns << Deeds() << "87, 30";
    QTest::newRow("no width, cancelled") << noWidth << Deeds({cancel}) << QString();
    QTest::newRow("no height, cancelled") << noHeight << Deeds({cancel}) << QString();
    QTest::newRow("no width, cancelled after all is set")
        << noWidth << Deeds({cancelWithAllSet}) << QString();
    QTest::newRow("no printer, cancelled after all is set")
        << noPrinter << Deeds({cancelWithAllSet}) << QString();
    QTest::newRow("no width, saved") << noWidth << Deeds({chooseAndSave}) << "127, 50";
    QTest::newRow("no height, saved") << noHeight << Deeds({chooseAndSave}) << "127, 50";
    QTest::newRow("no width, and still none") << noWidth << Deeds({accept}) << QString();
    QTest::newRow("no height, and still none") << noHeight << Deeds({accept}) << QString();
    QTest::newRow("no printer, cancelled") << noPrinter << Deeds({cancel}) << QString();
    // The sizes that this dialog saves serve the next print only.
    QTest::newRow("no printer, saved") << noPrinter << Deeds({chooseAndSave}) << "87, 30";
    QTest::newRow("no printer, and still none") << noPrinter << Deeds({accept}) << QString();
    QTest::newRow("neither, saved") << neither << Deeds({chooseAndSave}) << "127, 50";
    QTest::newRow("no settings, saved") << QVariantMap() << Deeds({chooseAndSave}) << "60, 50";
    QTest::newRow("no settings, cancelled") << QVariantMap() << Deeds({cancel}) << QString();
    QTest::newRow("one after the other, both saved")
        << neither << Deeds({saveSizesOnly, chooseAndSave}) << "107, 40";
    QTest::newRow("one after the other, the second cancelled")
        << neither << Deeds({saveSizesOnly, cancelWithAllSet}) << QString();
    QTest::newRow("a negative size is one")
        << with({{"label width", -40}, {"label height", -30}}) << Deeds() << "-73, -30";
}

void tst_QRLabelPrinting::dialogRoads()
{
    QFETCH(QVariantMap, saved);
    QFETCH(QVector<Deed>, deeds);
    QFETCH(QString, paper);
    settings.write(saved);
    LogCatcher log;
    QStringList jobs;
    {
        // Whichever of them comes first.
        const auto act = [&deeds](Dialog &dialog) {
            QVERIFY(!dialog.parentWidget());
            deeds.takeFirst()(dialog);
        };
        std::vector<std::unique_ptr<ModalDriver<Dialog>>> operators;
        for (int i = deeds.size(); i > 0; --i)
            operators.push_back(std::make_unique<ModalDriver<Dialog>>(act));
        jobs = print();
    }
    QCOMPARE(jobs.size(), paper.isEmpty() ? 0 : 1);
    QVERIFY(!toast());
    if (paper.isEmpty())
        QCOMPARE(linesOf(log), QStringList());
    else
        QCOMPARE(log.beginning(QStringLiteral("paperSize = (%1)").arg(paper)).size(), 1);
}

void tst_QRLabelPrinting::findsThePrinterInAnyCase_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("queue");

    QTest::newRow("as it is") << "LABEL-300"
                              << "LABEL-300-";
    QTest::newRow("small letters") << "label-300"
                                   << "LABEL-300-";
    QTest::newRow("the second queue") << "Raw-Bench"
                                      << "RAW-BENCH-";
}

void tst_QRLabelPrinting::findsThePrinterInAnyCase()
{
    QFETCH(QString, name);
    QFETCH(QString, queue);
    settings.write(with({{"printer name", name}}));
    const QStringList jobs = print();
    QCOMPARE(jobs.size(), 1);
    QVERIFY2(jobs.first().startsWith(queue), qPrintable(jobs.first()));
}

void tst_QRLabelPrinting::logsInOrder()
{
    // Of the same shape, for the units of its sheet.
    QPrinter printer(QPrinterInfo::printerInfo("LABEL-300"), QPrinter::ScreenResolution);
    printer.setPageSize(QPageSize(QSizeF(87, 30), QPageSize::Millimeter));
    printer.setPageMargins(QMarginsF());
    printer.setFullPage(true);
    const QRectF sheet(0, 0, 329, 113);
    QCOMPARE(printer.paperRect(QPrinter::DevicePixel), sheet);

    LogCatcher log;
    QCOMPARE(print().size(), 1);
    QStringList lines = linesOf(log);
    QVERIFY(!lines.isEmpty());
    // Only the first two numbers mean something.
    const QRegularExpression first("^paperSize = \\(87, 30\\), labelSize = \\(-?\\d+, -?\\d+\\), "
                                   "left = -?\\d+, top = -?\\d+, right = -?\\d+, bottom = -?\\d+, "
                                   "padding = -?\\d+$");
    const QString firstLine = lines.takeFirst();
    QVERIFY2(first.match(firstLine).hasMatch(), qPrintable(firstLine));
    QCOMPARE(lines,
        QStringList({
            lineOf("rect Millimeter", QRectF(QPointF(), PrintersHere::paperOf({87, 30}))),
            "rect Point = (0.000000, 0.000000, 247.000000, 85.000000)",
            lineOf("rect Inch", printer.paperRect(QPrinter::Inch)),
            lineOf("rect Pica", printer.paperRect(QPrinter::Pica)),
            lineOf("rect Didot", printer.paperRect(QPrinter::Didot)),
            lineOf("rect Cicero", printer.paperRect(QPrinter::Cicero)),
            lineOf("rect DevicePixel", sheet),
            "left = 0.000000, top = 0.000000, right = 0.000000, bottom = 0.000000",
            lineOf("paperRect", sheet),
            lineOf("pageRect", sheet),
            "viewport = (0, 0, 329, 113)",
            QString::asprintf("margins left = %f, top = %f, right = %f, bottom = %f",
                329 * 1 / 87.0, 113 * 1.5 / 30, 329 * 3 / 87.0, 113 * 0.5 / 30),
            lineOf(QString("print QRCode on"),
                QRectF(329 * 1 / 87.0, 113 * 1.5 / 30, 329 * 40 / 87.0, 113)),
            lineOf(QString("print QRCode on"),
                QRectF(329 * 44 / 87.0, 113 * 1.5 / 30, 329 * 40 / 87.0, 113)),
        }));
}

// Also of a printer that can't print on its edges.
void tst_QRLabelPrinting::wholeSheetIsThePage()
{
    settings.write(with({{"printer name", "EDGE-BENCH"}}));
    LogCatcher log;
    QCOMPARE(print().size(), 1);
    QCOMPARE(log.count("paperRect = (0.000000, 0.000000, 329.000000, 113.000000)"), 1);
    QCOMPARE(log.count("pageRect = (0.000000, 0.000000, 329.000000, 113.000000)"), 1);
}

void tst_QRLabelPrinting::columns_data()
{
    QTest::addColumn<int>("column");
    QTest::addColumn<int>("labels");

    QTest::newRow("none") << 0 << 1;
    QTest::newRow("negative") << -3 << 1;
    QTest::newRow("one") << 1 << 1;
    QTest::newRow("three") << 3 << 3;
}

void tst_QRLabelPrinting::columns()
{
    QFETCH(int, column);
    QFETCH(int, labels);
    settings.write(with({{"label column", column}}));
    LogCatcher log;
    const QStringList jobs = print();
    QCOMPARE(jobs.size(), 1);
    QCOMPARE(log.beginning(labelLine).size(), labels);
    const EncodedCode code = encodedCode(id);
    QCOMPARE(
        PrintedPage(jobs.first()).rects().size(), modulesOf(code, QRect(), 70, 1).size() * labels);
}

// 87.9 mm of labels are printed on 87 mm, and a millimetre is an 87th of the page.
void tst_QRLabelPrinting::wholeMillimetresDecide()
{
    settings.write(with({{"label width", 40.45}}));
    LogCatcher log;
    QCOMPARE(print().size(), 1);
    QCOMPARE(log.beginning("paperSize = (87, 30)").size(), 1);
    const QStringList labels = log.beginning(labelLine);
    QCOMPARE(labels.size(), 2);
    QVERIFY(isNear(rectOf(labels.last()),
        QRectF(329 * 44.45 / 87, 113 * 1.5 / 30, 329 * 40.45 / 87, 113), 1e-5));
}

void tst_QRLabelPrinting::pageHasTheSizeOfTheStrip_data()
{
    QTest::addColumn<QString>("printer");
    QTest::addColumn<QVariantMap>("changes");
    QTest::addColumn<QSize>("millimetres");

    const QVariantMap threeColumns = {{"label column", 3}, {"label width", 50.5}};
    for (const char *printer : {"LABEL-300", "RAW-BENCH"}) {
        QTest::addRow("%s, two columns", printer) << printer << QVariantMap() << QSize(87, 30);
        QTest::addRow("%s, three columns", printer) << printer << threeColumns << QSize(161, 30);
        QTest::addRow("%s, upright", printer)
            << printer << QVariantMap({{"label column", 1}, {"label height", 80.9}})
            << QSize(44, 80);
    }
}

void tst_QRLabelPrinting::pageHasTheSizeOfTheStrip()
{
    QFETCH(QString, printer);
    QFETCH(QVariantMap, changes);
    QFETCH(QSize, millimetres);
    if (printer == "RAW-BENCH" && !PrintersHere::sizesAreFree)
        QSKIP("The driver prints on the largest page where a printer tells no sizes");
    settings.write(with({{"printer name", printer}}, with(changes)));
    const QStringList jobs = print();
    QCOMPARE(jobs.size(), 1);
    const PrintedPage page(jobs.first());
    QCOMPARE(page.pageCount(), 1);
    // A page is whole points.
    const QSizeF difference = page.millimetres() - QSizeF(millimetres);
    QVERIFY2(qAbs(difference.width()) < 0.4 && qAbs(difference.height()) < 0.4,
        qPrintable(QStringLiteral("%1 x %2")
                       .arg(page.millimetres().width())
                       .arg(page.millimetres().height())));
}

void tst_QRLabelPrinting::modulesLieWhereTheyShould_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QVector<QRect>>("labels");
    QTest::addColumn<double>("scale");

    // Pages of 44, 87 and 130 mm are 167, 329 and 492 pixels wide; 30 mm are 113 pixels.
    const QVector<QRect> one = {QRect(3, 5, 151, 113)};
    const QVector<QRect> two = {QRect(3, 5, 151, 113), QRect(166, 5, 151, 113)};
    const QVector<QRect> three = {
        QRect(3, 5, 151, 113), QRect(166, 5, 151, 113), QRect(329, 5, 151, 113)};
    QTest::newRow("one column") << id << one << 44 / 167.0;
    QTest::newRow("two columns") << id << two << 87 / 329.0;
    QTest::newRow("three columns") << id << three << 130 / 492.0;
    QTest::newRow("120 characters") << longText << one << 44 / 167.0;
    QTest::newRow("120 characters, three columns") << longText << three << 130 / 492.0;
}

// No module is as wide as its place: its sides are so many pixels as its place is millimetres.
void tst_QRLabelPrinting::modulesLieWhereTheyShould()
{
    QFETCH(QString, text);
    QFETCH(QVector<QRect>, labels);
    QFETCH(double, scale);
    settings.write(
        with({{"printer name", PrintersHere::plainQueue}, {"label column", labels.size()}}));
    setId(text);
    const QStringList jobs = print();
    QCOMPARE(jobs.size(), 1);
    const EncodedCode code = encodedCode(text);
    QVector<QRectF> modules;
    for (const QRect &label : labels)
        modules += modulesOf(code, label, 79, scale);

    const QVector<QRectF> rects = PrintedPage(jobs.first()).rects();
    QCOMPARE(rects.size(), modules.size());
    for (int i = 0; i < rects.size(); ++i) {
        QVERIFY2(isNear(rects[i], modules[i], PrintersHere::accuracy),
            qPrintable(lineOf("printed", rects[i]) + lineOf(", expected", modules[i])));
    }
}

void tst_QRLabelPrinting::nothingButCodesIsPrinted_data()
{
    QTest::addColumn<QString>("printer");

    for (const char *printer : {"LABEL-300", "RAW-BENCH"})
        QTest::newRow(printer) << printer;
}

// Neither text nor frame: each module is a fill and the outline that the pen adds.
void tst_QRLabelPrinting::nothingButCodesIsPrinted()
{
    QFETCH(QString, printer);
    settings.write(with({{"printer name", printer}}));
    const QStringList jobs = print();
    QCOMPARE(jobs.size(), 1);
    const int modules = modulesOf(encodedCode(id), QRect(), 70, 1).size() * 2;
    const PrintedPage page(jobs.first());
    QCOMPARE(page.rects().size(), modules);
    QCOMPARE(page.outlines(), modules);
    QCOMPARE(page.drawings(), modules * 2);
    QCOMPARE(page.writing(), QString());
}

void tst_QRLabelPrinting::lowCodeSitsOnTheEdge_data()
{
    QTest::addColumn<double>("millimetres");
    QTest::addColumn<int>("pixels");
    QTest::addColumn<int>("top");

    QTest::newRow("79 pixels") << 20.79 << 79 << 79 - 55;
    QTest::newRow("80 pixels") << 21.0 << 80 << (80 - 56) / 2;
}

void tst_QRLabelPrinting::lowCodeSitsOnTheEdge()
{
    QFETCH(double, millimetres);
    QFETCH(int, pixels);
    QFETCH(int, top);
    settings.write(with({{"printer name", PrintersHere::plainQueue}, {"label column", 1},
        {"label height", millimetres}, {"label padding top", 0.0}}));
    LogCatcher log;
    const QStringList jobs = print();
    QCOMPARE(jobs.size(), 1);
    QCOMPARE(int(rectOf(log.beginning(labelLine).value(0)).height()), pixels);
    const QVector<QRectF> rects = PrintedPage(jobs.first()).rects();
    QVERIFY(!rects.isEmpty());
    QVERIFY2(qAbs(rects.first().top() - top) < PrintersHere::accuracy,
        qPrintable(QString::number(rects.first().top())));
}

void tst_QRLabelPrinting::codesCanBeRead_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QVariantMap>("changes");
    QTest::addColumn<QSize>("page"); // pixels

    const QVariantMap oneColumn = {{"label column", 1}};
    const QVariantMap threeColumns = {{"label column", 3}};
    const QVariantMap small = {
        {"label width", 20.0}, {"label height", 10.0}, {"label padding top", 0.0}};
    const QSize one(167, 113), two(329, 113), three(492, 113);
    QTest::newRow("one column") << id << oneColumn << one;
    QTest::newRow("two columns") << id << QVariantMap() << two;
    QTest::newRow("three columns") << id << threeColumns << three;
    QTest::newRow("case and spaces") << " aB cD " << QVariantMap() << two;
    QTest::newRow("120 characters") << longText << oneColumn << one;
    QTest::newRow("120 characters, three columns") << longText << threeColumns << three;
    QTest::newRow("not ASCII") << QString::fromUtf8("摄像机-é-ß") << oneColumn << one;
    QTest::newRow("small labels") << id << small << QSize(177, 37);
}

void tst_QRLabelPrinting::codesCanBeRead()
{
    QFETCH(QString, text);
    QFETCH(QVariantMap, changes);
    QFETCH(QSize, page);
    const QVariantMap strip = with(changes);
    const double cell = page.height() * 0.7 / encodedCode(text)->width;
    const double broader = PrintersHere::accuracy;
    if (cell < 2 * broader)
        QSKIP("The driver's dots are too coarse for modules so small");
    settings.write(strip);
    setId(text);
    const QStringList jobs = print();
    QCOMPARE(jobs.size(), 1);
    const PrintedPage printed(jobs.first());
    const int columns = strip["label column"].toInt();
    for (int column = 0; column < columns; ++column)
        QCOMPARE(printed.read(squareOf(strip, column, page), cell, broader), text);
    QCOMPARE(printed.codeCount(cell, broader), columns);
}

// The other columns are still tried, and the page is printed.
void tst_QRLabelPrinting::textThatIsTooLongLeavesTheLabelBlank()
{
    setId(QString(1274, 'x'));
    LogCatcher log;
    const QStringList jobs = print();
    QCOMPARE(jobs.size(), 1);
    QCOMPARE(log.beginning(labelLine).size(), 2);
    const PrintedPage page(jobs.first());
    QCOMPARE(page.pageCount(), 1);
    QCOMPARE(page.rects().size(), 0);
    QVERIFY(!toast());
}

void tst_QRLabelPrinting::strangeSizes_data()
{
    QTest::addColumn<QVariantMap>("changes");
    QTest::addColumn<QString>("paper");

    QTest::newRow("lower than a millimetre") << QVariantMap({{"label height", 0.5}}) << "87, 0";
    QTest::newRow("narrower than one")
        << QVariantMap({{"label width", -3.5}, {"label column", 1}}) << "0, 30";
    QTest::newRow("not a number") << QVariantMap({{"label height", "nan"}}) << "87, 0";
    QTest::newRow("infinite") << QVariantMap({{"label width", "inf"}}) << "0, 30";
    QTest::newRow("beyond any int") << QVariantMap({{"label width", 1e300}}) << "0, 30";
}

// Nothing can be laid out on such a paper. It goes to the printer as any other, and blank.
void tst_QRLabelPrinting::strangeSizes()
{
    QFETCH(QVariantMap, changes);
    QFETCH(QString, paper);
    settings.write(with({{"printer name", "RAW-BENCH"}}, with(changes)));
    LogCatcher log;
    const QStringList jobs = print();
    QCOMPARE(jobs.size(), 1);
    QCOMPARE(log.beginning(QStringLiteral("paperSize = (%1)").arg(paper)).size(), 1);
    QCOMPARE(log.beginning(labelLine).size(), with(changes)["label column"].toInt());
    // No program renders a page without an area. A code takes 20000 bytes.
    const qint64 bytes = PrintedPage(jobs.first()).bytes();
    QVERIFY(bytes > 0 && bytes < 4000);
    QVERIFY(!toast());
}

// Nothing is remembered from one print to the next.
void tst_QRLabelPrinting::settingsAreReadAfresh()
{
    LogCatcher log;
    QCOMPARE(print().size(), 1);
    settings.write(with({{"label column", 1}, {"printer name", "RAW-BENCH"}}));
    const QStringList jobs = print();
    QCOMPARE(jobs.size(), 1);
    QVERIFY(jobs.first().startsWith("RAW-BENCH-"));
    QCOMPARE(log.beginning("paperSize = (87, 30)").size(), 1);
    QCOMPARE(log.beginning("paperSize = (44, 30)").size(), 1);
}

QTEST_MAIN(tst_QRLabelPrinting)

#include "tst_QRLabelPrinting.moc"

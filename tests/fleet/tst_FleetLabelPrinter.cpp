#include "FleetLabelPrinter.h"

#include "FleetLabelFolder.h"
#include "LabelBench.h"

#include <thread>
#include <vector>

using namespace LabelEyes;

namespace {

constexpr int side = 600; // of the labels here

// A text with the usual values, of which a test changes some.
struct Text {
    int x = 300;
    int y = 300;
    int height = 60;
    int width = 0;
    const char *font = "Arial";
    int orientation = 1;
    int weight = 400;
    int italic = 0;
    int underline = 0;
    int strikeOut = 0;
    const char *text = "Text";
};

struct Code {
    int x = 100;
    int y = 100;
    int version = 2;
    int orientation = 0;
    int magnification = 8;
    int level = 1;
    const char *text = "KVMR2G0001A2B3C4";
};

int draw(FleetLabelPrinter &printer, const Text &t)
{
    return printer.drawText(t.x, t.y, t.height, t.width, t.font, t.orientation, t.weight, t.italic,
        t.underline, t.strikeOut, "Name", t.text);
}

int draw(FleetLabelPrinter &printer, const Code &c)
{
    return printer.drawQRCode(
        c.x, c.y, 1, c.version, c.orientation, c.magnification, 2, c.level, 8, c.text);
}

void setUp(FleetLabelPrinter &printer)
{
    QCOMPARE(printer.openPort("POSTEK G6000"), 0);
    QCOMPARE(printer.setLabelHeight(side, 0, 0, 0), 0);
    QCOMPARE(printer.setLabelWidth(side), 0);
    QCOMPARE(printer.setDarkness(20), 0);
}

// A label with one item, by a printer of its own.
template <class Item> QImage printed(const Item &item, int direction = 'B')
{
    const LabelBench bench;
    FleetLabelPrinter printer(bench.home());
    setUp(printer);
    printer.setDirection(direction);
    if (draw(printer, item) != 0 || printer.printLabel(1, 1) != 0)
        return QImage();
    return bench.label();
}

}

class tst_FleetLabelPrinter : public QObject
{
    Q_OBJECT

private slots:
    void productLabel();
    void productLabelApart();
    void size();
    void density();

    void orientations_data();
    void orientations();
    void heights();
    void widths();
    void weights();
    void styles();
    void fonts();

    void codeSizes_data();
    void codeSizes();
    void codeOrientations_data();
    void codeOrientations();
    void codeTexts_data();
    void codeTexts();

    void direction();
    void darkness();
    void readableDarkness_data();
    void readableDarkness();
    void cut_data();
    void cut();
    void bufferStays();
    void clearedBuffer();
    void numbering();
    void sharedFolder();
    void copies();
    void tooManyCopies();
};

void tst_FleetLabelPrinter::productLabel()
{
    const LabelBench bench;
    FleetLabelPrinter printer(bench.home());
    ProductLabel::print(printer);
    const QImage label = bench.label();
    QCOMPARE(label.size(), QSize(ProductLabel::side, ProductLabel::side));
    QCOMPARE(label.dotsPerMeterX(), 23529); // a dot is 0.0425 millimetres
    QCOMPARE(label.dotsPerMeterY(), 23529);

    using namespace ProductLabel;
    QCOMPARE(decoded(label, label.rect()), QString(code));
    const QRect codeArea(qrX, qrY, qrSide, qrSide);
    QCOMPARE(ink(label.copy(codeArea)), QRect(0, 0, qrSide, qrSide));
    QCOMPARE(decoded(label, codeArea), QString(code));
}

// Each item by itself: where its ink lies, and that no two meet.
void tst_FleetLabelPrinter::productLabelApart()
{
    using namespace ProductLabel;
    const auto alone = [](const auto &item) {
        const LabelBench bench;
        FleetLabelPrinter printer(bench.home());
        ProductLabel::setUp(printer);
        item(printer);
        printer.printLabel(1, 1);
        return ink(bench.label());
    };
    const auto text = [&](const ProductLabel::Text &item) {
        return alone([&](FleetLabelPrinter &printer) { ProductLabel::draw(printer, item); });
    };
    const QRect model = text(modelText), codeLine = text(codeText), serial = text(serialText);
    const QRect qr = alone([](FleetLabelPrinter &printer) { drawCode(printer); });

    QCOMPARE(qr, QRect(143, 423, 200, 200));
    for (const auto &[area, item] : {std::make_pair(model, modelText), {serial, serialText}}) {
        QVERIFY(qAbs(area.left() - item.x) <= item.height / 5); // the first letter's own bearing
        QVERIFY(area.top() > item.y && area.bottom() < item.y + item.height);
        QVERIFY(area.height() > item.height / 2);
    }
    QCOMPARE(codeText.x, 248);
    QVERIFY(qAbs(codeLine.center().x() - codeText.x) <= 2);
    QVERIFY(qAbs(codeLine.center().x() - qr.center().x()) <= 8);
    QVERIFY(codeLine.top() > codeText.y && codeLine.bottom() < codeText.y + codeText.height);

    const QVector<QRect> areas{model, qr, codeLine, serial};
    for (const QRect &area : areas) {
        QVERIFY(QRect(0, 0, ProductLabel::side, ProductLabel::side).contains(area));
        for (const QRect &other : areas)
            QVERIFY(&other == &area || !area.intersects(other));
    }
}

void tst_FleetLabelPrinter::size()
{
    const LabelBench bench;
    FleetLabelPrinter printer(bench.home());
    printer.openPort("any");
    QCOMPARE(printer.printLabel(1, 1), int(FleetLabelPrinter::Refused));
    QCOMPARE(bench.line()["reason"].toString(), QString("the label has no size yet"));
    printer.setLabelWidth(301);
    printer.setLabelHeight(77, 5, 0, 0);
    QCOMPARE(printer.printLabel(1, 1), 0);
    QCOMPARE(bench.label().size(), QSize(301, 77));
    QCOMPARE(inkDots(bench.label()), 0);
}

void tst_FleetLabelPrinter::density()
{
    const LabelBench bench;
    bench.configure(R"({"density": 8})");
    FleetLabelPrinter printer(bench.home());
    setUp(printer);
    QCOMPARE(printer.printLabel(1, 1), 0);
    QCOMPARE(bench.label().dotsPerMeterX(), 8000);
    QCOMPARE(bench.label().dotsPerMeterY(), 8000);
}

void tst_FleetLabelPrinter::orientations_data()
{
    QTest::addColumn<int>("orientation");
    QTest::addColumn<int>("quarters");
    QTest::addColumn<bool>("centred");
    for (int orientation = 1; orientation <= 8; ++orientation) {
        QTest::addRow("%d", orientation)
            << orientation << (orientation - 1) % 4 << (orientation > 4);
    }
}

void tst_FleetLabelPrinter::orientations()
{
    QFETCH(int, orientation);
    QFETCH(int, quarters);
    QFETCH(bool, centred);
    Text text;
    const QRect upright = ink(printed(text)).translated(-text.x, -text.y);
    QVERIFY(upright.width() > upright.height());
    QVERIFY(upright.left() >= 0 && upright.top() > 0);
    QVERIFY(upright.bottom() < text.height);

    text.orientation = orientation;
    QRect area = ink(printed(text));
    area.translate(-text.x, -text.y);
    // Turned back, so that only the offset of the centred ones is left.
    const QRect back = QTransform().rotate(-90 * quarters).mapRect(QRectF(area)).toAlignedRect();
    if (centred) {
        QVERIFY2(qAbs(back.center().x()) <= 3, qPrintable(QString::number(back.center().x())));
        const int offset = back.left() - upright.left();
        QVERIFY(isNear(back, upright.translated(offset, 0), 2));
    } else {
        QVERIFY(isNear(back, upright, 2));
    }
}

void tst_FleetLabelPrinter::heights()
{
    Text text;
    text.x = text.y = 10;
    text.text = "Ig"; // a capital's top, a descent
    text.height = 100;
    const QRect small = ink(printed(text));
    text.height = 400;
    const QRect large = ink(printed(text));
    // Both in the cell, of which these letters fill most.
    QVERIFY(small.bottom() < 10 + 100 && small.height() > 60);
    QVERIFY(large.bottom() < 10 + 400);
    QVERIFY(qAbs(large.height() - 4 * small.height()) <= 8);
    QVERIFY(qAbs(large.width() - 4 * small.width()) <= 8);
}

void tst_FleetLabelPrinter::widths()
{
    Text text;
    text.x = 10;
    const QRect natural = ink(printed(text));
    text.width = 20;
    const QRect narrow = ink(printed(text));
    text.width = 60;
    const QRect wide = ink(printed(text));
    QVERIFY(narrow.width() < natural.width());
    QVERIFY(natural.width() < wide.width());
    QVERIFY(qAbs(wide.width() - 3 * narrow.width()) <= 5);
    QVERIFY(qAbs(wide.height() - narrow.height()) <= 2);
    QVERIFY(qAbs(wide.height() - natural.height()) <= 2);
}

void tst_FleetLabelPrinter::weights()
{
    const auto dots = [](int weight) {
        Text text;
        text.weight = weight;
        return inkDots(printed(text));
    };
    QCOMPARE(dots(0), dots(400));
    QVERIFY(dots(400) * 5 < dots(700) * 4);
    QCOMPARE(dots(690), dots(700));
}

void tst_FleetLabelPrinter::styles()
{
    Text text;
    text.text = "IIII";
    const QRect plain = ink(printed(text));
    text.italic = 1;
    QVERIFY(ink(printed(text)).width() > plain.width());
    text.italic = 0;

    text.underline = 1;
    const QRect underlined = ink(printed(text));
    QVERIFY(underlined.bottom() > plain.bottom());
    QVERIFY(underlined.width() > plain.width());
    QCOMPARE(underlined.top(), plain.top());
    text.underline = 0;

    text.strikeOut = 1;
    const QImage struck = printed(text);
    QCOMPARE(ink(struck).bottom(), plain.bottom());
    const QImage upper = struck.copy(0, 0, side, plain.center().y());
    QVERIFY(ink(struck).width() > plain.width());
    QCOMPARE(ink(upper).top(), plain.top());
}

void tst_FleetLabelPrinter::fonts()
{
    Text text;
    text.x = 10;
    text.text = "KVMR2G0001";
    const QRect arial = ink(printed(text));
    text.font = "Arial Narrow";
    const QRect narrow = ink(printed(text));
    QVERIFY(narrow.width() * 10 < arial.width() * 9);
    text.font = "No Such Font";
    QVERIFY(!ink(printed(text)).isNull());
    text.font = "";
    QVERIFY(!ink(printed(text)).isNull());
    text.text = "";
    const QImage empty = printed(text);
    QCOMPARE(empty.size(), QSize(side, side));
    QVERIFY(ink(empty).isNull());
}

void tst_FleetLabelPrinter::codeSizes_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<int>("level");
    QTest::addColumn<int>("version"); // asked for at the least
    QTest::addColumn<int>("magnification");
    QTest::addColumn<int>("side");
    const QByteArray thirty(30, 'x'), forty(40, 'x'), one(1, 'x');
    QTest::newRow("version 1") << one << 1 << 0 << 8 << 21 * 8;
    QTest::newRow("at least 1") << one << 1 << 1 << 8 << 21 * 8;
    QTest::newRow("at least 2") << one << 1 << 2 << 8 << 25 * 8;
    QTest::newRow("at least 10") << one << 1 << 10 << 8 << 57 * 8;
    QTest::newRow("small modules") << one << 1 << 2 << 3 << 25 * 3;
    // Capacities in bytes: version 2 has 32, 26, 20, 14 and version 3 has 53, 42, 32, 24.
    QTest::newRow("30, L") << thirty << 0 << 2 << 8 << 25 * 8;
    QTest::newRow("30, M") << thirty << 1 << 2 << 8 << 29 * 8;
    QTest::newRow("30, Q") << thirty << 2 << 2 << 8 << 29 * 8;
    QTest::newRow("30, H") << thirty << 3 << 2 << 8 << 33 * 8;
    QTest::newRow("40, M") << forty << 1 << 2 << 8 << 29 * 8;
    QTest::newRow("40, Q") << forty << 2 << 2 << 8 << 33 * 8;
}

void tst_FleetLabelPrinter::codeSizes()
{
    QFETCH(QByteArray, text);
    QFETCH(int, level);
    QFETCH(int, version);
    QFETCH(int, magnification);
    Code code;
    code.text = text;
    code.level = level;
    code.version = version;
    code.magnification = magnification;
    const QImage label = printed(code);
    QFETCH(int, side);
    const QRect area(code.x, code.y, side, side);
    QCOMPARE(ink(label), area);
    QCOMPARE(decoded(label, area), QString(text));
}

void tst_FleetLabelPrinter::codeOrientations_data()
{
    QTest::addColumn<int>("orientation");
    QTest::addColumn<QPoint>("free"); // the corner, in quarters, without a finder pattern
    QTest::newRow("0") << 0 << QPoint(1, 1);
    QTest::newRow("1") << 1 << QPoint(0, 1);
    QTest::newRow("2") << 2 << QPoint(0, 0);
    QTest::newRow("3") << 3 << QPoint(1, 0);
}

void tst_FleetLabelPrinter::codeOrientations()
{
    QFETCH(int, orientation);
    QFETCH(QPoint, free);
    Code code;
    code.orientation = orientation;
    const QImage label = printed(code);
    const QRect area(code.x, code.y, 200, 200);
    QCOMPARE(ink(label), area);
    QCOMPARE(decoded(label, area), QString(code.text));
    const int finder = 7 * code.magnification;
    for (const QPoint &corner : {QPoint(0, 0), QPoint(1, 0), QPoint(0, 1), QPoint(1, 1)}) {
        // A finder pattern's outer ring is dark all along the edge.
        const QRect edge(
            area.topLeft() + corner * (200 - finder) + QPoint(0, corner.y() * (finder - 8)),
            QSize(finder, 8));
        QCOMPARE(inkDots(label.copy(edge)) == finder * 8, corner != free);
    }
}

void tst_FleetLabelPrinter::codeTexts_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("digits") << "0123456789";
    QTest::newRow("small letters") << "abc xyz";
    QTest::newRow("Chinese") << QString::fromUtf8("\xe6\xa0\x87\xe7\xad\xbe");
    QTest::newRow("long") << QString(1500, 'K');
}

void tst_FleetLabelPrinter::codeTexts()
{
    QFETCH(QString, text);
    const QByteArray bytes = text.toUtf8();
    Code code;
    code.x = code.y = 10;
    code.magnification = 3;
    code.text = bytes;
    const QImage label = printed(code);
    QCOMPARE(decoded(label, label.rect()), text);
}

void tst_FleetLabelPrinter::direction()
{
    Text text;
    text.x = 20;
    text.y = 30;
    const QImage upright = printed(text, 'B');
    QVERIFY(QRect(0, 0, 300, 100).contains(ink(upright)));
    const QImage turned = printed(text, 'T');
    QCOMPARE(turned, upright.mirrored(true, true));
    QVERIFY(turned != upright);
}

void tst_FleetLabelPrinter::darkness()
{
    const LabelBench bench;
    FleetLabelPrinter printer(bench.home());
    setUp(printer);
    draw(printer, Code());
    int lighter = 255;
    for (int darkness = 0; darkness <= 20; ++darkness) {
        QCOMPARE(printer.setDarkness(darkness), 0);
        QCOMPARE(printer.printLabel(1, 1), 0);
        const int grey = qGray(bench.label().pixel(101, 101));
        QVERIFY(grey < lighter);
        lighter = grey;
    }
    QCOMPARE(lighter, 0);
}

void tst_FleetLabelPrinter::readableDarkness_data()
{
    QTest::addColumn<int>("darkness");
    for (int darkness : {10, 14, 20})
        QTest::addRow("%d", darkness) << darkness;
}

void tst_FleetLabelPrinter::readableDarkness()
{
    QFETCH(int, darkness);
    const LabelBench bench;
    FleetLabelPrinter printer(bench.home());
    setUp(printer);
    printer.setDarkness(darkness);
    draw(printer, Code());
    printer.printLabel(1, 1);
    QCOMPARE(decoded(bench.label(), bench.label().rect()), QString(Code().text));
}

void tst_FleetLabelPrinter::cut_data()
{
    QTest::addColumn<QPoint>("at");
    QTest::addColumn<QRect>("codeInk"); // of a code of 200 dots there
    QTest::newRow("right edge") << QPoint(side - 56, 100) << QRect(side - 56, 100, 56, 200);
    QTest::newRow("left edge") << QPoint(-144, 100) << QRect(0, 100, 56, 200);
    QTest::newRow("upper edge") << QPoint(100, -144) << QRect(100, 0, 200, 56);
    QTest::newRow("lower edge") << QPoint(100, side - 56) << QRect(100, side - 56, 200, 56);
    QTest::newRow("beside") << QPoint(side, 100) << QRect();
    QTest::newRow("above") << QPoint(100, -200) << QRect();
    QTest::newRow("far") << QPoint(100000, 100000) << QRect();
    QTest::newRow("far before") << QPoint(-100000, -100000) << QRect();
}

void tst_FleetLabelPrinter::cut()
{
    QFETCH(QPoint, at);
    QFETCH(QRect, codeInk);
    Code code;
    code.x = at.x();
    code.y = at.y();
    const QImage label = printed(code);
    QCOMPARE(label.size(), QSize(side, side));
    QCOMPARE(ink(label), codeInk);
    Text text;
    text.x = at.x();
    text.y = at.y();
    text.height = 200;
    QCOMPARE(ink(printed(text)).isNull(), codeInk.isNull());
}

void tst_FleetLabelPrinter::bufferStays()
{
    const LabelBench bench;
    FleetLabelPrinter printer(bench.home());
    setUp(printer);
    draw(printer, Code());
    printer.printLabel(1, 1);
    const QImage first = bench.label();
    printer.printLabel(1, 1);
    QCOMPARE(bench.label(), first);
}

void tst_FleetLabelPrinter::clearedBuffer()
{
    const LabelBench bench;
    FleetLabelPrinter printer(bench.home());
    setUp(printer);
    draw(printer, Code());
    QCOMPARE(printer.clearBuffer(), 0);
    QCOMPARE(printer.printLabel(1, 1), 0);
    QCOMPARE(bench.label().size(), QSize(side, side)); // what was set stays
    QCOMPARE(inkDots(bench.label()), 0);
}

void tst_FleetLabelPrinter::numbering()
{
    const LabelBench bench;
    for (int i = 0; i < 2; ++i) {
        FleetLabelPrinter printer(bench.home());
        setUp(printer);
        QCOMPARE(printer.printLabel(1, 1), 0);
    }
    QCOMPARE(bench.labels(), QStringList({"label-000001.png", "label-000002.png"}));
    QFile::remove(bench.path("labels/label-000001.png"));
    QFile::copy(bench.path("labels/label-000002.png"), bench.path("labels/label-000041.png"));
    QFile::copy(bench.path("labels/label-000002.png"), bench.path("labels/label-x.png"));
    FleetLabelPrinter printer(bench.home());
    setUp(printer);
    printer.printLabel(1, 1);
    QCOMPARE(bench.labels(),
        QStringList({"label-000002.png", "label-000041.png", "label-000042.png", "label-x.png"}));
}

// Printers that take their numbers from one folder at the same time replace none of each other's
// labels.
void tst_FleetLabelPrinter::sharedFolder()
{
    constexpr int printers = 4, labels = 50;
    const LabelBench bench;
    QStringList names[printers];
    std::vector<std::thread> threads;
    for (int i = 0; i < printers; ++i) {
        threads.emplace_back([&, i] {
            const FleetLabelFolder folder(bench.path("labels"));
            QString error;
            for (int label = 0; label < labels; ++label)
                names[i] += folder.store(QByteArray::number(i), 1, &error);
        });
    }
    for (std::thread &thread : threads)
        thread.join();
    QCOMPARE(bench.labels().size(), printers * labels);
    for (int i = 0; i < printers; ++i) {
        QCOMPARE(names[i].size(), labels);
        for (const QString &name : names[i]) {
            QFile file(bench.path("labels/" + name));
            QVERIFY(file.open(QIODevice::ReadOnly));
            QCOMPARE(file.readAll(), QByteArray::number(i));
        }
    }
}

void tst_FleetLabelPrinter::copies()
{
    const LabelBench bench;
    FleetLabelPrinter printer(bench.home());
    setUp(printer);
    draw(printer, Code());
    QCOMPARE(printer.printLabel(2, 3), 0);
    QCOMPARE(bench.labels().size(), 6);
    QCOMPARE(bench.line()["labels"].toArray(), QJsonArray::fromStringList(bench.labels()));
    const QImage first(bench.path("labels/label-000001.png"));
    QVERIFY(!first.isNull());
    for (const QString &name : bench.labels())
        QCOMPARE(QImage(bench.path("labels/" + name)), first);
    // Nothing but labels and the journal.
    QCOMPARE(QDir(bench.path("labels")).entryList(QDir::Files).size(), 7);
}

void tst_FleetLabelPrinter::tooManyCopies()
{
    const LabelBench bench;
    FleetLabelPrinter printer(bench.home());
    setUp(printer);
    printer.setLabelHeight(8, 0, 0, 0);
    printer.setLabelWidth(8);
    QCOMPARE(printer.printLabel(2, 501), int(FleetLabelPrinter::Refused));
    QCOMPARE(bench.labels(), QStringList());
    QCOMPARE(printer.printLabel(2, 500), 0);
    QCOMPARE(bench.labels().size(), 1000);
}

QTEST_MAIN(tst_FleetLabelPrinter)
#include "tst_FleetLabelPrinter.moc"

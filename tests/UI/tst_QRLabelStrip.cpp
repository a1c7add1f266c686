#include "QRLabelStrip.h"

#include "SettingsFile.h"

#include <QtTest>

#include <cmath>
#include <limits>

namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();

QRLabelStrip makeStrip(double width, double height, int column)
{
    QRLabelStrip strip;
    strip.width = width;
    strip.height = height;
    strip.column = column;
    strip.left = 1;
    strip.top = 1.5;
    strip.right = 3;
    strip.bottom = 0.5;
    strip.padding = 3;
    return strip;
}

}

class tst_QRLabelStrip : public QObject
{
    Q_OBJECT

private slots:
    void cleanup() { settings.remove(); }
    void readsTheSettings();
    void absentSettingsAreZero();
    void size_data();
    void size();
    void columns_data();
    void columns();
    void paperSize_data();
    void paperSize();
    void places();
    void factorFollowsTheWholeMillimetres();
    void factorsOfTheAxesAreTheirOwn();
    void codeSize_data();
    void codeSize();
    void scaleIsOfTheWholeSheet();
    void canDraw_data();
    void canDraw();
    void wholePartOf_data();
    void wholePartOf();

private:
    SettingsFile settings;
};

void tst_QRLabelStrip::readsTheSettings()
{
    settings.write({{"label width", 40.5}, {"label height", 30.25}, {"label column", 3},
        {"label padding", 1.5}, {"label padding left", 2.5}, {"label padding top", 3.5},
        {"label padding right", 4.5}, {"label padding bottom", 5.5}});
    const QRLabelStrip strip = QRLabelStrip::saved();
    QCOMPARE(strip.width, 40.5);
    QCOMPARE(strip.height, 30.25);
    QCOMPARE(strip.column, 3);
    QCOMPARE(strip.padding, 1.5);
    QCOMPARE(strip.left, 2.5);
    QCOMPARE(strip.top, 3.5);
    QCOMPARE(strip.right, 4.5);
    QCOMPARE(strip.bottom, 5.5);
}

void tst_QRLabelStrip::absentSettingsAreZero()
{
    for (const QRLabelStrip &strip : {QRLabelStrip(), QRLabelStrip::saved()}) {
        for (double length : {strip.width, strip.height, strip.padding, strip.left, strip.top,
                 strip.right, strip.bottom})
            QCOMPARE(length, 0.0);
        QCOMPARE(strip.column, 0);
        QVERIFY(!strip.hasSize());
    }
}

void tst_QRLabelStrip::size_data()
{
    QTest::addColumn<double>("width");
    QTest::addColumn<double>("height");
    QTest::addColumn<bool>("has");

    QTest::newRow("both") << 40.0 << 30.0 << true;
    QTest::newRow("no width") << 0.0 << 30.0 << false;
    QTest::newRow("no height") << 40.0 << 0.0 << false;
    QTest::newRow("minus zero") << -0.0 << 30.0 << false;
    QTest::newRow("the least is a size") << 5e-324 << 5e-324 << true;
    QTest::newRow("a negative size is one") << -1.0 << -0.5 << true;
    QTest::newRow("not a number is one") << notANumber << 30.0 << true;
}

void tst_QRLabelStrip::size()
{
    QFETCH(double, width);
    QFETCH(double, height);
    QTEST(makeStrip(width, height, 1).hasSize(), "has");
}

void tst_QRLabelStrip::columns_data()
{
    QTest::addColumn<int>("column");
    QTest::addColumn<int>("columns");

    QTest::newRow("three") << 3 << 3;
    QTest::newRow("one") << 1 << 1;
    QTest::newRow("none") << 0 << 1;
    QTest::newRow("negative") << -4 << 1;
}

void tst_QRLabelStrip::columns()
{
    QFETCH(int, column);
    QFETCH(int, columns);
    const QRLabelStrip strip = makeStrip(40, 30, column);
    QCOMPARE(strip.columns(), columns);
    QCOMPARE(strip.paperSize(), QSize((columns - 1) * 3 + 4 + columns * 40, 30));
}

void tst_QRLabelStrip::paperSize_data()
{
    QTest::addColumn<QSizeF>("label");
    QTest::addColumn<int>("column");
    QTest::addColumn<QSize>("paper");

    QTest::newRow("two columns") << QSizeF(40, 30) << 2 << QSize(87, 30);
    QTest::newRow("truncated") << QSizeF(40.45, 30.99) << 2 << QSize(87, 30); // 87.9 wide
    QTest::newRow("one column has no gap") << QSizeF(40, 30) << 1 << QSize(44, 30);
    QTest::newRow("lower than a millimetre") << QSizeF(40, 0.5) << 1 << QSize(44, 0);
    QTest::newRow("narrower than its margins") << QSizeF(-3.5, 30) << 1 << QSize(0, 30);
    QTest::newRow("negative goes to zero") << QSizeF(-40.7, -30.7) << 1 << QSize(-36, -30);
    QTest::newRow("out of all proportion") << QSizeF(1e300, infinity) << 2 << QSize(0, 0);
    QTest::newRow("not numbers") << QSizeF(notANumber, notANumber) << 2 << QSize(0, 0);
    QTest::newRow("too many columns") << QSizeF(40, 30) << 2147483647 << QSize(0, 30);
}

// The margins above and below are no part of the height.
void tst_QRLabelStrip::paperSize()
{
    QFETCH(QSizeF, label);
    QFETCH(int, column);
    QTEST(makeStrip(label.width(), label.height(), column).paperSize(), "paper");
}

void tst_QRLabelStrip::places()
{
    const QRectF page(0, 0, 870, 600);
    const QRLabelPlaces places = makeStrip(40, 30, 2).places(page, page);
    QCOMPARE(places.margins, QMarginsF(10, 30, 30, 10));
    QCOMPARE(places.labelSize, QSizeF(400, 600));
    QCOMPARE(places.gap, 30.0);
    QCOMPARE(places.codeSize, 420);
    QCOMPARE(places.scale, 0.1);
    QCOMPARE(places.label(0), QRectF(10, 30, 400, 600));
    QCOMPARE(places.label(1), QRectF(440, 30, 400, 600));
    QCOMPARE(places.label(2), QRectF(870, 30, 400, 600));
}

// 87.9 millimetres are 87: what doesn't fit hangs over the edge.
void tst_QRLabelStrip::factorFollowsTheWholeMillimetres()
{
    const QRectF page(0, 0, 870, 300);
    const QRLabelPlaces places = makeStrip(40.45, 30.9, 2).places(page, page);
    QCOMPARE(places.labelSize, QSizeF(404.5, 309));
    QCOMPARE(places.label(1), QRectF(444.5, 15, 404.5, 309));
    QCOMPARE(places.codeSize, 216);
}

void tst_QRLabelStrip::factorsOfTheAxesAreTheirOwn()
{
    const QRLabelPlaces places =
        makeStrip(40, 30, 2).places(QRectF(5, 6, 174, 90), QRectF(0, 0, 348, 100));
    QCOMPARE(places.label(1), QRectF(88, 4.5, 80, 90));
    QCOMPARE(places.margins, QMarginsF(2, 4.5, 6, 1.5));
    QCOMPARE(places.gap, 6.0);
}

void tst_QRLabelStrip::codeSize_data()
{
    QTest::addColumn<double>("height");
    QTest::addColumn<int>("codeSize");

    QTest::newRow("100 pixels") << 100.0 << 70;
    QTest::newRow("79 pixels") << 79.0 << 55;
    QTest::newRow("80 pixels") << 80.0 << 56;
    QTest::newRow("113 pixels") << 113.0 << 79;
    QTest::newRow("one pixel") << 1.0 << 0;
}

void tst_QRLabelStrip::codeSize()
{
    QFETCH(double, height);
    const QRectF page(0, 0, 300, height);
    QTEST(makeStrip(40, 30, 1).places(page, page).codeSize, "codeSize");
}

void tst_QRLabelStrip::scaleIsOfTheWholeSheet()
{
    const QRLabelStrip strip = makeStrip(40, 30, 2);
    QCOMPARE(strip.places(QRectF(0, 0, 10, 10), QRectF(0, 0, 348, 1)).scale, 0.25);
    QCOMPARE(strip.places(QRectF(0, 0, 10, 10), QRectF(0, 0, 43.5, 1)).scale, 2.0);
}

void tst_QRLabelStrip::canDraw_data()
{
    QTest::addColumn<QSizeF>("label");
    QTest::addColumn<QRectF>("sheet");
    QTest::addColumn<bool>("can");

    const QRectF sheet(0, 0, 300, 100);
    QTest::newRow("a label") << QSizeF(40, 30) << sheet << true;
    QTest::newRow("a negative one") << QSizeF(-40, -30) << sheet << true;
    QTest::newRow("no height") << QSizeF(40, 0.5) << sheet << false;
    QTest::newRow("no height and no sheet") << QSizeF(40, 0.5) << QRectF(0, 0, 300, 0) << false;
    QTest::newRow("no width") << QSizeF(-3.5, 30) << sheet << false;
    QTest::newRow("not numbers") << QSizeF(notANumber, notANumber) << sheet << false;
    QTest::newRow("far too large") << QSizeF(1e300, 1e300) << sheet << false;
    QTest::newRow("no sheet") << QSizeF(40, 30) << QRectF() << false;
    QTest::newRow("sheet of billions") << QSizeF(40, 30) << QRectF(0, 0, 1e10, 1e10) << false;
}

void tst_QRLabelStrip::canDraw()
{
    QFETCH(QSizeF, label);
    QFETCH(QRectF, sheet);
    QTEST(makeStrip(label.width(), label.height(), 1).places(sheet, sheet).canDraw(0), "can");
}

void tst_QRLabelStrip::wholePartOf_data()
{
    QTest::addColumn<double>("number");
    QTest::addColumn<int>("whole");

    QTest::newRow("none") << 0.0 << 0;
    QTest::newRow("cut") << 87.9 << 87;
    QTest::newRow("cut to zero") << -87.9 << -87;
    QTest::newRow("large") << 1e8 << 100000000;
    QTest::newRow("too large") << 3e9 << 0;
    QTest::newRow("too small") << -3e9 << 0;
    QTest::newRow("infinite") << infinity << 0;
    QTest::newRow("not a number") << notANumber << 0;
}

void tst_QRLabelStrip::wholePartOf()
{
    QFETCH(double, number);
    QTEST(wholePart(number), "whole");
}

QTEST_GUILESS_MAIN(tst_QRLabelStrip)

#include "tst_QRLabelStrip.moc"

#include "ZROutline.h"

#include <QDebug>
#include <QImage>
#include <QPainter>
#include <QPen>
#include <QtTest>

Q_DECLARE_METATYPE(QPolygonF)

class tst_ZROutline : public QObject
{
    Q_OBJECT

private slots:
    void cornersOfPath_data();
    void cornersOfPath();
    void boundsAreTheRectangle_data();
    void boundsAreTheRectangle();
    void hiddenPenIsTransparentWhite();
    void drawSelectsPenAndSolidBrush();
};

namespace {
// Where the path's lines and arcs begin and end; the control points of the curves are left out.
QPolygonF stations(const QPainterPath &path)
{
    QPolygonF points;
    for (int i = 0; i < path.elementCount(); ++i) {
        const QPainterPath::Element element = path.elementAt(i);
        if (element.isCurveTo()) {
            i += 2; // the third element of a curve is its end
            points << path.elementAt(i);
        } else {
            points << element;
        }
    }
    return points;
}

bool samePoints(const QPolygonF &a, const QPolygonF &b)
{
    return a.size() == b.size()
        && std::equal(a.begin(), a.end(), b.begin(),
            [](const QPointF &p, const QPointF &q) { return QLineF(p, q).length() < 1e-6; });
}
}

void tst_ZROutline::cornersOfPath_data()
{
    QTest::addColumn<int>("radius");
    QTest::addColumn<QPolygonF>("expected");

    const QPolygonF square{{{0, 0}, {40, 0}, {40, 20}, {0, 20}, {0, 0}}};
    QTest::newRow("no radius") << 0 << square;
    QTest::newRow("negative radius") << -5 << square;
    QTest::newRow("radius") << 4
                            << QPolygonF({{4, 0}, {0, 4}, {0, 16}, {4, 20}, {36, 20}, {40, 16},
                                   {40, 4}, {36, 0}, {4, 0}});
    QTest::newRow("not clamped to half the height")
        << 15
        << QPolygonF(
               {{15, 0}, {0, 15}, {0, 5}, {15, 20}, {25, 20}, {40, 5}, {40, 15}, {25, 0}, {15, 0}});
}

void tst_ZROutline::cornersOfPath()
{
    QFETCH(int, radius);
    QFETCH(QPolygonF, expected);
    const QPolygonF actual = stations(ZROutline::path(radius, 40, 20));
    QString text;
    QDebug(&text) << actual;
    QVERIFY2(samePoints(actual, expected), qPrintable(text));
}

void tst_ZROutline::boundsAreTheRectangle_data()
{
    QTest::addColumn<int>("radius");
    for (int radius : {-1, 0, 1, 10})
        QTest::addRow("%d", radius) << radius;
}

void tst_ZROutline::boundsAreTheRectangle()
{
    QFETCH(int, radius);
    QCOMPARE(ZROutline::path(radius, 61, 33).boundingRect(), QRectF(0, 0, 61, 33));
}

void tst_ZROutline::hiddenPenIsTransparentWhite()
{
    QCOMPARE(ZROutline::hiddenPen().color(), QColor(255, 255, 255, 0));
}

void tst_ZROutline::drawSelectsPenAndSolidBrush()
{
    QImage image(10, 10, QImage::Format_ARGB32_Premultiplied);
    QPainter painter(&image);
    ZROutline::draw(painter, ZROutline::path(0, 10, 10), QPen(Qt::red, 3), Qt::blue);
    QCOMPARE(painter.pen(), QPen(Qt::red, 3));
    QCOMPARE(painter.brush(), QBrush(Qt::blue, Qt::SolidPattern));
}

QTEST_MAIN(tst_ZROutline)
#include "tst_ZROutline.moc"

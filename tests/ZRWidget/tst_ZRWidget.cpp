#include "Painting.h"
#include "ZROutline.h"
#include "ZRWidget.h"

#include <QPainter>
#include <QtTest>

class tst_ZRWidget : public QObject
{
    Q_OBJECT

private slots:
    void addsNoMetaObject();
    void paintsNothingAtFirst();
    void fillCoversTheWidget();
    void outline_data();
    void outline();
    void corners_data();
    void corners();
    void antialiased();
    void radiusAboveHalfTheHeight();
    void settersRepaint();
};

namespace {
const QColor red(255, 0, 0);
const QColor blue(0, 0, 255);
}

void tst_ZRWidget::addsNoMetaObject()
{
    QCOMPARE(ZRWidget(nullptr).metaObject(), &QWidget::staticMetaObject);
}

void tst_ZRWidget::paintsNothingAtFirst()
{
    ZRWidget widget(nullptr);
    widget.resize(40, 20);
    QVERIFY(paintedArea(painted(widget)).isNull());
}

void tst_ZRWidget::fillCoversTheWidget()
{
    ZRWidget widget(nullptr);
    widget.resize(40, 20);
    widget.setBackgroundColor(blue);
    QImage expected(40, 20, QImage::Format_ARGB32_Premultiplied);
    expected.fill(blue);
    QCOMPARE(painted(widget), expected);
}

void tst_ZRWidget::outline_data()
{
    QTest::addColumn<int>("width");
    QTest::addColumn<int>("visible"); // the outer half of the pen is clipped

    QTest::newRow("negative") << -3 << 0;
    QTest::newRow("none, colour or not") << 0 << 0;
    QTest::newRow("2") << 2 << 1;
    QTest::newRow("8") << 8 << 4;
}

void tst_ZRWidget::outline()
{
    QFETCH(int, width);
    QFETCH(int, visible);
    ZRWidget widget(nullptr);
    widget.resize(40, 20);
    widget.setBackgroundColor(blue);
    widget.setBorder(0, width, red);

    QImage expected(40, 20, QImage::Format_ARGB32_Premultiplied);
    expected.fill(red);
    QPainter(&expected).fillRect(
        expected.rect().adjusted(visible, visible, -visible, -visible), blue);
    QCOMPARE(painted(widget), expected);
}

void tst_ZRWidget::corners_data()
{
    QTest::addColumn<int>("radius");
    QTest::addColumn<bool>("filled");
    QTest::newRow("negative") << -4 << true;
    QTest::newRow("none") << 0 << true;
    QTest::newRow("round") << 8 << false;
}

void tst_ZRWidget::corners()
{
    QFETCH(int, radius);
    QFETCH(bool, filled);
    ZRWidget widget(nullptr);
    widget.resize(40, 20);
    widget.setBackgroundColor(blue);
    widget.setBorder(radius, 0, red);

    const QImage image = painted(widget);
    for (const QPoint &corner : {QPoint(0, 0), QPoint(39, 0), QPoint(0, 19), QPoint(39, 19)})
        QCOMPARE(image.pixelColor(corner), filled ? blue : QColor(0, 0, 0, 0));
    for (const QPoint &inside : {QPoint(20, 0), QPoint(0, 10), QPoint(39, 10), QPoint(20, 19)})
        QCOMPARE(image.pixelColor(inside), blue);
}

void tst_ZRWidget::antialiased()
{
    ZRWidget widget(nullptr);
    widget.resize(40, 20);
    widget.setBackgroundColor(blue);
    widget.setBorder(8, 0, red);

    int partlyCovered = 0;
    const QImage image = painted(widget);
    for (int x = 0; x < 8; ++x) {
        for (int y = 0; y < 8; ++y) {
            const int alpha = qAlpha(image.pixel(x, y));
            partlyCovered += alpha > 0 && alpha < 255;
        }
    }
    QVERIFY(partlyCovered > 4);
}

void tst_ZRWidget::radiusAboveHalfTheHeight()
{
    ZRWidget widget(nullptr);
    widget.resize(40, 20);
    widget.setBackgroundColor(blue);
    widget.setBorder(15, 2, red);

    QImage expected(40, 20, QImage::Format_ARGB32_Premultiplied);
    expected.fill(Qt::transparent);
    QPainter painter(&expected);
    painter.setRenderHint(QPainter::Antialiasing);
    ZROutline::draw(painter, ZROutline::path(15, 40, 20), QPen(red, 2), blue);
    painter.end();
    QCOMPARE(painted(widget), expected);
    // Where a radius clamped to 10 would have left the corner empty, the arcs overlap.
    widget.setBorder(10, 2, red);
    QVERIFY(painted(widget) != expected);
}

void tst_ZRWidget::settersRepaint()
{
    ZRWidget widget(nullptr);
    PaintCounter counter(widget);
    QVERIFY(counter.waitForRest());
    QCOMPARE(counter.paintsOf([] {}), 0);
    QCOMPARE(counter.paintsOf([&] { widget.setBackgroundColor(blue); }), 1);
    QCOMPARE(counter.paintsOf([&] { widget.setBorder(1, 1, red); }), 1);
}

QTEST_MAIN(tst_ZRWidget)
#include "tst_ZRWidget.moc"

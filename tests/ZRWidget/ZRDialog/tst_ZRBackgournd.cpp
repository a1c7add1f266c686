#include "ZRBackgournd.h"

#include "Painting.h"

#include <QImage>
#include <QPainter>
#include <QtTest>

class tst_ZRBackgournd : public QObject
{
    Q_OBJECT

private slots:
    void initialFields();
    void paintsNothingAtFirst();
    void outlineHasNoWidth_data();
    void outlineHasNoWidth();
    void corners_data();
    void corners();
    void selectsPenAndBrush();
};

namespace {
const QSize size(40, 20);

class Background : public ZRBackgournd
{
public:
    using ZRBackgournd::backgroundColor;
    using ZRBackgournd::borderColor;
    using ZRBackgournd::borderWidth;
    using ZRBackgournd::radius;

    Background() = default;
    Background(int radius, int borderWidth)
    {
        this->radius = radius;
        this->borderWidth = borderWidth;
        borderColor = Qt::red;
        backgroundColor = Qt::blue;
    }

    QImage image()
    {
        QImage image(size, QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::transparent);
        QPainter painter(&image);
        paintBackground(painter, size.width(), size.height());
        return image;
    }
};
}

void tst_ZRBackgournd::initialFields()
{
    const Background background;
    QCOMPARE(background.radius, 0);
    QCOMPARE(background.borderWidth, 0);
    QCOMPARE(background.borderColor, QColor(255, 255, 255, 0));
    QCOMPARE(background.backgroundColor, QColor(255, 255, 255, 0));
}

void tst_ZRBackgournd::paintsNothingAtFirst()
{
    QVERIFY(paintedArea(Background().image()).isNull());
}

void tst_ZRBackgournd::outlineHasNoWidth_data()
{
    QTest::addColumn<int>("borderWidth");
    QTest::addColumn<bool>("outlined");
    QTest::newRow("negative") << -1 << false;
    QTest::newRow("0, colour or not") << 0 << false;
    QTest::newRow("1") << 1 << true;
    QTest::newRow("9, as thin as 1") << 9 << true;
}

void tst_ZRBackgournd::outlineHasNoWidth()
{
    QFETCH(int, borderWidth);
    QFETCH(bool, outlined);
    const QImage image = Background(0, borderWidth).image();
    const QColor edge = outlined ? Qt::red : Qt::blue;
    QCOMPARE(image.pixelColor(0, 10), edge);
    QCOMPARE(image.pixelColor(20, 0), edge);
    QCOMPARE(image.pixelColor(1, 10), QColor(Qt::blue));
    QCOMPARE(image.pixelColor(20, 1), QColor(Qt::blue));
    QCOMPARE(image.pixelColor(38, 18), QColor(Qt::blue));
}

void tst_ZRBackgournd::corners_data()
{
    QTest::addColumn<int>("radius");
    QTest::addColumn<int>("borderWidth");
    QTest::addColumn<bool>("filled");
    QTest::newRow("negative") << -4 << 0 << true;
    QTest::newRow("none") << 0 << 0 << true;
    QTest::newRow("round") << 8 << 0 << false;
    QTest::newRow("round, outlined") << 8 << 1 << false;
}

void tst_ZRBackgournd::corners()
{
    QFETCH(int, radius);
    QFETCH(int, borderWidth);
    QFETCH(bool, filled);
    const QImage image = Background(radius, borderWidth).image();
    for (const QPoint &corner : {QPoint(0, 0), QPoint(39, 0), QPoint(0, 19), QPoint(39, 19)})
        QCOMPARE(qAlpha(image.pixel(corner)), filled ? 255 : 0);
    QCOMPARE(image.pixelColor(20, 10), QColor(Qt::blue));
    // No pixel is covered in part: it asks for no antialiasing.
    for (int i = 0; i < size.width() * size.height(); ++i) {
        const int alpha = qAlpha(image.pixel(i % size.width(), i / size.width()));
        QVERIFY(alpha == 0 || alpha == 255);
    }
}

void tst_ZRBackgournd::selectsPenAndBrush()
{
    QImage image(size, QImage::Format_ARGB32_Premultiplied);
    QPainter painter(&image);
    Background(0, 7).paintBackground(painter, 40, 20);
    QCOMPARE(painter.pen(), QPen(Qt::red));
    QCOMPARE(painter.brush(), QBrush(Qt::blue, Qt::SolidPattern));
    Background(0, 0).paintBackground(painter, 40, 20);
    QCOMPARE(painter.pen().color(), QColor(255, 255, 255, 0));
}

QTEST_MAIN(tst_ZRBackgournd)
#include "tst_ZRBackgournd.moc"

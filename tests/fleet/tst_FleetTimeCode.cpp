#include "FleetTimeCode.h"

#include <QDateTime>
#include <QTest>

#include <algorithm>
#include <random>
#include <vector>

namespace {

// A grey picture.
struct Picture {
    int width;
    int height;
    std::vector<uint8_t> luma;

    Picture(int width, int height, uint8_t grey = 128) :
        width(width),
        height(height),
        luma(size_t(width) * size_t(height), grey)
    { }

    uint8_t at(int x, int y) const { return luma[size_t(y * width + x)]; }
    uint8_t &at(int x, int y) { return luma[size_t(y * width + x)]; }
    int64_t time() const { return FleetTimeCode::read(luma.data(), width, width, height); }
    void setTime(int64_t ms) { FleetTimeCode::write(luma.data(), width, width, height, ms); }
};

uint8_t between(double a, double b, double part)
{
    return uint8_t(a + (b - a) * part + 0.5);
}

Picture bilinear(const Picture &from, int width, int height)
{
    Picture to(width, height);
    for (int y = 0; y < height; ++y) {
        const double sy = std::max(0.0, (y + 0.5) * from.height / height - 0.5);
        const int y0 = int(sy);
        const int y1 = std::min(y0 + 1, from.height - 1);
        for (int x = 0; x < width; ++x) {
            const double sx = std::max(0.0, (x + 0.5) * from.width / width - 0.5);
            const int x0 = int(sx);
            const int x1 = std::min(x0 + 1, from.width - 1);
            to.at(x, y) = between(between(from.at(x0, y0), from.at(x1, y0), sx - x0),
                between(from.at(x0, y1), from.at(x1, y1), sx - x0), sy - y0);
        }
    }
    return to;
}

Picture nearest(const Picture &from, int width, int height)
{
    Picture to(width, height);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x)
            to.at(x, y) = from.at(x * from.width / width, y * from.height / height);
    }
    return to;
}

using Scale = Picture (*)(const Picture &, int, int);

}

Q_DECLARE_METATYPE(Scale)

class tst_FleetTimeCode : public QObject
{
    Q_OBJECT

private slots:
    void roundTrip_data();
    void roundTrip();
    void scaled_data();
    void scaled();
    void noise();
    void contrast_data();
    void contrast();
    void shifted_data();
    void shifted();
    void justTheStrip();
    void nothingOutside();
    void everyCellCounts();
    void noCode_data();
    void noCode();
    void mixedPictures();
};

void tst_FleetTimeCode::roundTrip_data()
{
    QTest::addColumn<qint64>("ms");
    QTest::newRow("first") << qint64(0);
    QTest::newRow("one") << qint64(1);
    QTest::newRow("2024") << qint64(1710836130250);
    QTest::newRow("now") << QDateTime::currentMSecsSinceEpoch();
    QTest::newRow("last") << qint64(FleetTimeCode::end - 1);
}

void tst_FleetTimeCode::roundTrip()
{
    QFETCH(qint64, ms);
    for (const QSize &size : {QSize(1920, 1080), QSize(1280, 720), QSize(640, 480), QSize(400, 225),
             QSize(322, 242), QSize(160, 120)}) {
        Picture picture(size.width(), size.height());
        picture.setTime(ms);
        QCOMPARE(qint64(picture.time()), ms);
    }
}

void tst_FleetTimeCode::scaled_data()
{
    QTest::addColumn<Scale>("scale");
    QTest::addColumn<QSize>("to");
    const struct {
        const char *name;
        Scale scale;
    } ways[] = {{"bilinear", bilinear}, {"nearest", nearest}};
    for (const auto &way : ways) {
        for (const QSize &to : {QSize(400, 225), QSize(400, 300), QSize(401, 227), QSize(559, 315),
                 QSize(640, 360), QSize(799, 599), QSize(1277, 719), QSize(2000, 1125)})
            QTest::addRow("%s %dx%d", way.name, to.width(), to.height()) << way.scale << to;
    }
}

void tst_FleetTimeCode::scaled()
{
    QFETCH(Scale, scale);
    QFETCH(QSize, to);
    for (const QSize &from : {QSize(640, 480), QSize(1280, 720), QSize(1920, 1080)}) {
        for (int i = 0; i < 5; ++i) {
            const qint64 ms = 1710836130250 + i * 40;
            Picture picture(from.width(), from.height());
            picture.setTime(ms);
            QCOMPARE(qint64(scale(picture, to.width(), to.height()).time()), ms);
        }
    }
}

void tst_FleetTimeCode::noise()
{
    std::mt19937 random(7);
    std::normal_distribution<double> deviation(0, 40);
    for (int i = 0; i < 50; ++i) {
        const qint64 ms = 1710836130250 + i * 40;
        Picture picture(400, 225);
        picture.setTime(ms);
        for (uint8_t &value : picture.luma)
            value = uint8_t(qBound(0.0, value + deviation(random), 255.0));
        QCOMPARE(qint64(picture.time()), ms);
    }
}

void tst_FleetTimeCode::contrast_data()
{
    QTest::addColumn<int>("black");
    QTest::addColumn<int>("white");
    QTest::addColumn<bool>("readable");
    QTest::newRow("full range") << 0 << 255 << true;
    QTest::newRow("dim") << 0 << 90 << true;
    QTest::newRow("bright") << 170 << 255 << true;
    QTest::newRow("inverted") << 235 << 16 << false;
    QTest::newRow("flat") << 100 << 130 << false;
}

void tst_FleetTimeCode::contrast()
{
    QFETCH(int, black);
    QFETCH(int, white);
    QFETCH(bool, readable);
    const qint64 ms = 1710836130250;
    Picture picture(640, 480);
    picture.setTime(ms);
    for (uint8_t &value : picture.luma)
        value = uint8_t(qBound(0, black + (value - 16) * (white - black) / 219, 255));
    QCOMPARE(qint64(picture.time()), readable ? ms : -1);
}

void tst_FleetTimeCode::shifted_data()
{
    QTest::addColumn<QPoint>("by");
    for (int x : {-2, 0, 2}) {
        for (int y : {-1, 0, 1})
            QTest::addRow("%d,%d", x, y) << QPoint(x, y);
    }
}

// Whoever cuts the picture out of a screen may be a pixel off.
void tst_FleetTimeCode::shifted()
{
    QFETCH(QPoint, by);
    const qint64 ms = 1710836130250;
    Picture picture(400, 225);
    picture.setTime(ms);
    Picture moved(400, 225);
    for (int y = 0; y < 225; ++y) {
        for (int x = 0; x < 400; ++x)
            moved.at(x, y) = picture.at(qBound(0, x + by.x(), 399), qBound(0, y + by.y(), 224));
    }
    QCOMPARE(qint64(moved.time()), ms);
}

void tst_FleetTimeCode::justTheStrip()
{
    const qint64 ms = 1710836130250;
    const FleetTimeCode::Strip strip = FleetTimeCode::strip(1280, 720);
    QCOMPARE(strip.x, 0);
    QCOMPARE(strip.y, 0);
    QCOMPARE(strip.width, 1280);
    QCOMPARE(strip.height, 60);
    constexpr int stride = 1300;
    std::vector<uint8_t> buffer(size_t(strip.height) * stride); // its end is guarded
    FleetTimeCode::write(buffer.data(), stride, 1280, 720, ms);
    QCOMPARE(qint64(FleetTimeCode::read(buffer.data(), stride, 1280, 720)), ms);
}

void tst_FleetTimeCode::nothingOutside()
{
    for (const QSize &size : {QSize(1280, 720), QSize(401, 227)}) {
        Picture picture(size.width(), size.height(), 77);
        picture.setTime(1710836130250);
        const FleetTimeCode::Strip strip = FleetTimeCode::strip(picture.width, picture.height);
        for (int y = 0; y < picture.height; ++y) {
            for (int x = 0; x < picture.width; ++x)
                QCOMPARE(picture.at(x, y) == 77, y >= strip.height);
        }
    }
}

// One cell of the wrong colour, and the time is not believed.
void tst_FleetTimeCode::everyCellCounts()
{
    Picture good(680, 480);
    good.setTime(1710836130250);
    for (int row = 0; row < 2; ++row) {
        for (int column = 1; column < 33; ++column) {
            Picture picture = good;
            for (int y = row * 20; y < row * 20 + 20; ++y) {
                for (int x = column * 20; x < column * 20 + 20; ++x)
                    picture.at(x, y) = uint8_t(251 - picture.at(x, y));
            }
            QCOMPARE(qint64(picture.time()), qint64(-1));
        }
    }
}

void tst_FleetTimeCode::noCode_data()
{
    QTest::addColumn<QSize>("size");
    QTest::newRow("usual") << QSize(1280, 720);
    QTest::newRow("tiny") << QSize(8, 8);
    QTest::newRow("one pixel") << QSize(1, 1);
    QTest::newRow("none") << QSize(0, 0);
}

void tst_FleetTimeCode::noCode()
{
    QFETCH(QSize, size);
    for (int grey : {0, 128, 255})
        QCOMPARE(qint64(Picture(size.width(), size.height(), uint8_t(grey)).time()), qint64(-1));
    std::mt19937 random(3);
    for (int i = 0; i < 100; ++i) {
        Picture picture(size.width(), size.height());
        for (uint8_t &value : picture.luma)
            value = uint8_t(random());
        QCOMPARE(qint64(picture.time()), qint64(-1));
    }
}

// The upper row of one picture over the lower row of another is no time.
void tst_FleetTimeCode::mixedPictures()
{
    for (int i = 1; i < 100; ++i) {
        Picture first(640, 480);
        first.setTime(1710836130250);
        Picture second(640, 480);
        second.setTime(1710836130250 + i * 40);
        std::copy(first.luma.begin(), first.luma.begin() + 640 * 20, second.luma.begin());
        const qint64 time = second.time();
        QVERIFY2(time == -1 || time == 1710836130250 + i * 40, qPrintable(QString::number(time)));
    }
}

QTEST_GUILESS_MAIN(tst_FleetTimeCode)
#include "tst_FleetTimeCode.moc"

#include "FleetPicture.h"
#include "FleetTimeCode.h"

#include <QSize>
#include <QTest>

namespace {

constexpr int64_t someTime = 1710836130250;

int64_t timeOf(const FleetPicture &picture)
{
    return FleetTimeCode::read(
        picture.bytes().data(), picture.stride(), picture.width(), picture.height());
}

uint8_t greyAt(const FleetPicture &picture, int x, int y)
{
    return picture.bytes()[size_t(y * picture.stride() + x)];
}

// Bytes that differ.
int changes(const std::vector<uint8_t> &a, const std::vector<uint8_t> &b)
{
    int count = 0;
    for (size_t i = 0; i < a.size(); ++i)
        count += a[i] != b[i];
    return count;
}

}

class tst_FleetPicture : public QObject
{
    Q_OBJECT

private slots:
    void sizes_data();
    void sizes();
    void colours();
    void timeCodeHasNoColour();
    void blockWanders();
    void texts();
    void longName();
    void littleChanges();
    void drawnAfresh();
};

void tst_FleetPicture::sizes_data()
{
    QTest::addColumn<QSize>("size");
    QTest::addColumn<int>("bytes");
    QTest::newRow("full") << QSize(1920, 1080) << 1920 * 1080 * 3 / 2;
    QTest::newRow("half") << QSize(1280, 720) << 1280 * 720 * 3 / 2;
    QTest::newRow("small") << QSize(640, 480) << 640 * 480 * 3 / 2;
    QTest::newRow("uneven rows") << QSize(322, 242) << 324 * 242 + 2 * 164 * 121;
    QTest::newRow("smallest") << QSize(64, 64) << 64 * 64 * 3 / 2;
    QTest::newRow("largest") << QSize(4096, 2304) << 4096 * 2304 * 3 / 2;
}

void tst_FleetPicture::sizes()
{
    QFETCH(QSize, size);
    QFETCH(int, bytes);
    FleetPicture picture(size.width(), size.height());
    picture.draw("Camera-0001", "2024-03-19 08:15:30", someTime);
    QCOMPARE(int(picture.bytes().size()), bytes);
    if (size.width() >= 160)
        QCOMPARE(qint64(timeOf(picture)), qint64(someTime));
}

void tst_FleetPicture::colours()
{
    FleetPicture picture(1280, 720);
    picture.draw("", "", someTime);
    const uint8_t *const u = picture.bytes().data() + 1280 * 720;
    const uint8_t *const v = u + 640 * 360;
    // The middle of the second bar is yellow, that of the last black.
    QCOMPARE(int(greyAt(picture, 240, 180)), 162);
    QCOMPARE(int(u[90 * 640 + 120]), 44);
    QCOMPARE(int(v[90 * 640 + 120]), 142);
    QCOMPARE(int(greyAt(picture, 1200, 180)), 16);
    QCOMPARE(int(u[90 * 640 + 600]), 128);
    QCOMPARE(int(v[90 * 640 + 600]), 128);
}

void tst_FleetPicture::timeCodeHasNoColour()
{
    FleetPicture picture(1280, 720);
    const uint8_t *const u = picture.bytes().data() + 1280 * 720;
    for (int i = 0; i < 640 * FleetTimeCode::strip(1280, 720).height / 2; ++i) {
        QCOMPARE(int(u[i]), 128);
        QCOMPARE(int(u[640 * 360 + i]), 128);
    }
}

// To the right for two seconds, and back.
void tst_FleetPicture::blockWanders()
{
    FleetPicture picture(1280, 720);
    const auto left = [&](int64_t ms) {
        picture.draw("", "", ms);
        int x = 0;
        while (x < 1280 && greyAt(picture, x, 390) != 235)
            ++x;
        return x;
    };
    QCOMPARE(left(0), 0);
    QCOMPARE(left(1000), 595);
    QCOMPARE(left(2000), 1190);
    QCOMPARE(left(3000), 595);
    QCOMPARE(left(4000), 0);
}

void tst_FleetPicture::texts()
{
    FleetPicture picture(640, 480);
    picture.draw("A", "1", someTime);
    const std::vector<uint8_t> first = picture.bytes();
    picture.draw("a", "1", someTime);
    QCOMPARE(changes(first, picture.bytes()), 0); // capitals only
    picture.draw("B", "1", someTime);
    QVERIFY(changes(first, picture.bytes()) > 0);
    picture.draw("A", "2", someTime);
    QVERIFY(changes(first, picture.bytes()) > 0);
    picture.draw(QString::fromUtf8("\u6444"), "1", someTime);
    const std::vector<uint8_t> unknown = picture.bytes();
    picture.draw(" ", "1", someTime);
    QVERIFY(changes(unknown, picture.bytes()) > 0); // a letter that it lacks is not left out
}

void tst_FleetPicture::longName()
{
    FleetPicture picture(640, 480);
    picture.draw(QString(1000, 'W'), QString(1000, 'W'), someTime); // cut, inside of the picture
    QCOMPARE(qint64(timeOf(picture)), qint64(someTime));
}

// Encoding is to cost little.
void tst_FleetPicture::littleChanges()
{
    FleetPicture picture(1280, 720);
    picture.draw("Camera-0001", "2024-03-19 08:15:30", someTime);
    const std::vector<uint8_t> before = picture.bytes();
    picture.draw("Camera-0001", "2024-03-19 08:15:30", someTime + 40);
    const int changed = changes(before, picture.bytes());
    QVERIFY(changed > 0);
    QVERIFY2(changed < 1280 * 720 / 10, qPrintable(QString::number(changed)));
}

// Nothing of earlier pictures stays.
void tst_FleetPicture::drawnAfresh()
{
    FleetPicture used(640, 480);
    for (int i = 0; i < 100; ++i)
        used.draw(QString(i % 20, 'X'), QString::number(i), someTime - i * 77);
    used.draw("Camera-0001", "2024-03-19 08:15:30", someTime);
    FleetPicture fresh(640, 480);
    fresh.draw("Camera-0001", "2024-03-19 08:15:30", someTime);
    QCOMPARE(changes(used.bytes(), fresh.bytes()), 0);
}

QTEST_GUILESS_MAIN(tst_FleetPicture)
#include "tst_FleetPicture.moc"

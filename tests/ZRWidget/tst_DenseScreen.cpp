#include "ImageButtonChecks.h"
#include "ZRPixmapButton.h"
#include "ZRPixmapCache.h"
#include "ZRPixmapsButton.h"

#include <QApplication>
#include <QPainter>

// Images on a screen of two pixels a unit, where name@2x.png stands in for name.png.
class tst_DenseScreen : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void widthIsInUnits();
    void scaledCopyIsAsDense_data();
    void scaledCopyIsAsDense();
    void scaledOnce();
    void fileWithoutDenseTwin();
    void sizeHint_data();
    void sizeHint();
    void buttonIsCrisp_data();
    void buttonIsCrisp();
};

namespace {
// Lines a pixel wide, black and white by turns: what is scaled or blurred differs.
QImage stripes(const QSize &size)
{
    QImage image(size, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::white);
    QPainter painter(&image);
    for (int x = 0; x < size.width(); x += 2)
        painter.drawLine(x, 0, x, size.height());
    return image;
}

// A file of `size` units and its dense twin, of which only the second is striped.
QString saveTwins(const QTemporaryDir &folder, const QSize &size)
{
    QImage plain(size, QImage::Format_ARGB32);
    plain.fill(Qt::red);
    const QString path = folder.filePath("icon.png");
    const bool saved = plain.save(path) && stripes(2 * size).save(folder.filePath("icon@2x.png"));
    return saved ? path : QString();
}
}

void tst_DenseScreen::initTestCase()
{
    QCOMPARE(qApp->devicePixelRatio(), 2.0);
}

void tst_DenseScreen::widthIsInUnits()
{
    const QTemporaryDir folder;
    const QString path = saveTwins(folder, {20, 10});
    const QPixmap own = ZRPixmapCache::pixmap(path, 0);
    QCOMPARE(own.size(), QSize(40, 20));
    QCOMPARE(own.devicePixelRatioF(), 2.0);
    QCOMPARE(ZRPixmapCache::size(own), QSize(20, 10));
    QCOMPARE(ZRPixmapCache::pixmap(path, 20).cacheKey(), own.cacheKey());
}

void tst_DenseScreen::scaledCopyIsAsDense_data()
{
    QTest::addColumn<int>("width");
    QTest::addColumn<QSize>("pixels");
    QTest::newRow("narrower") << 10 << QSize(20, 10);
    QTest::newRow("as wide as the file has pixels") << 40 << QSize(80, 40);
    QTest::newRow("odd") << 15 << QSize(30, 15);
}

void tst_DenseScreen::scaledCopyIsAsDense()
{
    QFETCH(int, width);
    QFETCH(QSize, pixels);
    const QTemporaryDir folder;
    const QPixmap scaled = ZRPixmapCache::pixmap(saveTwins(folder, {20, 10}), width);
    QCOMPARE(scaled.size(), pixels);
    QCOMPARE(scaled.devicePixelRatioF(), 2.0);
}

void tst_DenseScreen::scaledOnce()
{
    const QTemporaryDir folder;
    const QString path = saveTwins(folder, {20, 10});
    const qint64 key = ZRPixmapCache::pixmap(path, 10).cacheKey();
    QCOMPARE(ZRPixmapCache::pixmap(path, 10).cacheKey(), key);
}

void tst_DenseScreen::fileWithoutDenseTwin()
{
    ImageButtonChecks::Images images;
    const QString path = images.save({40, 20}, Qt::red);
    QCOMPARE(ZRPixmapCache::pixmap(path, 0).size(), QSize(40, 20));
    QCOMPARE(ZRPixmapCache::pixmap(path, 20).size(), QSize(20, 10));
    QCOMPARE(ZRPixmapCache::pixmap(path, 20).devicePixelRatioF(), 1.0);
}

void tst_DenseScreen::sizeHint_data()
{
    QTest::addColumn<int>("width");
    QTest::addColumn<QSize>("expected");
    QTest::newRow("the file's own") << 0 << QSize(40, 20);
    QTest::newRow("narrower") << 20 << QSize(20, 10);
}

void tst_DenseScreen::sizeHint()
{
    QFETCH(int, width);
    QFETCH(QSize, expected);
    const QTemporaryDir folder;
    const QString path = saveTwins(folder, {40, 20});
    ZRPixmapButton one(nullptr);
    one.setPixmap(path, width);
    QCOMPARE(one.sizeHint(), expected);
    ZRPixmapsButton two(nullptr);
    two.setPixmaps(path, QString(), width);
    QCOMPARE(two.sizeHint(), expected);
}

void tst_DenseScreen::buttonIsCrisp_data()
{
    QTest::addColumn<int>("width");
    QTest::newRow("the file's own") << 0;
    QTest::newRow("20") << 20;
}

void tst_DenseScreen::buttonIsCrisp()
{
    QFETCH(int, width);
    const QTemporaryDir folder;
    ZRPixmapButton button(nullptr);
    button.setPixmap(saveTwins(folder, {20, 20}), width);
    button.resize(20, 20);
    const QImage shown = button.grab().toImage().convertToFormat(QImage::Format_RGB32);
    QCOMPARE(shown.devicePixelRatioF(), 2.0);
    QImage expected = stripes({40, 40}).convertToFormat(QImage::Format_RGB32);
    expected.setDevicePixelRatio(2);
    QCOMPARE(shown, expected);
}

int main(int argc, char *argv[])
{
    qputenv("QT_SCALE_FACTOR", "2"); // read when the application is made
    QApplication application(argc, argv);
    tst_DenseScreen test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_DenseScreen.moc"

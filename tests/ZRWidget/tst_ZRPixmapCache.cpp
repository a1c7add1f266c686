#include "ZRPixmapCache.h"

#include <QImage>
#include <QTemporaryDir>
#include <QtTest>

class tst_ZRPixmapCache : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void emptyPathIsNull();
    void widthZeroIsTheFilesOwn();
    void scalesToWidth();
    void keepsWhatItScaled();
    void readsTheFileOnce();
    void firstAskedScaledThenOriginal();
    void missingFileIsNullForEver();
    void plainScreenLeavesDenseTwin();
    void denseFileKeepsItsRatio();

private:
    QString save(const QString &name, const QSize &size, const QColor &color);

    QScopedPointer<QTemporaryDir> folder; // a fresh one for each test, as the cache drops nothing
};

void tst_ZRPixmapCache::init()
{
    folder.reset(new QTemporaryDir);
    QVERIFY(folder->isValid());
}

QString tst_ZRPixmapCache::save(const QString &name, const QSize &size, const QColor &color)
{
    QImage image(size, QImage::Format_ARGB32);
    image.fill(color);
    const QString path = folder->filePath(name);
    return image.save(path) ? path : QString();
}

void tst_ZRPixmapCache::emptyPathIsNull()
{
    QVERIFY(ZRPixmapCache::pixmap(QString(), 0).isNull());
    QVERIFY(ZRPixmapCache::pixmap(QString(), 20).isNull());
}

void tst_ZRPixmapCache::widthZeroIsTheFilesOwn()
{
    const QString path = save("a.png", {40, 20}, Qt::red);
    const QPixmap own = ZRPixmapCache::pixmap(path, 0);
    QCOMPARE(own.size(), QSize(40, 20));
    QCOMPARE(own.toImage().pixelColor(39, 19), QColor(Qt::red));
    QCOMPARE(ZRPixmapCache::pixmap(path, 40).cacheKey(), own.cacheKey());
}

void tst_ZRPixmapCache::scalesToWidth()
{
    const QString path = save("a.png", {40, 20}, Qt::red);
    QCOMPARE(ZRPixmapCache::pixmap(path, 20).size(), QSize(20, 10));
    QCOMPARE(ZRPixmapCache::pixmap(path, 80).size(), QSize(80, 40));
    QCOMPARE(ZRPixmapCache::pixmap(path, 20).toImage().pixelColor(10, 5), QColor(Qt::red));
}

void tst_ZRPixmapCache::keepsWhatItScaled()
{
    const QString path = save("a.png", {40, 20}, Qt::red);
    const qint64 key = ZRPixmapCache::pixmap(path, 20).cacheKey();
    ZRPixmapCache::pixmap(path, 30);
    QCOMPARE(ZRPixmapCache::pixmap(path, 20).cacheKey(), key);
}

void tst_ZRPixmapCache::readsTheFileOnce()
{
    const QString path = save("a.png", {40, 20}, Qt::red);
    QVERIFY(!ZRPixmapCache::pixmap(path, 0).isNull());
    QVERIFY(QFile::remove(path));
    QCOMPARE(ZRPixmapCache::pixmap(path, 0).size(), QSize(40, 20));
    QCOMPARE(ZRPixmapCache::pixmap(path, 10).size(), QSize(10, 5)); // scaled from the first
}

void tst_ZRPixmapCache::firstAskedScaledThenOriginal()
{
    const QString path = save("a.png", {40, 20}, Qt::red);
    QCOMPARE(ZRPixmapCache::pixmap(path, 20).size(), QSize(20, 10));
    QCOMPARE(ZRPixmapCache::pixmap(path, 0).size(), QSize(40, 20));
}

void tst_ZRPixmapCache::missingFileIsNullForEver()
{
    const QString path = folder->filePath("late.png");
    QVERIFY(ZRPixmapCache::pixmap(path, 0).isNull());
    QVERIFY(ZRPixmapCache::pixmap(path, 20).isNull());
    QCOMPARE(save("late.png", {40, 20}, Qt::red), path);
    QVERIFY(ZRPixmapCache::pixmap(path, 0).isNull());
    QVERIFY(ZRPixmapCache::pixmap(path, 20).isNull());
}

void tst_ZRPixmapCache::plainScreenLeavesDenseTwin()
{
    const QString path = save("a.png", {40, 20}, Qt::red);
    save("a@2x.png", {80, 40}, Qt::blue);
    const QPixmap own = ZRPixmapCache::pixmap(path, 0);
    QCOMPARE(own.size(), QSize(40, 20));
    QCOMPARE(own.toImage().pixelColor(0, 0), QColor(Qt::red));
}

// A file that is dense by its name is so on any screen.
void tst_ZRPixmapCache::denseFileKeepsItsRatio()
{
    const QString path = save("a@2x.png", {80, 40}, Qt::red);
    const QPixmap own = ZRPixmapCache::pixmap(path, 0);
    QCOMPARE(own.size(), QSize(80, 40));
    QCOMPARE(ZRPixmapCache::size(own), QSize(40, 20));
    QCOMPARE(ZRPixmapCache::pixmap(path, 40).cacheKey(), own.cacheKey());

    const QPixmap scaled = ZRPixmapCache::pixmap(path, 20);
    QCOMPARE(scaled.size(), QSize(40, 20));
    QCOMPARE(scaled.devicePixelRatioF(), 2.0);
}

QTEST_MAIN(tst_ZRPixmapCache)
#include "tst_ZRPixmapCache.moc"

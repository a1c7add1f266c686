#include "MetaMethods.h"
#include "Painting.h"
#include "ZRProgress.h"

#include <QPainter>
#include <QSignalSpy>
#include <QtMath>
#include <QtTest>

class tst_ZRProgress : public QObject
{
    Q_OBJECT

private slots:
    void metaObject();
    void initialState();
    void properties();
    void stoppedPaintsNothing();
    void displayedWhenStopped();
    void startShowsAndStopHides();
    void startBeginsAtAngleZero();
    void spokes_data();
    void spokes();
    void thickness_data();
    void thickness();
    void smallerSideCounts();
    void color();
    void timerTurnsIt();
    void delayOfRunningTimer();
    void delayReplacesRunningTimer();
    void delayStartsNoTimer();
    void secondStartKeepsOneTimer();
    void percentage_data();
    void percentage();
    void percentageText_data();
    void percentageText();
    void hundredEndsAtNextPaint();
    void repaints();
};

namespace {
constexpr int never = 10 * 60 * 1000; // ms

// Shown, running, and turned only by the test. 101 pixels: spokes from 19 to 50 off the centre.
// Without a frame, which may not be so narrow.
class StillProgress : public ZRProgress
{
public:
    explicit StillProgress(int side = 101) : ZRProgress(nullptr)
    {
        setWindowFlag(Qt::FramelessWindowHint);
        resize(side, side);
        setAnimationDelay(never);
        startAnimation();
    }
};

void step(ZRProgress &progress, int count = 1)
{
    for (int i = 0; i < count; ++i) {
        QTimerEvent event(0);
        QCoreApplication::sendEvent(&progress, &event);
    }
}

// A time in which a timer of 5 ms would have come many times, and before this one.
bool turnsSoon(ZRProgress &progress)
{
    const QImage before = painted(progress);
    bool over = false;
    QTimer::singleShot(100, [&] { over = true; });
    return QTest::qWaitFor([&] { return over; }, 30000) && painted(progress) != before;
}

// The colour in the middle of the length of the spoke at so many degrees, clockwise from the top.
QColor spokeAt(const QImage &image, int degrees)
{
    const double middle = (19 + 50) / 2.0;
    const QPointF offset(middle * qSin(qDegreesToRadians(double(degrees))),
        -middle * qCos(qDegreesToRadians(double(degrees))));
    return image.pixelColor((image.rect().center() + offset).toPoint());
}
}

void tst_ZRProgress::metaObject()
{
    QCOMPARE(ownMethods(ZRProgress::staticMetaObject),
        (QStringList{"public signal Finished()", "public slot startAnimation()",
            "public slot stopAnimation()", "public slot setAnimationDelay(int)",
            "public slot setDisplayedWhenStopped(bool)", "public slot setColor(QColor)",
            "public slot onProgress(short)"}));
    QCOMPARE(ownProperties(ZRProgress::staticMetaObject),
        (QStringList{"int delay", "bool displayedWhenStopped", "QColor color"}));
}

void tst_ZRProgress::initialState()
{
    const ZRProgress progress(nullptr);
    QCOMPARE(progress.sizeHint(), QSize(25, 25));
    QCOMPARE(progress.sizePolicy(), QSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed));
    QCOMPARE(progress.focusPolicy(), Qt::NoFocus);
    QCOMPARE(progress.property("delay").toInt(), 40);
    QCOMPARE(progress.property("displayedWhenStopped").toBool(), false);
    QCOMPARE(progress.property("color").value<QColor>(), QColor(255, 255, 255));
}

void tst_ZRProgress::properties()
{
    ZRProgress progress(nullptr);
    progress.resize(101, 101);
    QVERIFY(progress.setProperty("delay", 70));
    QVERIFY(progress.setProperty("displayedWhenStopped", true));
    QVERIFY(progress.setProperty("color", QColor(Qt::red)));
    QCOMPARE(progress.property("delay").toInt(), 70);
    QCOMPARE(progress.property("displayedWhenStopped").toBool(), true);
    QCOMPARE(progress.property("color").value<QColor>(), QColor(Qt::red));
    QCOMPARE(spokeAt(painted(progress), 0), QColor(Qt::red));

    progress.setAnimationDelay(80);
    progress.setDisplayedWhenStopped(false);
    progress.setColor(Qt::green);
    QCOMPARE(progress.property("delay").toInt(), 80);
    QCOMPARE(progress.property("displayedWhenStopped").toBool(), false);
    QCOMPARE(progress.property("color").value<QColor>(), QColor(Qt::green));
}

void tst_ZRProgress::stoppedPaintsNothing()
{
    ZRProgress progress(nullptr);
    progress.resize(101, 101);
    progress.onProgress(50);
    QVERIFY(paintedArea(painted(progress)).isNull());
}

void tst_ZRProgress::displayedWhenStopped()
{
    ZRProgress progress(nullptr);
    progress.resize(101, 101);
    progress.setDisplayedWhenStopped(true);
    QCOMPARE(spokeAt(painted(progress), 0), QColor(255, 255, 255));
}

void tst_ZRProgress::startShowsAndStopHides()
{
    ZRProgress progress(nullptr);
    progress.resize(101, 101);
    progress.startAnimation();
    QVERIFY(progress.isVisible());
    QVERIFY(!paintedArea(painted(progress)).isNull());
    progress.stopAnimation();
    QVERIFY(!progress.isVisible());
    QVERIFY(paintedArea(painted(progress)).isNull());
    progress.stopAnimation(); // no timer left to kill
    progress.startAnimation();
    QVERIFY(progress.isVisible());
}

void tst_ZRProgress::startBeginsAtAngleZero()
{
    StillProgress progress;
    const QImage first = painted(progress);
    step(progress, 5);
    QVERIFY(painted(progress) != first);
    progress.startAnimation();
    QCOMPARE(painted(progress), first);
}

void tst_ZRProgress::spokes_data()
{
    QTest::addColumn<int>("steps");
    QTest::newRow("at rest") << 0;
    QTest::newRow("one step") << 1;
    QTest::newRow("eleven") << 11;
    QTest::newRow("a whole turn") << 12;
}

// Each spoke stands 30 degrees behind the one before and is a twelfth fainter.
void tst_ZRProgress::spokes()
{
    QFETCH(int, steps);
    StillProgress progress;
    step(progress, steps);
    const QImage image = painted(progress);
    for (int i = 0; i < 12; ++i) {
        const int alpha = spokeAt(image, steps * 30 - i * 30).alpha();
        QVERIFY2(qAbs(alpha - (255 - 255 * i / 12)) <= 2,
            qPrintable(QStringLiteral("spoke %1: %2").arg(i).arg(alpha)));
        QCOMPARE(spokeAt(image, 15 + i * 30).alpha(), 0); // between two spokes
    }
}

void tst_ZRProgress::thickness_data()
{
    QTest::addColumn<int>("side");
    QTest::addColumn<QRect>("first"); // the first spoke, at its full length and width
    QTest::newRow("32, relatively thicker") << 32 << QRect(13, 0, 3, 10);
    QTest::newRow("33") << 33 << QRect(15, 0, 2, 10);
    QTest::newRow("101") << 101 << QRect(46, 0, 7, 31);
}

void tst_ZRProgress::thickness()
{
    QFETCH(int, side);
    QFETCH(QRect, first);
    StillProgress progress(side);
    const QImage image = painted(progress);

    const int row = first.center().y();
    for (int x = first.left(); x <= first.right(); ++x)
        QCOMPARE(image.pixelColor(x, row).alpha(), 255);
    QVERIFY(image.pixelColor(first.left() - 1, row).alpha() < 255);
    QVERIFY(image.pixelColor(first.right() + 1, row).alpha() < 255);

    const int column = first.center().x();
    QVERIFY(image.pixelColor(column, first.top()).alpha() > 0);
    QCOMPARE(image.pixelColor(column, first.bottom() - 1).alpha(), 255);
    QVERIFY(image.pixelColor(column, first.bottom() + 1).alpha() < 255);
    // Corners are rounded where half the thickness is a pixel or more.
    QVERIFY(image.pixelColor(first.topLeft()).alpha() < 255);
}

void tst_ZRProgress::smallerSideCounts()
{
    StillProgress square;
    StillProgress wide;
    wide.resize(121, 101);
    QCOMPARE(painted(wide).copy(10, 0, 101, 101), painted(square));
    StillProgress high;
    high.resize(101, 121);
    QCOMPARE(painted(high).copy(0, 10, 101, 101), painted(square));
}

void tst_ZRProgress::color()
{
    StillProgress progress;
    progress.setColor(Qt::red);
    QCOMPARE(spokeAt(painted(progress), 0), QColor(Qt::red));
}

void tst_ZRProgress::timerTurnsIt()
{
    ZRProgress progress(nullptr);
    progress.resize(101, 101);
    progress.setAnimationDelay(5);
    progress.startAnimation();
    QTRY_COMPARE(spokeAt(painted(progress), 30), QColor(255, 255, 255));
    QTRY_COMPARE(spokeAt(painted(progress), 180), QColor(255, 255, 255));
}

// The running timer takes the new delay at once: with the old one it wouldn't turn.
void tst_ZRProgress::delayOfRunningTimer()
{
    StillProgress progress;
    const QImage first = painted(progress);
    progress.setAnimationDelay(5);
    QTRY_VERIFY(painted(progress) != first);
}

void tst_ZRProgress::delayReplacesRunningTimer()
{
    StillProgress progress;
    progress.setAnimationDelay(5);
    QVERIFY(turnsSoon(progress));
    progress.setAnimationDelay(never);
    QVERIFY(!turnsSoon(progress));
}

void tst_ZRProgress::delayStartsNoTimer()
{
    ZRProgress progress(nullptr);
    progress.resize(101, 101);
    progress.setDisplayedWhenStopped(true);
    progress.setAnimationDelay(5);
    QVERIFY(!turnsSoon(progress));
    progress.startAnimation(); // the delay was kept for it
    QVERIFY(turnsSoon(progress));
}

void tst_ZRProgress::secondStartKeepsOneTimer()
{
    StillProgress progress;
    progress.startAnimation();
    const QImage first = painted(progress);
    progress.setAnimationDelay(5);
    QTRY_VERIFY(painted(progress) != first);
    progress.stopAnimation();
    progress.setDisplayedWhenStopped(true);
    QVERIFY(!turnsSoon(progress)); // with a second timer left over, it would
}

void tst_ZRProgress::percentage_data()
{
    QTest::addColumn<int>("progress");
    QTest::addColumn<bool>("text");
    QTest::newRow("negative") << -1 << false;
    QTest::newRow("0") << 0 << false;
    QTest::newRow("1") << 1 << true;
    QTest::newRow("99") << 99 << true;
    QTest::newRow("100") << 100 << false;
    QTest::newRow("101") << 101 << false;
}

void tst_ZRProgress::percentage()
{
    QFETCH(int, progress);
    QFETCH(bool, text);
    StillProgress spinner;
    spinner.setColor(Qt::red);
    spinner.onProgress(short(progress));
    // Inside the ring of spokes, but for its edge.
    const QImage inside = painted(spinner).copy(QRect(50 - 12, 50 - 12, 25, 25));
    QCOMPARE(!paintedArea(inside).isNull(), text);
}

void tst_ZRProgress::percentageText_data()
{
    QTest::addColumn<int>("progress");
    QTest::addColumn<QString>("text");
    QTest::newRow("one figure") << 7 << "7%";
    QTest::newRow("two figures") << 42 << "42%";
}

void tst_ZRProgress::percentageText()
{
    QFETCH(int, progress);
    QFETCH(QString, text);
    StillProgress spinner(301);
    spinner.setColor(Qt::red);
    spinner.onProgress(short(progress));

    QImage expected(301, 301, QImage::Format_ARGB32_Premultiplied);
    expected.fill(Qt::transparent);
    QPainter painter(&expected);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setFont(spinner.font());
    painter.setPen(Qt::red);
    painter.drawText(expected.rect(), Qt::AlignCenter, text);
    painter.end();
    const QRect ring(150 - 35, 150 - 35, 71, 71); // what the spokes leave free
    QVERIFY(ring.contains(paintedArea(expected)));
    QCOMPARE(painted(spinner).copy(ring), expected.copy(ring));
}

void tst_ZRProgress::hundredEndsAtNextPaint()
{
    StillProgress progress;
    progress.setAnimationDelay(5);
    progress.onProgress(100);
    QSignalSpy finished(&progress, &ZRProgress::Finished);
    QVERIFY(progress.isVisible());
    // The pass that ends it still paints the spokes.
    QCOMPARE(spokeAt(painted(progress), 0), QColor(255, 255, 255));
    QVERIFY(!progress.isVisible());
    QVERIFY(paintedArea(painted(progress)).isNull());
    QCOMPARE(finished.count(), 0); // nothing tells of it

    progress.onProgress(0);
    progress.setDisplayedWhenStopped(true);
    QVERIFY(!turnsSoon(progress)); // its timer is gone
}

void tst_ZRProgress::repaints()
{
    ZRProgress progress(nullptr);
    progress.setAnimationDelay(never);
    PaintCounter counter(progress);
    progress.startAnimation();
    QVERIFY(counter.waitForRest());
    QCOMPARE(counter.paintsOf([&] { progress.setDisplayedWhenStopped(false); }), 1);
    QCOMPARE(counter.paintsOf([&] { progress.setColor(Qt::red); }), 1);
    QCOMPARE(counter.paintsOf([&] { progress.onProgress(50); }), 0);
    QCOMPARE(counter.paintsOf([&] { step(progress); }), 1);
}

QTEST_MAIN(tst_ZRProgress)
#include "tst_ZRProgress.moc"

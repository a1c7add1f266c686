#include "MetaMethods.h"
#include "Painting.h"
#include "ZRSlider.h"

#include <QSignalSpy>
#include <QtTest>

#include <limits>

class tst_ZRSlider : public QObject
{
    Q_OBJECT

private slots:
    void metaObject();
    void startsAt();
    void range_data();
    void range();
    void value_data();
    void value();
    void tellsChangesOnly();
    void press_data();
    void press();
    void drag();
    void otherButtons();
    void keys_data();
    void keys();
    void otherKeys();
    void wheel();
    void wholeRangeOfInt();
    void looks();
    void disabled();
    void focusByTab();
};

namespace {
// 214 pixels wide: the handle's middle travels from 7 to 207, two pixels a step.
struct Bench {
    Bench() : slider(nullptr), changed(&slider, &ZRSlider::valueChanged)
    {
        slider.resize(214, 20);
        slider.setColor(Qt::red);
    }

    QVector<int> changes() const
    {
        QVector<int> values;
        for (const QList<QVariant> &arguments : changed)
            values.append(arguments.first().toInt());
        return values;
    }

    ZRSlider slider;
    QSignalSpy changed;
};

void turn(ZRSlider &slider, int eighths)
{
    QWheelEvent event(QPointF(5, 5), QPointF(5, 5), QPoint(), QPoint(0, eighths), Qt::NoButton,
        Qt::NoModifier, Qt::NoScrollPhase, false);
    QCoreApplication::sendEvent(&slider, &event);
}
}

void tst_ZRSlider::metaObject()
{
    QCOMPARE(
        ownMethods(ZRSlider::staticMetaObject), QStringList{"public signal valueChanged(int)"});
    QCOMPARE(ownProperties(ZRSlider::staticMetaObject), QStringList());
}

void tst_ZRSlider::startsAt()
{
    const ZRSlider slider(nullptr);
    QCOMPARE(slider.minimum(), 0);
    QCOMPARE(slider.maximum(), 100);
    QCOMPARE(slider.value(), 0);
}

void tst_ZRSlider::range_data()
{
    QTest::addColumn<int>("minimum");
    QTest::addColumn<int>("maximum");
    QTest::addColumn<int>("expectedMaximum");
    QTest::addColumn<int>("expectedValue"); // of 50

    QTest::newRow("around the value") << -10 << 80 << 80 << 50;
    QTest::newRow("above") << 60 << 80 << 80 << 60;
    QTest::newRow("below") << -20 << -10 << -10 << -10;
    QTest::newRow("one value") << 7 << 7 << 7 << 7;
    QTest::newRow("upside down") << 60 << 10 << 60 << 60;
}

void tst_ZRSlider::range()
{
    QFETCH(int, minimum);
    QFETCH(int, maximum);
    QFETCH(int, expectedValue);
    Bench bench;
    bench.slider.setValue(50);
    bench.changed.clear();
    bench.slider.setRange(minimum, maximum);
    QCOMPARE(bench.slider.minimum(), minimum);
    QTEST(bench.slider.maximum(), "expectedMaximum");
    QCOMPARE(bench.slider.value(), expectedValue);
    QCOMPARE(bench.changed.count(), expectedValue == 50 ? 0 : 1);
}

void tst_ZRSlider::value_data()
{
    QTest::addColumn<int>("value");
    QTest::addColumn<int>("expected");
    QTest::newRow("inside") << 40 << 40;
    QTest::newRow("too low") << -1 << 0;
    QTest::newRow("too high") << 101 << 100;
}

void tst_ZRSlider::value()
{
    QFETCH(int, value);
    ZRSlider slider(nullptr);
    slider.setValue(value);
    QTEST(slider.value(), "expected");
}

void tst_ZRSlider::tellsChangesOnly()
{
    Bench bench;
    for (int value : {0, 3, 3, 100, 200, -5})
        bench.slider.setValue(value);
    QCOMPARE(bench.changes(), QVector<int>({3, 100, 0}));
}

void tst_ZRSlider::press_data()
{
    QTest::addColumn<int>("x");
    QTest::addColumn<int>("expected");
    QTest::newRow("left edge") << 0 << 0;
    QTest::newRow("left end") << 7 << 0;
    QTest::newRow("quarter") << 57 << 25;
    QTest::newRow("middle") << 107 << 50;
    QTest::newRow("right end") << 207 << 100;
    QTest::newRow("right edge") << 213 << 100;
}

void tst_ZRSlider::press()
{
    QFETCH(int, x);
    Bench bench;
    bench.slider.setValue(1); // every press below changes it
    QTest::mousePress(&bench.slider, Qt::LeftButton, {}, QPoint(x, 10));
    QTEST(bench.slider.value(), "expected");
    QCOMPARE(bench.changed.count(), 2);
}

void tst_ZRSlider::drag()
{
    Bench bench;
    QTest::mousePress(&bench.slider, Qt::LeftButton, {}, QPoint(107, 10));
    for (int x : {109, 207, 400, -30}) {
        QMouseEvent move(
            QEvent::MouseMove, QPointF(x, 10), Qt::NoButton, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(&bench.slider, &move);
    }
    QTest::mouseRelease(&bench.slider, Qt::LeftButton, {}, QPoint(60, 10));
    QCOMPARE(bench.changes(), QVector<int>({50, 51, 100, 0}));
}

void tst_ZRSlider::otherButtons()
{
    Bench bench;
    QTest::mousePress(&bench.slider, Qt::RightButton, {}, QPoint(107, 10));
    QMouseEvent move(
        QEvent::MouseMove, QPointF(150, 10), Qt::NoButton, Qt::RightButton, Qt::NoModifier);
    QCoreApplication::sendEvent(&bench.slider, &move);
    QCOMPARE(bench.changed.count(), 0);
}

void tst_ZRSlider::keys_data()
{
    QTest::addColumn<int>("key");
    QTest::addColumn<int>("expected"); // after 50 of 0 to 100
    QTest::addColumn<int>("expectedLast"); // after pressing it again and again
    QTest::newRow("left") << int(Qt::Key_Left) << 49 << 0;
    QTest::newRow("down") << int(Qt::Key_Down) << 49 << 0;
    QTest::newRow("right") << int(Qt::Key_Right) << 51 << 100;
    QTest::newRow("up") << int(Qt::Key_Up) << 51 << 100;
    QTest::newRow("page down") << int(Qt::Key_PageDown) << 40 << 0;
    QTest::newRow("page up") << int(Qt::Key_PageUp) << 60 << 100;
    QTest::newRow("home") << int(Qt::Key_Home) << 0 << 0;
    QTest::newRow("end") << int(Qt::Key_End) << 100 << 100;
}

void tst_ZRSlider::keys()
{
    QFETCH(int, key);
    ZRSlider slider(nullptr);
    slider.setValue(50);
    QTest::keyClick(&slider, Qt::Key(key));
    QTEST(slider.value(), "expected");
    for (int i = 0; i < 60; ++i)
        QTest::keyClick(&slider, Qt::Key(key));
    QTEST(slider.value(), "expectedLast");
}

void tst_ZRSlider::otherKeys()
{
    ZRSlider slider(nullptr);
    QKeyEvent press(QEvent::KeyPress, Qt::Key_A, Qt::NoModifier, "a");
    QCoreApplication::sendEvent(&slider, &press);
    QVERIFY(!press.isAccepted());
    QCOMPARE(slider.value(), 0);
}

void tst_ZRSlider::wheel()
{
    ZRSlider slider(nullptr);
    slider.setValue(50);
    turn(slider, 120);
    QCOMPARE(slider.value(), 51);
    turn(slider, -240);
    QCOMPARE(slider.value(), 49);
    turn(slider, 60); // half a notch waits for the other half
    QCOMPARE(slider.value(), 49);
    turn(slider, 60);
    QCOMPARE(slider.value(), 50);
}

void tst_ZRSlider::wholeRangeOfInt()
{
    const int lowest = std::numeric_limits<int>::min();
    const int highest = std::numeric_limits<int>::max();
    Bench bench;
    bench.slider.setRange(lowest, highest);
    QTest::keyClick(&bench.slider, Qt::Key_Home);
    QCOMPARE(bench.slider.value(), lowest);
    QTest::keyClick(&bench.slider, Qt::Key_Left);
    QCOMPARE(bench.slider.value(), lowest);
    QTest::mousePress(&bench.slider, Qt::LeftButton, {}, QPoint(207, 10));
    QCOMPARE(bench.slider.value(), highest);
    QTest::keyClick(&bench.slider, Qt::Key_PageUp);
    QCOMPARE(bench.slider.value(), highest);
    QVERIFY(!paintedArea(painted(bench.slider)).isNull());
}

// Filled left of the handle, empty right of it, the handle white inside of its edge.
void tst_ZRSlider::looks()
{
    Bench bench;
    bench.slider.setValue(50);
    const QImage image = painted(bench.slider);
    QCOMPARE(image.pixelColor(50, 10), QColor(Qt::red));
    QCOMPARE(image.pixelColor(107, 10), QColor(Qt::white));
    QCOMPARE(image.pixelColor(101, 10), QColor(Qt::red)); // edge
    const QColor empty = image.pixelColor(160, 10);
    QVERIFY(empty.alpha() == 255 && empty != QColor(Qt::red));
    QCOMPARE(qAlpha(image.pixel(160, 2)), 0);

    bench.slider.setBackgroundColor(Qt::blue);
    QCOMPARE(painted(bench.slider).pixelColor(160, 2), QColor(Qt::blue));
    bench.slider.setValue(100);
    QCOMPARE(painted(bench.slider).pixelColor(160, 10), QColor(Qt::red));
}

void tst_ZRSlider::disabled()
{
    Bench bench;
    bench.slider.setValue(50);
    bench.changed.clear();
    bench.slider.setEnabled(false);
    QVERIFY(painted(bench.slider).pixelColor(50, 10) != QColor(Qt::red));
    QTest::mousePress(&bench.slider, Qt::LeftButton, {}, QPoint(7, 10));
    QTest::keyClick(&bench.slider, Qt::Key_Home);
    QCOMPARE(bench.changed.count(), 0);
}

void tst_ZRSlider::focusByTab()
{
    QVERIFY(ZRSlider(nullptr).focusPolicy() & Qt::TabFocus);
    Bench bench;
    bench.slider.show();
    const QImage before = painted(bench.slider);
    bench.slider.activateWindow();
    bench.slider.setFocus();
    QTRY_VERIFY(bench.slider.hasFocus());
    QVERIFY(painted(bench.slider) != before);
}

QTEST_MAIN(tst_ZRSlider)
#include "tst_ZRSlider.moc"

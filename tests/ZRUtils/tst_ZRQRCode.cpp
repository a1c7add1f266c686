#include "ZRQRCode.h"

#include "EncodedCode.h"

#include <QPaintDevice>
#include <QPaintEngine>
#include <QPainter>
#include <QtTest>

namespace {

// What was drawn, in order, and with which pen and brush.
struct Drawn {
    QVector<QRectF> rects;
    QVector<int> counts; // rectangles of each call
    QPen pen;
    QBrush brush;
};

class RecordingEngine : public QPaintEngine
{
public:
    RecordingEngine() : QPaintEngine(AllFeatures) { }

    bool begin(QPaintDevice *) override { return true; }
    bool end() override { return true; }
    Type type() const override { return User; }
    void updateState(const QPaintEngineState &state) override
    {
        if (state.state() & DirtyPen)
            drawn.pen = state.pen();
        if (state.state() & DirtyBrush)
            drawn.brush = state.brush();
    }
    void drawRects(const QRectF *rects, int count) override
    {
        drawn.counts.append(count);
        std::copy(rects, rects + count, std::back_inserter(drawn.rects));
    }
    void drawPixmap(const QRectF &, const QPixmap &, const QRectF &) override { otherCalls++; }
    void drawPath(const QPainterPath &) override { otherCalls++; }
    void drawImage(
        const QRectF &, const QImage &, const QRectF &, Qt::ImageConversionFlags) override
    {
        otherCalls++;
    }

    Drawn drawn;
    int otherCalls = 0;
};

class RecordingDevice : public QPaintDevice
{
public:
    QPaintEngine *paintEngine() const override { return &engine; }

    mutable RecordingEngine engine;

protected:
    int metric(PaintDeviceMetric metric) const override
    {
        return metric == PdmWidth || metric == PdmHeight ? 1000 : 1;
    }
};

}

class tst_ZRQRCode : public QObject
{
    Q_OBJECT

private slots:
    void modules_data();
    void modules();
    void place_data();
    void place();
    void penStaysAndBrushIsBlack();
    void textOfTheLongestCode_data();
    void textOfTheLongestCode();

private:
    // Also tells whether the code was drawn as rectangles only.
    static bool draw(Drawn &drawn, const QString &text, const QRect &label, int size, double scale)
    {
        RecordingDevice device;
        QPainter painter(&device);
        const bool ok = drawQRCode(
            &painter, text, label.x(), label.y(), label.width(), label.height(), size, scale);
        painter.end();
        drawn = device.engine.drawn;
        return ok && device.engine.otherCalls == 0;
    }
};

void tst_ZRQRCode::modules_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("version");
    QTest::addColumn<double>("scale");

    QTest::newRow("one character") << "A" << 2 << 0.25;
    QTest::newRow("fourteen bytes") << "abcdefghijklmn" << 2 << 0.25;
    QTest::newRow("fifteen bytes") << "abcdefghijklmno" << 3 << 0.25;
    QTest::newRow("capitals need less") << "ABCDEFGHIJKLMNO" << 2 << 0.25;
    QTest::newRow("case counts") << "VLab-000123" << 2 << 0.25;
    QTest::newRow("120 bytes") << QString(120, 'x') << 11 << 0.25;
    QTest::newRow("UTF-8") << QString::fromUtf8("摄像机-é") << 2 << 0.25;
    QTest::newRow("spaces stay") << " a b " << 2 << 0.25;
    QTest::newRow("scale of one") << "A" << 2 << 1.0;
    QTest::newRow("narrow modules") << "A" << 2 << 0.0101;
}

// Modules come row by row, each in a call of its own. The scale makes them narrower than their
// places and moves none.
void tst_ZRQRCode::modules()
{
    QFETCH(QString, text);
    QFETCH(int, version);
    QFETCH(double, scale);
    const EncodedCode code = encodedCode(text);
    QVERIFY(code);
    QCOMPARE(code->version, version);
    QCOMPARE(code->width, 17 + 4 * version);

    const double cell = 100.0 / code->width; // no whole number of pixels
    QVector<QRectF> expected;
    for (int i = 0; i < code->width * code->width; ++i) {
        if (code->data[i] & 1)
            expected.append(QRectF((i % code->width) * cell + 35, (i / code->width) * cell + 50,
                cell * scale, cell * scale));
    }
    Drawn drawn;
    QVERIFY(draw(drawn, text, QRect(10, 30, 150, 140), 100, scale));
    QCOMPARE(drawn.rects, expected);
    QCOMPARE(drawn.counts, QVector<int>(expected.size(), 1));
}

void tst_ZRQRCode::place_data()
{
    QTest::addColumn<QRect>("label");
    QTest::addColumn<int>("size");
    QTest::addColumn<QPoint>("corner");

    QTest::newRow("centred") << QRect(0, 0, 150, 100) << 70 << QPoint(40, 15);
    QTest::newRow("moved") << QRect(7, 9, 150, 100) << 70 << QPoint(47, 24);
    QTest::newRow("odd rest is cut") << QRect(0, 0, 151, 101) << 70 << QPoint(40, 15);
    QTest::newRow("low sits on the edge") << QRect(7, 9, 150, 79) << 55 << QPoint(54, 9 + 79 - 55);
    QTest::newRow("80 is not low") << QRect(7, 9, 150, 80) << 56 << QPoint(54, 21);
    QTest::newRow("wider than the label") << QRect(0, 0, 49, 100) << 70 << QPoint(-10, 15);
    QTest::newRow("half pixels go to zero") << QRect(5, 0, 67, 100) << 70 << QPoint(4, 15);
    QTest::newRow("left of the page") << QRect(-20, -5, 150, 100) << 70 << QPoint(20, 10);
    QTest::newRow("no size") << QRect(3, 4, 50, 1) << 0 << QPoint(28, 5);
}

void tst_ZRQRCode::place()
{
    QFETCH(QRect, label);
    QFETCH(int, size);
    QFETCH(QPoint, corner);
    Drawn drawn;
    QVERIFY(draw(drawn, "A", label, size, 1));
    // The mark in the corner of every code.
    const double cell = size / 25.0;
    for (int column = 0; column < 7; ++column)
        QCOMPARE(
            drawn.rects.at(column), QRectF(column * cell + corner.x(), corner.y(), cell, cell));
}

// The outline of the caller's pen adds to the dark area.
void tst_ZRQRCode::penStaysAndBrushIsBlack()
{
    RecordingDevice device;
    QPainter painter(&device);
    const QPen pen(Qt::red, 2.5, Qt::DashLine);
    painter.setPen(pen);
    painter.setBrush(Qt::green);
    QVERIFY(drawQRCode(&painter, "A", 0, 0, 100, 100, 70, 0.25));
    QCOMPARE(painter.pen(), pen);
    QCOMPARE(painter.brush(), QBrush(Qt::black, Qt::SolidPattern));
    QCOMPARE(device.engine.drawn.pen, pen);
    QCOMPARE(device.engine.drawn.brush, QBrush(Qt::black, Qt::SolidPattern));
}

void tst_ZRQRCode::textOfTheLongestCode_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("fits");

    QTest::newRow("1273 bytes") << QString(1273, 'x') << true;
    QTest::newRow("1274 bytes") << QString(1274, 'x') << false;
    QTest::newRow("bytes and not characters") << QString(425, QChar(0x4e2d)) << false;
    QTest::newRow("none") << QString() << false;
}

void tst_ZRQRCode::textOfTheLongestCode()
{
    QFETCH(QString, text);
    QFETCH(bool, fits);
    RecordingDevice device;
    QPainter painter(&device);
    painter.setBrush(Qt::green);
    QCOMPARE(drawQRCode(&painter, text, 0, 0, 1000, 1000, 700, 0.25), fits);
    QCOMPARE(device.engine.drawn.rects.isEmpty(), !fits);
    QCOMPARE(painter.brush(), QBrush(fits ? Qt::black : Qt::green));
    if (fits)
        QCOMPARE(encodedCode(text)->version, 40);
}

QTEST_GUILESS_MAIN(tst_ZRQRCode)

#include "tst_ZRQRCode.moc"

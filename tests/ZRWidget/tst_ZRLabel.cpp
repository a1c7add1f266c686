#include "MetaMethods.h"
#include "Painting.h"
#include "ZRLabel.h"

#include <QSignalSpy>
#include <QtTest>

Q_DECLARE_METATYPE(QMargins)

class tst_ZRLabel : public QObject
{
    Q_OBJECT

private slots:
    void metaObject();
    void emptyAtFirst();
    void sizeHint_data();
    void sizeHint();
    void sizeHintFollowsFontAndFlags();
    void placesText_data();
    void placesText();
    void textColor();
    void textOverFill();
    void clicksOnPress();
    void pressReachesTheParent();
    void repaints();
};

void tst_ZRLabel::metaObject()
{
    QCOMPARE(ownMethods(ZRLabel::staticMetaObject), QStringList{"public signal clicked()"});
}

void tst_ZRLabel::emptyAtFirst()
{
    ZRLabel label(nullptr);
    label.resize(100, 40);
    QCOMPARE(label.text(), QString());
    QVERIFY(paintedArea(painted(label)).isNull());
}

void tst_ZRLabel::sizeHint_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QMargins>("margins");
    QTest::newRow("empty") << QString() << QMargins(1, 2, 3, 4);
    QTest::newRow("one line") << QStringLiteral("Ok") << QMargins();
    QTest::newRow("margins") << QStringLiteral("Ok") << QMargins(1, 20, 300, 4000);
    QTest::newRow("two lines") << QStringLiteral("first\nsecond line") << QMargins(5, 5, 5, 5);
}

void tst_ZRLabel::sizeHint()
{
    QFETCH(QString, text);
    QFETCH(QMargins, margins);
    ZRLabel label(nullptr);
    label.setText(text);
    label.setMargins(margins.left(), margins.top(), margins.right(), margins.bottom());
    const QSize textSize = QFontMetrics(label.font()).size(Qt::AlignCenter, text);
    QCOMPARE(label.sizeHint(),
        textSize + QSize(margins.left() + margins.right(), margins.top() + margins.bottom()));
}

void tst_ZRLabel::sizeHintFollowsFontAndFlags()
{
    const QString text = QStringLiteral("first\nsecond line");
    ZRLabel label(nullptr);
    label.setText(text);
    QFont large = label.font();
    large.setPixelSize(40);
    label.setFont(large);
    const QFontMetrics metrics(large);
    QCOMPARE(label.sizeHint(), metrics.size(Qt::AlignCenter, text));
    label.setAlignment(Qt::AlignLeft | Qt::TextSingleLine);
    QCOMPARE(label.sizeHint(), metrics.size(Qt::TextSingleLine, text));
    QVERIFY(label.sizeHint() != metrics.size(0, text));
}

// A short text in a rectangle of 200 by 100 inside margins of 40, 30, 20 and 10.
void tst_ZRLabel::placesText_data()
{
    QTest::addColumn<int>("alignment"); // -1 leaves it as it is
    QTest::addColumn<double>("x"); // where in the room inside the margins, 0 to 1
    QTest::addColumn<double>("y");
    QTest::newRow("centred at first") << -1 << 0.5 << 0.5;
    QTest::newRow("top left") << int(Qt::AlignLeft | Qt::AlignTop) << 0.0 << 0.0;
    QTest::newRow("bottom right") << int(Qt::AlignRight | Qt::AlignBottom) << 1.0 << 1.0;
    QTest::newRow("left centre") << int(Qt::AlignLeft | Qt::AlignVCenter) << 0.0 << 0.5;
}

void tst_ZRLabel::placesText()
{
    QFETCH(int, alignment);
    QFETCH(double, x);
    QFETCH(double, y);
    ZRLabel label(nullptr);
    label.resize(200 + 60, 100 + 40);
    label.setMargins(40, 30, 20, 10);
    label.setText(QStringLiteral("HHH"));
    if (alignment >= 0)
        label.setAlignment(alignment);

    const QSize size = QFontMetrics(label.font()).size(0, label.text());
    const QPointF topLeft(40 + x * (200 - size.width()), 30 + y * (100 - size.height()));
    const QRectF room(topLeft, size);
    const QRect area = paintedArea(painted(label));
    QVERIFY(!area.isNull());
    QVERIFY(room.adjusted(-2, -2, 2, 2).contains(area));
    QVERIFY(area.width() >= size.width() - 6); // the letters, and not a part of them
}

void tst_ZRLabel::textColor()
{
    ZRLabel label(nullptr);
    label.resize(100, 40);
    label.setText(QStringLiteral("\u2588\u2588")); // full blocks
    QCOMPARE(painted(label).pixelColor(50, 20), QColor(Qt::black));
    label.setTextColor(Qt::red);
    QCOMPARE(painted(label).pixelColor(50, 20), QColor(Qt::red));
}

void tst_ZRLabel::textOverFill()
{
    ZRLabel label(nullptr);
    label.resize(100, 40);
    label.setText(QStringLiteral("\u2588\u2588"));
    label.setTextColor(Qt::red);
    label.setBackgroundColor(Qt::blue);
    const QImage image = painted(label);
    QCOMPARE(image.pixelColor(0, 0), QColor(Qt::blue));
    QCOMPARE(image.pixelColor(50, 20), QColor(Qt::red));
}

void tst_ZRLabel::clicksOnPress()
{
    ZRLabel label(nullptr);
    label.resize(100, 40);
    QSignalSpy clicked(&label, &ZRLabel::clicked);
    QTest::mousePress(&label, Qt::LeftButton);
    QCOMPARE(clicked.count(), 1);
    QTest::mouseRelease(&label, Qt::LeftButton);
    QCOMPARE(clicked.count(), 1);
}

// The plain widget's handling comes first, which lets the press through.
void tst_ZRLabel::pressReachesTheParent()
{
    class Parent : public QWidget
    {
    public:
        void mousePressEvent(QMouseEvent *) override { ++presses; }
        int presses = 0;
    } parent;
    parent.resize(100, 40);
    ZRLabel label(&parent);
    label.resize(100, 40);
    QTest::mousePress(&label, Qt::LeftButton);
    QCOMPARE(parent.presses, 1);
}

void tst_ZRLabel::repaints()
{
    ZRLabel label(nullptr);
    PaintCounter counter(label);
    QVERIFY(counter.waitForRest());
    QCOMPARE(counter.paintsOf([&] { label.setText(QStringLiteral("a")); }), 1);
    QCOMPARE(counter.paintsOf([&] { label.setTextColor(Qt::red); }), 1);
    QCOMPARE(counter.paintsOf([&] { label.setAlignment(Qt::AlignLeft); }), 0);
    QCOMPARE(counter.paintsOf([&] { label.setMargins(1, 1, 1, 1); }), 0);
}

QTEST_MAIN(tst_ZRLabel)
#include "tst_ZRLabel.moc"

#include "MetaMethods.h"
#include "PTZButton.h"
#include "Painting.h"

#include <QSignalSpy>
#include <QtTest>

class tst_PTZButton : public QObject
{
    Q_OBJECT

private slots:
    void metaObject();
    void sizeOfTheImage();
    void showsTheImage_data();
    void showsTheImage();
    void pressAndRelease();
    void releaseOutside();
    void onlyTheDisc_data();
    void onlyTheDisc();
    void otherMouseButtons();
    void spaceBar();
    void otherKeys();
    void endsWithoutARelease_data();
    void endsWithoutARelease();
    void deafWhenDisabled();
    void statesLookDifferent();
};

namespace {
const QString image = ":/resources/ptzupnormal.png";

struct Bench {
    Bench() : button(nullptr)
    {
        button.setPixmap(image, 40);
        button.resize(40, 40);
        QObject::connect(&button, &PTZButton::mousePressed, &button, [this] { told += "press "; });
        QObject::connect(
            &button, &PTZButton::mouseRelease, &button, [this] { told += "release "; });
    }

    QString heard() { return std::exchange(told, QString()).trimmed(); }

    PTZButton button;
    QString told;
};
}

void tst_PTZButton::metaObject()
{
    QCOMPARE(ownMethods(PTZButton::staticMetaObject),
        QStringList({"public signal mousePressed()", "public signal mouseRelease()"}));
}

void tst_PTZButton::sizeOfTheImage()
{
    PTZButton button(nullptr);
    button.setPixmap(image, 0);
    QCOMPARE(button.sizeHint(), QSize(40, 40));
    button.setPixmap(image, 30);
    QCOMPARE(button.sizeHint(), QSize(30, 30));
    QCOMPARE(button.cursor().shape(), Qt::PointingHandCursor);
}

void tst_PTZButton::showsTheImage_data()
{
    QTest::addColumn<QString>("name");
    for (const char *name : {"ptzplusnormal", "ptzsubnormal", "ptzcenter", "ptzupnormal",
             "ptzdownnormal", "focusin", "focusout", "zoomin", "zoomout"})
        QTest::newRow(name) << QString(":/resources/%1.png").arg(name);
}

// In the middle, at its own shape, whatever the button's.
void tst_PTZButton::showsTheImage()
{
    QFETCH(QString, name);
    PTZButton button(nullptr);
    button.setPixmap(name, 40);
    button.resize(60, 40);
    const QImage shown = painted(button);
    QCOMPARE(paintedArea(shown), QRect(10, 0, 40, 40));
    const QImage expected = QImage(name).convertToFormat(QImage::Format_ARGB32_Premultiplied);
    QCOMPARE(shown.copy(10, 0, 40, 40), expected);
}

void tst_PTZButton::pressAndRelease()
{
    Bench bench;
    QTest::mousePress(&bench.button, Qt::LeftButton);
    QCOMPARE(bench.heard(), QString("press"));
    QVERIFY(bench.button.isPressed());
    QTest::mouseRelease(&bench.button, Qt::LeftButton);
    QCOMPARE(bench.heard(), QString("release"));
    QVERIFY(!bench.button.isPressed());
}

void tst_PTZButton::releaseOutside()
{
    Bench bench;
    QTest::mousePress(&bench.button, Qt::LeftButton);
    QTest::mouseRelease(&bench.button, Qt::LeftButton, {}, QPoint(500, 500));
    QCOMPARE(bench.heard(), QString("press release"));
}

void tst_PTZButton::onlyTheDisc_data()
{
    QTest::addColumn<QPoint>("point");
    QTest::addColumn<bool>("inside");
    QTest::newRow("middle") << QPoint(20, 20) << true;
    QTest::newRow("left end") << QPoint(0, 20) << true;
    QTest::newRow("bottom end") << QPoint(20, 39) << true;
    QTest::newRow("upper left corner") << QPoint(1, 0) << false;
    QTest::newRow("corner, nearly on it") << QPoint(5, 5) << false;
    QTest::newRow("corner, just on it") << QPoint(6, 6) << true;
    QTest::newRow("lower right corner") << QPoint(39, 39) << false;
}

void tst_PTZButton::onlyTheDisc()
{
    QFETCH(QPoint, point);
    QFETCH(bool, inside);
    Bench bench;
    QTest::mouseClick(&bench.button, Qt::LeftButton, {}, point);
    QCOMPARE(bench.heard(), QString(inside ? "press release" : ""));
}

void tst_PTZButton::otherMouseButtons()
{
    Bench bench;
    QTest::mouseClick(&bench.button, Qt::RightButton);
    QCOMPARE(bench.heard(), QString());
    QTest::mousePress(&bench.button, Qt::LeftButton);
    QTest::mouseClick(&bench.button, Qt::RightButton); // the left one still holds
    QCOMPARE(bench.heard(), QString("press"));
}

void tst_PTZButton::spaceBar()
{
    Bench bench;
    QVERIFY(bench.button.focusPolicy() & Qt::TabFocus);
    QTest::keyPress(&bench.button, Qt::Key_Space);
    QCOMPARE(bench.heard(), QString("press"));
    for (QEvent::Type type : {QEvent::KeyRelease, QEvent::KeyPress}) {
        QKeyEvent repeat(type, Qt::Key_Space, Qt::NoModifier, " ", true);
        QCoreApplication::sendEvent(&bench.button, &repeat);
    }
    QCOMPARE(bench.heard(), QString());
    QTest::keyRelease(&bench.button, Qt::Key_Space);
    QCOMPARE(bench.heard(), QString("release"));
}

void tst_PTZButton::otherKeys()
{
    Bench bench;
    for (QEvent::Type type : {QEvent::KeyPress, QEvent::KeyRelease}) {
        QKeyEvent key(type, Qt::Key_A, Qt::NoModifier, "a");
        QCoreApplication::sendEvent(&bench.button, &key);
        QVERIFY(!key.isAccepted());
    }
    QCOMPARE(bench.heard(), QString());
}

void tst_PTZButton::endsWithoutARelease_data()
{
    QTest::addColumn<int>("way");
    QTest::newRow("hidden") << 0;
    QTest::newRow("disabled") << 1;
    QTest::newRow("focus lost") << 2;
}

// What is steered must not run on.
void tst_PTZButton::endsWithoutARelease()
{
    QFETCH(int, way);
    Bench bench;
    bench.button.show();
    QTest::mousePress(&bench.button, Qt::LeftButton);
    QCOMPARE(bench.heard(), QString("press"));
    if (way == 0) {
        bench.button.hide();
    } else if (way == 1) {
        bench.button.setEnabled(false);
    } else {
        QFocusEvent lost(QEvent::FocusOut);
        QCoreApplication::sendEvent(&bench.button, &lost);
    }
    QCOMPARE(bench.heard(), QString("release"));
    QTest::mouseRelease(&bench.button, Qt::LeftButton);
    QCOMPARE(bench.heard(), QString());
}

void tst_PTZButton::deafWhenDisabled()
{
    Bench bench;
    bench.button.setEnabled(false);
    QTest::mouseClick(&bench.button, Qt::LeftButton);
    QTest::keyClick(&bench.button, Qt::Key_Space);
    QCOMPARE(bench.heard(), QString());
}

void tst_PTZButton::statesLookDifferent()
{
    Bench bench;
    const QImage idle = painted(bench.button);
    QTest::mousePress(&bench.button, Qt::LeftButton);
    const QImage pressed = painted(bench.button);
    QTest::mouseRelease(&bench.button, Qt::LeftButton);
    QCOMPARE(painted(bench.button), idle);
    bench.button.setEnabled(false);
    const QImage disabled = painted(bench.button);
    QVERIFY(pressed != idle);
    QVERIFY(disabled != idle);
    QVERIFY(disabled != pressed);
    QCOMPARE(paintedArea(pressed), paintedArea(idle)); // round in all of them
}

QTEST_MAIN(tst_PTZButton)
#include "tst_PTZButton.moc"

#include "PTZButton.h"
#include "PTZPad.h"
#include "Painting.h"

#include <QTransform>
#include <QtTest>

#include <memory>

class tst_PTZPad : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void places();
    void arrowsPointOutwards_data();
    void arrowsPointOutwards();
    void sendsWhileHeld_data();
    void sendsWhileHeld();
    void centerStops();
    void quickClickMoves();
    void backlogIsDropped();
    void stopFollowsADisabledPad();
    void finishLetsGo();
    void finishSendsWhatWaits();
    void goesWhileHeld();

private:
    PTZButton *button(const QString &name) const { return pad->findChild<PTZButton *>(name); }
    void press(const char *name) { QTest::mousePress(button(name), Qt::LeftButton); }
    void release(const char *name) { QTest::mouseRelease(button(name), Qt::LeftButton); }
    void waitForWords(const QStringList &expected)
    {
        QTRY_COMPARE(words, expected);
        QCoreApplication::processEvents();
        QCOMPARE(words, expected);
    }

    std::unique_ptr<PTZPad> pad;
    QStringList words;
};

void tst_PTZPad::init()
{
    pad = std::make_unique<PTZPad>(nullptr);
    pad->show();
    QVERIFY(QTest::qWaitForWindowExposed(pad.get()));
    words.clear();
    connect(pad.get(), &PTZPad::command, this, [this](const QString &word) { words << word; });
}

void tst_PTZPad::places()
{
    const QPoint center = button("stopButton")->geometry().center();
    const struct {
        const char *name;
        QPoint side;
    } rows[] = {{"upButton", {0, -1}}, {"downButton", {0, 1}}, {"leftButton", {-1, 0}},
        {"rightButton", {1, 0}}};
    for (const auto &row : rows) {
        const QPoint way = button(row.name)->geometry().center() - center;
        const QPoint step(qAbs(way.x()) > 2 ? way.x() / qAbs(way.x()) : 0,
            qAbs(way.y()) > 2 ? way.y() / qAbs(way.y()) : 0);
        QVERIFY2(step == row.side, row.name);
    }
}

void tst_PTZPad::arrowsPointOutwards_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("turn");
    QTest::newRow("right") << "rightButton" << 90;
    QTest::newRow("down") << "downButton" << 180;
    QTest::newRow("left") << "leftButton" << 270;
}

void tst_PTZPad::arrowsPointOutwards()
{
    QFETCH(QString, name);
    QFETCH(int, turn);
    const QImage up = painted(*button("upButton"));
    const QImage turned = up.transformed(QTransform().rotate(turn));
    const QImage image = painted(*button(name));
    QCOMPARE(image.size(), turned.size());
    int different = 0;
    int differentFromUp = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            const auto differs = [&](const QImage &other) {
                return qAbs(qGray(image.pixel(x, y)) - qGray(other.pixel(x, y))) > 64;
            };
            different += differs(turned);
            differentFromUp += differs(up);
        }
    }
    QVERIFY2(different < 5, qPrintable(QString::number(different)));
    QVERIFY2(differentFromUp > 20, qPrintable(QString::number(differentFromUp)));
}

void tst_PTZPad::sendsWhileHeld_data()
{
    QTest::addColumn<QString>("word");
    for (const char *word : {"up", "down", "left", "right"})
        QTest::newRow(word) << QString(word);
}

void tst_PTZPad::sendsWhileHeld()
{
    QFETCH(QString, word);
    const QByteArray name = word.toLatin1() + "Button";
    press(name);
    waitForWords({word});
    release(name);
    waitForWords({word, "stop"});
}

void tst_PTZPad::centerStops()
{
    press("stopButton");
    waitForWords({"stop"});
    release("stopButton");
    waitForWords({"stop"});
}

void tst_PTZPad::quickClickMoves()
{
    QTest::mouseClick(button("leftButton"), Qt::LeftButton);
    waitForWords({"left", "stop"});
}

// What is pressed while a slot blocks: only the last of it is heard, and its stop.
void tst_PTZPad::backlogIsDropped()
{
    bool blocked = false;
    connect(pad.get(), &PTZPad::command, this, [&] {
        if (blocked)
            return;
        blocked = true;
        release("leftButton");
        for (const char *name : {"upButton", "downButton", "rightButton"})
            QTest::mouseClick(button(name), Qt::LeftButton);
    });
    press("leftButton");
    waitForWords({"left", "right", "stop"});
}

void tst_PTZPad::stopFollowsADisabledPad()
{
    press("upButton");
    waitForWords({"up"});
    pad->setEnabled(false);
    waitForWords({"up", "stop"});
}

// Before the call returns, and then not once more.
void tst_PTZPad::finishLetsGo()
{
    press("upButton");
    waitForWords({"up"});
    pad->finish();
    QCOMPARE(words, QStringList({"up", "stop"}));
    QVERIFY(!button("upButton")->isPressed());
    release("upButton");
    pad->finish();
    waitForWords({"up", "stop"});
}

void tst_PTZPad::finishSendsWhatWaits()
{
    QTest::mouseClick(button("leftButton"), Qt::LeftButton);
    QCOMPARE(words, QStringList());
    pad->finish();
    QCOMPARE(words, QStringList({"left", "stop"}));
    waitForWords({"left", "stop"});
}

void tst_PTZPad::goesWhileHeld()
{
    press("upButton");
    waitForWords({"up"});
    pad.reset();
    waitForWords({"up"});
}

QTEST_MAIN(tst_PTZPad)
#include "tst_PTZPad.moc"

#include "ImageButtonChecks.h"
#include "MediaButton.h"
#include "MetaMethods.h"
#include "Painting.h"
#include "ZRLabel.h"
#include "ZRPixmapButton.h"

#include <QSignalSpy>
#include <QtTest>

class tst_MediaButton : public QObject
{
    Q_OBJECT

private slots:
    void metaObject();
    void geometry_data();
    void geometry();
    void sizeHint();
    void forwardsTextAndPixmap();
    void hover();
    void clicks();
    void pointingHand() { ImageButtonChecks::pointingHand<MediaButton>(); }
};

void tst_MediaButton::metaObject()
{
    QCOMPARE(ownMethods(MediaButton::staticMetaObject), QStringList{"public signal clicked()"});
}

void tst_MediaButton::geometry_data()
{
    QTest::addColumn<QSize>("size");
    QTest::addColumn<QString>("child");
    QTest::addColumn<QRect>("expected");
    QTest::newRow("icon, usual") << QSize(100, 24) << "icon" << QRect(2, 2, 20, 20);
    QTest::newRow("label, usual") << QSize(100, 24) << "label" << QRect(24, 2, 72, 20);
    QTest::newRow("icon, large") << QSize(131, 60) << "icon" << QRect(2, 2, 20, 20);
    QTest::newRow("label, large") << QSize(131, 60) << "label" << QRect(24, 2, 103, 20);
}

void tst_MediaButton::geometry()
{
    QFETCH(QSize, size);
    QFETCH(QString, child);
    QFETCH(QRect, expected);
    MediaButton button(nullptr);
    button.resize(size);
    painted(button); // a hidden widget lays itself out when it is painted
    QCOMPARE(button.findChild<QWidget *>(child)->geometry(), expected);
}

void tst_MediaButton::sizeHint()
{
    MediaButton button(nullptr);
    QCOMPARE(button.sizeHint(), QSize(28, 24));
    button.setText(QStringLiteral("Search\nDevices"));
    QCOMPARE(button.sizeHint(),
        QSize(button.findChild<ZRLabel *>("label")->sizeHint().width() + 28, 24));
    QVERIFY(button.sizeHint().width() > 28);
}

void tst_MediaButton::forwardsTextAndPixmap()
{
    ImageButtonChecks::Images images;
    MediaButton button(nullptr);
    button.setText(QStringLiteral("Search"));
    QCOMPARE(button.text(), QStringLiteral("Search"));
    QCOMPARE(button.findChild<ZRLabel *>("label")->text(), QStringLiteral("Search"));

    auto *icon = button.findChild<ZRPixmapButton *>("icon");
    button.setPixmap(images.save({40, 20}, Qt::red), 30);
    QCOMPARE(icon->sizeHint(), QSize(30, 15));
    button.resize(100, 24);
    QCOMPARE(painted(button, QWidget::DrawChildren).pixelColor(12, 12), QColor(Qt::red));
}

void tst_MediaButton::hover()
{
    MediaButton button(nullptr);
    button.resize(100, 24);
    const QPoint inside(50, 12);
    QCOMPARE(painted(button).pixelColor(inside), QColor(255, 255, 255));

    QEvent enter(QEvent::Enter);
    QCoreApplication::sendEvent(&button, &enter);
    QCOMPARE(painted(button).pixelColor(inside), QColor(202, 211, 138));
    QVERIFY(qAlpha(painted(button).pixel(0, 0)) < 255); // a corner of radius 1

    QEvent leave(QEvent::Leave);
    QCoreApplication::sendEvent(&button, &leave);
    QVERIFY(paintedArea(painted(button)).isNull());

    QCoreApplication::sendEvent(&button, &enter);
    QCOMPARE(painted(button).pixelColor(inside), QColor(202, 211, 138));
}

void tst_MediaButton::clicks()
{
    MediaButton button(nullptr);
    button.resize(100, 24);
    QSignalSpy clicked(&button, &MediaButton::clicked);
    auto *icon = button.findChild<QWidget *>("icon");
    QTest::mousePress(icon, Qt::LeftButton);
    QCOMPARE(clicked.count(), 0);
    QTest::mouseRelease(icon, Qt::LeftButton);
    QCOMPARE(clicked.count(), 1);

    auto *label = button.findChild<QWidget *>("label");
    QTest::mousePress(label, Qt::LeftButton);
    QCOMPARE(clicked.count(), 2);
    QTest::mouseRelease(label, Qt::LeftButton);
    QCOMPARE(clicked.count(), 2);

    QTest::mouseClick(&button, Qt::LeftButton, {}, QPoint(0, 0)); // the edge around both
    QCOMPARE(clicked.count(), 2);
}

QTEST_MAIN(tst_MediaButton)
#include "tst_MediaButton.moc"

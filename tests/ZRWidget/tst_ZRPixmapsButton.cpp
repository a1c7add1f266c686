#include "ImageButtonChecks.h"
#include "MetaMethods.h"
#include "ZRPixmapsButton.h"

#include <QtTest>

class tst_ZRPixmapsButton : public QObject
{
    Q_OBJECT

private slots:
    void metaObject();
    void sizeHint_data() { ImageButtonChecks::sizeHintRows(); }
    void sizeHint() { ImageButtonChecks::sizeHint<ZRPixmapsButton>(setImage); }
    void image() { ImageButtonChecks::imageFillsButtonOverBackground<ZRPixmapsButton>(setImage); }
    void clicksOnRelease() { ImageButtonChecks::clicksOnRelease<ZRPixmapsButton>(); }
    void pointingHand() { ImageButtonChecks::pointingHand<ZRPixmapsButton>(); }
    void imageOfState();
    void sizeHintIgnoresState();
    void clickKeepsState();
    void setCheckedAloneRepaints();

private:
    static void setImage(ZRPixmapsButton &button, const QString &path, int width)
    {
        button.setPixmaps(path, QString(), width);
    }
};

void tst_ZRPixmapsButton::metaObject()
{
    QCOMPARE(ownMethods(ZRPixmapsButton::staticMetaObject), QStringList{"public signal clicked()"});
}

void tst_ZRPixmapsButton::imageOfState()
{
    ImageButtonChecks::Images images;
    ZRPixmapsButton button(nullptr);
    button.resize(20, 20);
    button.setPixmaps(images.save({20, 20}, Qt::red), images.save({20, 20}, Qt::green), 20);
    QVERIFY(!button.isChecked());
    QCOMPARE(painted(button).pixelColor(10, 10), QColor(Qt::red));
    button.setChecked(true);
    QVERIFY(button.isChecked());
    QCOMPARE(painted(button).pixelColor(10, 10), QColor(Qt::green));
    button.setChecked(false);
    QVERIFY(!button.isChecked());
    QCOMPARE(painted(button).pixelColor(10, 10), QColor(Qt::red));
}

void tst_ZRPixmapsButton::sizeHintIgnoresState()
{
    ImageButtonChecks::Images images;
    ZRPixmapsButton button(nullptr);
    button.setPixmaps(images.save({40, 20}, Qt::red), images.save({10, 90}, Qt::green), 0);
    button.setChecked(true);
    QCOMPARE(button.sizeHint(), QSize(40, 20));
}

void tst_ZRPixmapsButton::clickKeepsState()
{
    ZRPixmapsButton button(nullptr);
    button.resize(20, 20);
    QTest::mouseClick(&button, Qt::LeftButton);
    QVERIFY(!button.isChecked());
    button.setChecked(true);
    QTest::mouseClick(&button, Qt::LeftButton);
    QVERIFY(button.isChecked());
}

void tst_ZRPixmapsButton::setCheckedAloneRepaints()
{
    ZRPixmapsButton button(nullptr);
    PaintCounter counter(button);
    QVERIFY(counter.waitForRest());
    QCOMPARE(counter.paintsOf([&] { button.setPixmaps(QString(), QString(), 20); }), 0);
    QCOMPARE(counter.paintsOf([&] { button.setChecked(true); }), 1);
}

QTEST_MAIN(tst_ZRPixmapsButton)
#include "tst_ZRPixmapsButton.moc"

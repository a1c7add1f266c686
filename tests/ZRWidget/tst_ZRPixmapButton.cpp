#include "ImageButtonChecks.h"
#include "MetaMethods.h"
#include "ZRPixmapButton.h"

#include <QtTest>

class tst_ZRPixmapButton : public QObject
{
    Q_OBJECT

private slots:
    void metaObject();
    void sizeHint_data() { ImageButtonChecks::sizeHintRows(); }
    void sizeHint() { ImageButtonChecks::sizeHint<ZRPixmapButton>(setImage); }
    void image() { ImageButtonChecks::imageFillsButtonOverBackground<ZRPixmapButton>(setImage); }
    void clicksOnRelease() { ImageButtonChecks::clicksOnRelease<ZRPixmapButton>(); }
    void pointingHand() { ImageButtonChecks::pointingHand<ZRPixmapButton>(); }
    void setPixmapRepaints();

private:
    static void setImage(ZRPixmapButton &button, const QString &path, int width)
    {
        button.setPixmap(path, width);
    }
};

void tst_ZRPixmapButton::metaObject()
{
    QCOMPARE(ownMethods(ZRPixmapButton::staticMetaObject), QStringList{"public signal clicked()"});
}

void tst_ZRPixmapButton::setPixmapRepaints()
{
    ZRPixmapButton button(nullptr);
    PaintCounter counter(button);
    QVERIFY(counter.waitForRest());
    QCOMPARE(counter.paintsOf([&] { button.setPixmap(QString(), 20); }), 1);
}

QTEST_MAIN(tst_ZRPixmapButton)
#include "tst_ZRPixmapButton.moc"

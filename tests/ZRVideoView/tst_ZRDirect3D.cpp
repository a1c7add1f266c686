#include "TestCard.h"
#include "ZRDirectVideoView.h"
#include "ZRLetterbox.h"

#include <QtTest>

// The module that this system has in Direct3D's place.
class tst_ZRDirect3D : public QObject
{
    Q_OBJECT

private slots:
    void showsThePicture();
};

void tst_ZRDirect3D::showsThePicture()
{
    QWidget window(nullptr, Qt::X11BypassWindowManagerHint);
    window.setGeometry(20, 20, 400, 300);
    auto *view = new ZRDirectVideoView(&window);
    view->resize(window.size());
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    const Frame card = TestCard::frame(640, 360, AV_PIX_FMT_YUV420P);
    view->update(card.get());

    const QRect area = zrLetterbox({640, 360}, window.size());
    QTRY_VERIFY_WITH_TIMEOUT(TestCard::likeness(TestCard::shot(window), area, *card) >= 35, 20000);
}

QTEST_MAIN(tst_ZRDirect3D)
#include "tst_ZRDirect3D.moc"

#include "PictureTest.h"
#include "TestCard.h"
#include "ZRDirectVideoView.h"
#include "ZRMemoryDirect3D.h"
#include "ZRSoftwarePainter.h"
#include "ZRYuvPicture.h"

#include <QPainter>
#include <QtTest>

class tst_ZRSoftwarePainter : public PictureTest
{
    Q_OBJECT

    View createView(QWidget *parent) override
    {
        auto *view = new ZRDirectVideoView(parent, module);
        return {view, view};
    }

    ZRMemoryDirect3D module{
        [](QWidget *window) { return std::make_unique<ZRSoftwarePainter>(window); }};

private slots:
    void showPaintsAtOnce();
    void aSiblingAboveIsPaintedOverIt();
    void paintsElsewhereToo();
    void leavesTheWindowAsItWas();
};

// No event loop runs between the picture and the shot.
void tst_ZRSoftwarePainter::showPaintsAtOnce()
{
    open({320, 240});
    const Frame card = TestCard::frame(320, 240, AV_PIX_FMT_YUV420P);

    view.video->update(card.get());

    const QImage shot = TestCard::shot(*view.widget);
    QVERIFY(TestCard::likeness(shot, shot.rect(), *card) >= 35);
}

// The spinner of the preview lies half transparent on the picture and turns between two frames.
void tst_ZRSoftwarePainter::aSiblingAboveIsPaintedOverIt()
{
    open({320, 240});
    const Frame grey = greyFrame(320, 240);
    auto *above = new QWidget(view.widget->parentWidget());
    above->setGeometry(view.widget->x() + 100, view.widget->y() + 100, 50, 50);
    above->setStyleSheet(QStringLiteral("background: rgba(255, 0, 0, 128)"));
    above->setAttribute(Qt::WA_StyledBackground);
    above->show();
    view.video->update(grey.get());

    const auto inPlace = [&] {
        const QImage shot = TestCard::shot(*view.widget);
        const QRgb inside = shot.pixel(125, 125);
        const QRgb outside = shot.pixel(90, 125);
        return std::abs(qRed(inside) - 192) < 4 && std::abs(qBlue(inside) - 65) < 4
            && std::abs(qRed(outside) - 130) < 4 && std::abs(qBlue(outside) - 130) < 4;
    };
    QTRY_VERIFY(inPlace());
    above->update(); // repaints that part of the picture alone
    QCoreApplication::processEvents();
    QVERIFY(inPlace());
}

void tst_ZRSoftwarePainter::paintsElsewhereToo()
{
    open({320, 240});
    const Frame card = TestCard::frame(320, 240, AV_PIX_FMT_YUV420P);
    view.video->update(card.get());
    const QRect whole(0, 0, 320, 240);

    const QImage grabbed = view.widget->grab().toImage().convertToFormat(QImage::Format_RGB32);
    QVERIFY(TestCard::likeness(grabbed, whole, *card) >= 35);

    for (const auto format : {QImage::Format_RGB32, QImage::Format_RGB888}) {
        QImage image(340, 260, format);
        image.fill(Qt::blue);
        view.widget->render(&image, QPoint(7, 9));
        const QImage result = image.convertToFormat(QImage::Format_RGB32);
        QVERIFY(TestCard::likeness(result, whole.translated(7, 9), *card) >= 35);
        QCOMPARE(result.pixel(6, 9), QColor(Qt::blue).rgb());
        QCOMPARE(result.pixel(327, 248), QColor(Qt::blue).rgb());
    }

    QImage doubled(640, 480, QImage::Format_RGB32);
    QPainter painter(&doubled);
    painter.scale(2, 2);
    view.widget->render(&painter);
    painter.end();
    QVERIFY(TestCard::likeness(doubled.scaled(320, 240), whole, *card) >= 35);
}

void tst_ZRSoftwarePainter::leavesTheWindowAsItWas()
{
    QWidget widget;
    widget.resize(64, 48);
    const QImage before = widget.grab().toImage();
    {
        const Frame grey = greyFrame(64, 48);
        const ZRYuvPicture picture = ZRYuvPicture::of(*grey);
        ZRSoftwarePainter painter(&widget);
        painter.show(&picture);
        QVERIFY(widget.testAttribute(Qt::WA_OpaquePaintEvent));
        QVERIFY(widget.grab().toImage() != before);
    }
    QVERIFY(!widget.testAttribute(Qt::WA_OpaquePaintEvent));
    QCOMPARE(widget.grab().toImage(), before);
}

QTEST_MAIN(tst_ZRSoftwarePainter)
#include "tst_ZRSoftwarePainter.moc"

#include "FrameStorm.h"
#include "Frames.h"
#include "PresentedPicture.h"
#include "ShownLikeness.h"
#include "TestCard.h"
#include "ZRDirectVideoView.h"

#include <QGuiApplication>
#include <QScreen>
#include <QtTest>

#include <memory>

// What the view shows through the system's Direct3D 9: in the render target, which has the size of
// the desktop, and on the screen.
class tst_ZRDirect3DPicture : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void rendersThePicture_data();
    void rendersThePicture();
    void rendersItOnAllOfTheDesktop();
    void rangeIsTheDriversAffair();
    void showsThePicture_data();
    void showsThePicture();
    void streamMayChangeItsSize();
    void windowMayChangeItsSize();
    void pictureOutlivesRepaints();
    void pictureComesBack_data();
    void pictureComesBack();
    void siblingsStayOnTop();
    void clearMakesBlack();
    void staysBlackAfterClear();
    void framesComeFromAnotherThread();

private:
    void open(const QSize &viewSize);
    bool shows(const AVFrame &frame);
    bool showsBlack();

    std::unique_ptr<QWidget> window;
    ZRDirectVideoView *view = nullptr;
};

namespace {

constexpr int patience = 20000;

Frame card(int width, int height, int format = AV_PIX_FMT_YUV420P)
{
    return TestCard::frame(width, height, format);
}

double renderedLikeness(const AVFrame &frame)
{
    const QImage rendered = PresentedPicture::last();
    return rendered.isNull() ? 0 : ShownLikeness::presented.of(rendered, rendered.rect(), frame);
}

}

void tst_ZRDirect3DPicture::init()
{
    PresentedPicture::forget();
}

void tst_ZRDirect3DPicture::cleanup()
{
    window.reset();
}

// A window with the view in its middle, on a ground that isn't black.
void tst_ZRDirect3DPicture::open(const QSize &viewSize)
{
    window = std::make_unique<QWidget>(nullptr, Qt::FramelessWindowHint);
    window->setPalette(Qt::red);
    window->setGeometry(30, 40, viewSize.width() + 60, viewSize.height() + 50);
    view = new ZRDirectVideoView(window.get());
    view->setGeometry(37, 23, viewSize.width(), viewSize.height());
    window->show();
    QVERIFY(QTest::qWaitForWindowExposed(window.get()));
}

bool tst_ZRDirect3DPicture::shows(const AVFrame &frame)
{
    return ShownLikeness::presented.isReached(*view, frame);
}

bool tst_ZRDirect3DPicture::showsBlack()
{
    return QTest::qWaitFor([&] { return TestCard::isBlack(TestCard::shot(*view)); }, patience);
}

void tst_ZRDirect3DPicture::rendersThePicture_data()
{
    QTest::addColumn<QSize>("video");
    QTest::newRow("smaller than the desktop") << QSize(640, 360);
    QTest::newRow("a width of no whole vectors") << QSize(648, 364);
    QTest::newRow("upright") << QSize(480, 640);
    QTest::newRow("HD") << QSize(1280, 720);
    QTest::newRow("larger than the desktop") << QSize(1920, 1080);
}

void tst_ZRDirect3DPicture::rendersThePicture()
{
    QFETCH(const QSize, video);
    open({640, 400});
    const Frame frame = card(video.width(), video.height());

    view->update(frame.get());

    const QImage rendered = PresentedPicture::last();
    QCOMPARE(rendered.size(), QGuiApplication::primaryScreen()->size());
    const double rendition = renderedLikeness(*frame);
    qInfo("%dx%d rendered: %.1f dB", video.width(), video.height(), rendition);
    QVERIFY(rendition >= ShownLikeness::presented.enough);
}

// Here the view's own call stretches, unaided.
void tst_ZRDirect3DPicture::rendersItOnAllOfTheDesktop()
{
    const QSize desktop = QGuiApplication::primaryScreen()->size();
    open(desktop);
    const Frame frame = card(desktop.width() / 2, desktop.height() / 2);

    view->update(frame.get());

    QVERIFY(PresentedPicture::isUnaided());
    const double rendition = renderedLikeness(*frame);
    qInfo("rendered: %.1f dB", rendition);
    QVERIFY(rendition >= ShownLikeness::presented.enough);
}

// YV12 says nothing about its range: the same planes come out alike under both formats.
void tst_ZRDirect3DPicture::rangeIsTheDriversAffair()
{
    open({640, 400});
    const Frame frame = card(640, 360);
    view->update(frame.get());
    const QImage limited = PresentedPicture::last();
    PresentedPicture::forget();

    frame->format = AV_PIX_FMT_YUVJ420P;
    view->update(frame.get());

    QVERIFY(!limited.isNull());
    QCOMPARE(PresentedPicture::last(), limited);
}

void tst_ZRDirect3DPicture::showsThePicture_data()
{
    QTest::addColumn<QSize>("video");
    QTest::addColumn<QSize>("size");
    QTest::newRow("bars above and below") << QSize(1280, 720) << QSize(960, 600);
    QTest::newRow("bars at the sides") << QSize(640, 480) << QSize(700, 360);
    QTest::newRow("no bars") << QSize(1280, 720) << QSize(960, 540);
    QTest::newRow("odd width of bars") << QSize(640, 480) << QSize(1000, 500);
    QTest::newRow("larger") << QSize(640, 360) << QSize(1100, 700);
}

void tst_ZRDirect3DPicture::showsThePicture()
{
    QFETCH(const QSize, video);
    QFETCH(const QSize, size);
    open(size);
    const Frame frame = card(video.width(), video.height());
    view->update(frame.get());
    QVERIFY(shows(*frame));
}

void tst_ZRDirect3DPicture::streamMayChangeItsSize()
{
    open({800, 500});
    for (const QSize &size : {QSize(640, 480), QSize(1280, 720), QSize(360, 640)}) {
        const Frame frame = card(size.width(), size.height());
        view->update(frame.get());
        QVERIFY(renderedLikeness(*frame) >= ShownLikeness::presented.enough);
        QVERIFY(shows(*frame));
    }
}

void tst_ZRDirect3DPicture::windowMayChangeItsSize()
{
    open({800, 500});
    const Frame frame = card(1280, 720);
    view->update(frame.get());
    QVERIFY(shows(*frame));

    // No further frame comes, and the picture fits all the same.
    for (const QSize &size : {QSize(500, 410), QSize(433, 230), QSize(801, 503)}) {
        view->resize(size);
        QVERIFY(shows(*frame));
    }
    window->move(120, 90);
    QVERIFY(shows(*frame));
}

// What Qt paints by itself doesn't get over the picture.
void tst_ZRDirect3DPicture::pictureOutlivesRepaints()
{
    open({640, 400});
    const Frame frame = card(640, 360);
    view->update(frame.get());
    QVERIFY(shows(*frame));

    for (QWidget *widget : {static_cast<QWidget *>(view), window.get()}) {
        widget->update();
        QCoreApplication::processEvents();
        QVERIFY(shows(*frame));
        widget->repaint();
        QVERIFY(shows(*frame));
    }
}

void tst_ZRDirect3DPicture::pictureComesBack_data()
{
    QTest::addColumn<QString>("after");
    QTest::newRow("covered by another window") << "cover";
    QTest::newRow("hidden with its window") << "window";
    QTest::newRow("hidden alone") << "view";
    QTest::newRow("minimised") << "minimise";
}

// And that without a further frame.
void tst_ZRDirect3DPicture::pictureComesBack()
{
    QFETCH(const QString, after);
    open({640, 400});
    const Frame frame = card(640, 360);
    view->update(frame.get());
    QVERIFY(shows(*frame));

    if (after == "cover") {
        QWidget cover(nullptr, Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint);
        cover.setPalette(Qt::blue);
        cover.setGeometry(100, 100, 300, 200);
        cover.show();
        cover.raise();
        const auto covered = [&] {
            const QPoint inside = cover.geometry().center() - view->mapToGlobal(QPoint());
            return TestCard::shot(*view).pixelColor(inside) == Qt::blue;
        };
        QVERIFY(QTest::qWaitFor(covered, patience));
        cover.hide();
    } else if (after == "minimise") {
        window->showMinimized();
        // Asked for too early, its return gets lost on the way to the window manager.
        const auto groundIsSeen = [&] {
            return TestCard::shot(*window).pixelColor(5, 5) == Qt::red;
        };
        QTRY_VERIFY_WITH_TIMEOUT(!groundIsSeen(), patience);
        window->showNormal();
    } else {
        QWidget *hidden = after == "view" ? view : window.get();
        hidden->hide();
        QCoreApplication::processEvents();
        hidden->show();
    }
    QVERIFY(shows(*frame));
}

// A widget over the view is seen over the picture.
void tst_ZRDirect3DPicture::siblingsStayOnTop()
{
    open({640, 360});
    QWidget sibling(window.get());
    sibling.setPalette(Qt::green);
    sibling.setAutoFillBackground(true);
    sibling.setGeometry(view->x() + 100, view->y() + 50, 30, 30);
    sibling.show();
    const Frame frame = card(640, 360);
    const auto seen = [&] {
        const QImage shot = TestCard::shot(*view);
        return shot.pixelColor(115, 65) == Qt::green && qGray(shot.pixel(2, 180)) > 200;
    };
    for (int i = 0; i < 3; ++i) {
        view->update(frame.get());
        QVERIFY(QTest::qWaitFor(seen, patience));
    }
}

void tst_ZRDirect3DPicture::clearMakesBlack()
{
    open({640, 400});
    QVERIFY(showsBlack());
    const Frame frame = card(640, 360);
    for (int i = 0; i < 2; ++i) {
        view->update(frame.get());
        QVERIFY(shows(*frame));
        view->clear();
        QVERIFY(TestCard::isBlack(PresentedPicture::last()));
        QVERIFY(showsBlack());
    }
}

void tst_ZRDirect3DPicture::staysBlackAfterClear()
{
    open({640, 400});
    const Frame frame = card(640, 360);
    view->update(frame.get());
    QVERIFY(shows(*frame));
    view->clear();
    QVERIFY(showsBlack());
    for (const QSize &size : {QSize(500, 410), QSize(801, 503)}) {
        view->resize(size);
        QCoreApplication::processEvents();
        QVERIFY(showsBlack());
    }
    window->hide();
    window->show();
    QVERIFY(showsBlack());
}

void tst_ZRDirect3DPicture::framesComeFromAnotherThread()
{
    open({400, 300});
    const Frame frame = card(320, 240);
    passFrameStorm(*view, *view, frame.get(), 40);
    view->update(frame.get());
    QVERIFY(shows(*frame));
}

QTEST_MAIN(tst_ZRDirect3DPicture)
#include "tst_ZRDirect3DPicture.moc"

#include "PictureTest.h"
#include "FrameStorm.h"
#include "GraphicsDriver.h"
#include "ShownLikeness.h"
#include "TestCard.h"
#include "ZRVideoView.h"

#include <QtTest>

#include <climits>
#include <functional>

using FrameMaker = std::function<Frame()>;
Q_DECLARE_METATYPE(FrameMaker)

namespace {

constexpr int patience = 20000;

}

void PictureTest::open(const QSize &viewSize)
{
    window = std::make_unique<QWidget>(nullptr, Qt::X11BypassWindowManagerHint);
    window->setPalette(Qt::red);
    window->setGeometry(30, 40, viewSize.width() + 60, viewSize.height() + 50);
    view = createView(window.get());
    view.widget->setGeometry(37, 23, viewSize.width(), viewSize.height());
    window->show();
    QVERIFY(QTest::qWaitForWindowExposed(window.get()));
}

void PictureTest::cleanup()
{
    window.reset();
    keepGraphicsDriver();
}

bool PictureTest::shows(const AVFrame &frame)
{
    return ShownLikeness::computed.isReached(*view.widget, frame);
}

void PictureTest::isBlackWithoutAFrame()
{
    open({320, 200});
    QTRY_VERIFY_WITH_TIMEOUT(TestCard::isBlack(TestCard::shot(*view.widget)), patience);
}

void PictureTest::showsThePicture_data()
{
    QTest::addColumn<QSize>("video");
    QTest::addColumn<QSize>("size");
    QTest::addColumn<int>("format");

    struct Row {
        const char *name;
        QSize video, size;
    };
    const Row rows[] = {
        {"smaller, bars above and below", {1280, 720}, {960, 600}},
        {"smaller, bars at the sides", {640, 480}, {700, 360}},
        {"smaller, no bars", {1280, 720}, {960, 540}},
        {"half", {1920, 1080}, {960, 540}},
        {"an odd width on the screen", {1920, 1080}, {1101, 620}},
        {"larger", {640, 360}, {1100, 700}},
        {"as it is", {640, 480}, {640, 480}},
        {"height no multiple of four", {640, 362}, {800, 600}},
        {"odd height", {640, 363}, {800, 600}},
        {"odd height, one more than a multiple of four", {640, 361}, {800, 600}},
        {"odd width", {641, 360}, {800, 600}},
        {"odd both", {353, 287}, {500, 300}},
    };
    for (const Row &row : rows) {
        for (const int format : {AV_PIX_FMT_YUV420P, AV_PIX_FMT_YUVJ420P}) {
            const QByteArray name = row.name + QByteArray(", format ") + QByteArray::number(format);
            QTest::newRow(name.constData()) << row.video << row.size << format;
        }
    }
}

void PictureTest::showsThePicture()
{
    QFETCH(const QSize, video);
    QFETCH(const QSize, size);
    QFETCH(const int, format);
    open(size);

    const Frame frame = TestCard::frame(video.width(), video.height(), format);
    view.video->update(frame.get());

    QVERIFY(shows(*frame));
}

void PictureTest::namedMatrixIsUsed_data()
{
    QTest::addColumn<int>("format");
    QTest::newRow("limited range") << int(AV_PIX_FMT_YUV420P);
    QTest::newRow("full range") << int(AV_PIX_FMT_YUVJ420P);
}

void PictureTest::namedMatrixIsUsed()
{
    QFETCH(const int, format);
    open({640, 360});

    const Frame frame = TestCard::frame(640, 360, format, AVCOL_SPC_BT709);
    view.video->update(frame.get());

    QVERIFY(shows(*frame));
}

// The same values, once as the limited and once as the full range: black and white tell.
void PictureTest::tellsRangesApart()
{
    struct Row {
        int format, grey, shown;
    };
    const Row rows[] = {
        {AV_PIX_FMT_YUV420P, 16, 0},
        {AV_PIX_FMT_YUVJ420P, 16, 16},
        {AV_PIX_FMT_YUV420P, 0, 0},
        {AV_PIX_FMT_YUVJ420P, 0, 0},
        {AV_PIX_FMT_YUV420P, 126, 128},
        {AV_PIX_FMT_YUVJ420P, 126, 126},
        {AV_PIX_FMT_YUV420P, 235, 255},
        {AV_PIX_FMT_YUVJ420P, 235, 235},
        {AV_PIX_FMT_YUV420P, 255, 255},
        {AV_PIX_FMT_YUVJ420P, 255, 255},
    };
    open({160, 90});
    for (const Row &row : rows) {
        const Frame frame = greyFrame(160, 90, row.format, row.grey);
        view.video->update(frame.get());
        const bool right = QTest::qWaitFor(
            [&] {
                const QRgb pixel = TestCard::shot(*view.widget).pixel(80, 45);
                const int error = std::max({std::abs(qRed(pixel) - row.shown),
                    std::abs(qGreen(pixel) - row.shown), std::abs(qBlue(pixel) - row.shown)});
                return error <= 2;
            },
            patience);
        QVERIFY2(right, qPrintable(QStringLiteral("%1 %2").arg(row.format).arg(row.grey)));
    }
}

void PictureTest::streamMayChangeItsSize()
{
    open({800, 500});
    const QSize sizes[] = {{640, 480}, {1280, 720}, {360, 640}, {641, 481}, {640, 480}};
    for (const QSize &size : sizes) {
        const Frame frame = TestCard::frame(size.width(), size.height(), AV_PIX_FMT_YUV420P);
        view.video->update(frame.get());
        QVERIFY(shows(*frame));
    }
}

void PictureTest::windowMayChangeItsSize()
{
    open({800, 500});
    const Frame frame = TestCard::frame(1280, 720, AV_PIX_FMT_YUV420P);
    view.video->update(frame.get());
    QVERIFY(shows(*frame));

    // No further frame comes, and the picture fits all the same.
    for (const QSize &size : {QSize(500, 410), QSize(333, 130), QSize(801, 503)}) {
        view.widget->resize(size);
        QVERIFY(shows(*frame));
    }
}

void PictureTest::lastFrameStands()
{
    open({640, 360});
    const Frame grey = greyFrame(640, 360);
    const Frame card = TestCard::frame(640, 360, AV_PIX_FMT_YUV420P);
    view.video->update(grey.get());
    view.video->update(card.get());
    QVERIFY(shows(*card));

    view.widget->update(); // and a repaint changes nothing
    window->update();
    QCoreApplication::processEvents();
    QVERIFY(shows(*card));
}

void PictureTest::comesBackAfterBeingHidden()
{
    open({640, 360});
    const Frame card = TestCard::frame(640, 360, AV_PIX_FMT_YUV420P);
    view.widget->hide();
    view.video->update(card.get());
    QCoreApplication::processEvents();

    view.widget->show();
    view.video->update(card.get());

    QVERIFY(shows(*card));
}

void PictureTest::clearMakesBlack()
{
    open({640, 400});
    const Frame card = TestCard::frame(640, 360, AV_PIX_FMT_YUV420P);
    for (int i = 0; i < 2; ++i) {
        view.video->update(card.get());
        QVERIFY(shows(*card));
        view.video->clear();
        QTRY_VERIFY_WITH_TIMEOUT(TestCard::isBlack(TestCard::shot(*view.widget)), patience);
    }
}

void PictureTest::nullMakesBlack()
{
    open({640, 400});
    const Frame card = TestCard::frame(640, 360, AV_PIX_FMT_YUV420P);
    view.video->update(card.get());
    QVERIFY(shows(*card));

    view.video->update(nullptr);

    QTRY_VERIFY_WITH_TIMEOUT(TestCard::isBlack(TestCard::shot(*view.widget)), patience);
}

void PictureTest::oddFramesDoNoHarm_data()
{
    QTest::addColumn<FrameMaker>("make");

    const auto add = [](const char *name, FrameMaker make) {
        QTest::newRow(name) << std::move(make);
    };
    const auto addChanged = [&](const char *name, void (*change)(AVFrame *)) {
        add(name, [change] {
            Frame frame = greyFrame(64, 48);
            change(frame.get());
            return frame;
        });
    };
    add("1x1", [] { return greyFrame(1, 1); });
    add("2x1", [] { return greyFrame(2, 1); });
    add("1x2", [] { return greyFrame(1, 2); });
    add("2x2", [] { return greyFrame(2, 2); });
    add("3x3", [] { return greyFrame(3, 3); });
    add("1x700", [] { return greyFrame(1, 700); });
    add("3000x1", [] { return greyFrame(3000, 1); });
    add("5000x2", [] { return greyFrame(5000, 2); });
    add("another format", [] { return greyFrame(64, 48, AV_PIX_FMT_YUV444P); });
    add("a hardware format without a surface", [] { return bareFrame(64, 48, 51); });
    add("no planes and no buffer", [] { return bareFrame(0, 0, 0); });
    addChanged("no luma", [](AVFrame *frame) { frame->data[0] = nullptr; });
    addChanged("no U", [](AVFrame *frame) { frame->data[1] = nullptr; });
    addChanged("no V", [](AVFrame *frame) { frame->data[2] = nullptr; });
    addChanged("no plane",
        [](AVFrame *frame) { frame->data[0] = frame->data[1] = frame->data[2] = nullptr; });
    addChanged("a huge line size", [](AVFrame *frame) { frame->linesize[0] = INT_MAX; });
    addChanged("huge line sizes", [](AVFrame *frame) {
        frame->linesize[0] = frame->linesize[1] = frame->linesize[2] = INT_MAX;
    });
    addChanged("a larger line size of V than its buffer allows",
        [](AVFrame *frame) { frame->linesize[2] = frame->linesize[1] * 100; });
    addChanged("line sizes 0",
        [](AVFrame *frame) { frame->linesize[0] = frame->linesize[1] = frame->linesize[2] = 0; });
    addChanged("a negative line size", [](AVFrame *frame) { frame->linesize[0] *= -1; });
    addChanged("negative line sizes", [](AVFrame *frame) {
        frame->linesize[0] = frame->linesize[1] = frame->linesize[2] = INT_MIN;
    });
    addChanged("larger than its buffers", [](AVFrame *frame) {
        frame->width *= 9;
        frame->height *= 9;
    });
    addChanged("a size beyond all measure",
        [](AVFrame *frame) { frame->width = frame->height = INT_MAX; });
    addChanged("a size below 0", [](AVFrame *frame) { frame->width = -5; });
    addChanged("a height of 0", [](AVFrame *frame) { frame->height = 0; });
    addChanged("a format below 0", [](AVFrame *frame) { frame->format = -1; });
}

void PictureTest::oddFramesDoNoHarm()
{
    QFETCH(const FrameMaker, make);
    open({320, 200});

    const Frame odd = make();
    view.video->update(odd.get());
    view.video->update(odd.get());
    QCoreApplication::processEvents();
    view.widget->resize(300, 190);
    QCoreApplication::processEvents();

    view.video->clear();
    const Frame card = TestCard::frame(320, 240, AV_PIX_FMT_YUV420P);
    view.video->update(card.get());
    QVERIFY(shows(*card));
}

void PictureTest::sizeMayChangeWithEveryFrame()
{
    open({400, 300});
    for (int i = 1; i <= 120; ++i) {
        const Frame frame = greyFrame(
            1 + i * 37 % 500, 1 + i * 53 % 400, i % 7 ? AV_PIX_FMT_YUV420P : AV_PIX_FMT_YUVJ420P);
        view.video->update(frame.get());
        QCoreApplication::processEvents();
    }
    const Frame card = TestCard::frame(320, 240, AV_PIX_FMT_YUV420P);
    view.video->update(card.get());
    QVERIFY(shows(*card));
}

void PictureTest::framesComeFromAnotherThread()
{
    open({400, 300});
    const Frame card = TestCard::frame(320, 240, AV_PIX_FMT_YUV420P);
    passFrameStorm(*view.widget, *view.video, card.get(), 200);
    view.video->update(card.get());
    QVERIFY(shows(*card));
}

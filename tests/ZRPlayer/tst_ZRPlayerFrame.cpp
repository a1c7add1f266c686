#include "ZRPlayerFrame.h"
#include "ZRPlayerObserver.h"

extern "C" {
#include <libavutil/avutil.h>
#include <libavutil/buffer.h>
#include <libavutil/frame.h>
}

#include <QtTest>

#include <memory>
#include <type_traits>

namespace {

struct FrameDeleter {
    void operator()(AVFrame *frame) const { av_frame_free(&frame); }
};
using Frame = std::unique_ptr<AVFrame, FrameDeleter>;

Frame grayFrame(int64_t pts = 0)
{
    Frame frame(av_frame_alloc());
    frame->format = AV_PIX_FMT_GRAY8;
    frame->width = 32;
    frame->height = 16;
    frame->pts = pts;
    av_frame_get_buffer(frame.get(), 0);
    return frame;
}

int references(const Frame &frame)
{
    return av_buffer_get_ref_count(frame->buf[0]);
}

class Derived : public ZRPlayerFrame
{
public:
    Derived(const AVFrame *frame, bool *ended) : ZRPlayerFrame(frame, {1, 25}), ended(ended) { }
    ~Derived() override { *ended = true; }

private:
    bool *ended;
};

}

class tst_ZRPlayerFrame : public QObject
{
    Q_OBJECT

private slots:
    void sharesTheBuffers();
    void outlivesTheWorkingFrame();
    void keepsTheTimeBase();
    void endsThroughTheBase();
    void time_data();
    void time();
    void observersDoNothingByThemselves();
};

void tst_ZRPlayerFrame::sharesTheBuffers()
{
    const Frame source = grayFrame();
    {
        const ZRPlayerFrame frame(source.get(), {1, 25});
        QVERIFY(frame.frame != source.get());
        QCOMPARE(frame.frame->data[0], source->data[0]);
        QCOMPARE(references(source), 2);
        QCOMPARE(frame.frame->width, 32);
        QCOMPARE(frame.frame->height, 16);
        QCOMPARE(frame.frame->format, int(AV_PIX_FMT_GRAY8));
    }
    QCOMPARE(references(source), 1);
}

void tst_ZRPlayerFrame::outlivesTheWorkingFrame()
{
    Frame source = grayFrame();
    source->data[0][0] = 77;
    const ZRPlayerFrame frame(source.get(), {1, 25});
    av_frame_unref(source.get());
    source.reset();
    QCOMPARE(int(frame.frame->data[0][0]), 77);
    QCOMPARE(av_buffer_get_ref_count(frame.frame->buf[0]), 1);
}

void tst_ZRPlayerFrame::keepsTheTimeBase()
{
    const Frame source = grayFrame();
    const ZRPlayerFrame frame(source.get(), {1001, 30000});
    QCOMPARE(frame.timeBase.num, 1001);
    QCOMPARE(frame.timeBase.den, 30000);
}

void tst_ZRPlayerFrame::endsThroughTheBase()
{
    QVERIFY(std::has_virtual_destructor<ZRPlayerFrame>::value);
    QVERIFY(!std::is_copy_constructible<ZRPlayerFrame>::value);
    const Frame source = grayFrame();
    bool ended = false;
    delete static_cast<ZRPlayerFrame *>(new Derived(source.get(), &ended));
    QVERIFY(ended);
    QCOMPARE(references(source), 1);
}

void tst_ZRPlayerFrame::time_data()
{
    QTest::addColumn<int>("num");
    QTest::addColumn<int>("den");
    QTest::addColumn<qint64>("pts");
    QTest::addColumn<double>("seconds");
    QTest::newRow("one second") << 1 << 90000 << qint64(90000) << 1.0;
    QTest::newRow("start") << 1 << 90000 << qint64(0) << 0.0;
    QTest::newRow("half a picture") << 1 << 50 << qint64(1) << 0.02;
    QTest::newRow("before the start") << 1 << 1000 << qint64(-2500) << -2.5;
    QTest::newRow("odd base") << 1001 << 30000 << qint64(30) << 1.001;
    QTest::newRow("long live stream") << 1 << 90000 << qint64(90000) * 864000 << 864000.0;
}

void tst_ZRPlayerFrame::time()
{
    QFETCH(int, num);
    QFETCH(int, den);
    QFETCH(qint64, pts);
    QFETCH(double, seconds);
    const Frame source = grayFrame(pts);
    QCOMPARE(ZRPlayerFrame(source.get(), {num, den}).time(), seconds);
    source->pts = AV_NOPTS_VALUE;
    QVERIFY(ZRPlayerFrame(source.get(), {num, den}).time() < -1e9);
}

void tst_ZRPlayerFrame::observersDoNothingByThemselves()
{
    ZRPlayerReaderObserver reader;
    ZRPlayerRenderObserver render;
    ZRPlayerObserver player;
    reader.onReaderNotify(nullptr, 0);
    render.onRenderNotify(nullptr, 0);
    player.onPlayerNotify(nullptr, 0, 0.0, 0.0);
    QVERIFY(std::has_virtual_destructor<ZRPlayerReaderObserver>::value);
    QVERIFY(std::has_virtual_destructor<ZRPlayerRenderObserver>::value);
    QVERIFY(std::has_virtual_destructor<ZRPlayerObserver>::value);
}

QTEST_APPLESS_MAIN(tst_ZRPlayerFrame)
#include "tst_ZRPlayerFrame.moc"

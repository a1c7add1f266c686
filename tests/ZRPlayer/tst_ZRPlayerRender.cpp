#include "ZRPlayerRender.h"

#include "AudioFrames.h"
#include "LogCatcher.h"
#include "PlayerProbe.h"
#include "ZRPcmPlayer.h"
#include "ZRPlayerDecoder.h"
#include "ZRPlayerFrame.h"

#include <QElapsedTimer>
#include <QSemaphore>
#include <QtTest>

#include <atomic>
#include <memory>
#include <type_traits>

// The clock of the schedule. Held, it stands where a test puts it.
static std::atomic<bool> clockHeld{false};
static std::atomic<double> heldClock{0.0};
static std::atomic<int> clockReadings{0};

extern "C" double __real__ZN8ZRThread14currentSecondsEv();
extern "C" double __wrap__ZN8ZRThread14currentSecondsEv()
{
    ++clockReadings;
    return clockHeld ? heldClock.load() : __real__ZN8ZRThread14currentSecondsEv();
}

namespace {

constexpr int patience = 60000;
constexpr double noTime = -1e9; // stands for a frame without timestamp

void holdClock(double seconds)
{
    heldClock = seconds;
    clockHeld = true;
}

class FakeReader : public ZRPlayerReader
{
public:
    bool hasVideo() override { return video; }
    bool hasAudio() override { return audio; }

    bool video = false;
    bool audio = false;
};

std::atomic<int> framesAlive{0};

class CountedFrame : public ZRPlayerFrame
{
public:
    CountedFrame(const AVFrame *source, double seconds) : ZRPlayerFrame(source, {1, 1000})
    {
        frame->pts = seconds == noTime ? AV_NOPTS_VALUE : std::llround(seconds * 1000);
        ++framesAlive;
    }
    ~CountedFrame() override { --framesAlive; }
};

// A decoder whose queues a test fills.
class FakeDecoder : public ZRPlayerDecoder
{
public:
    FakeDecoder(bool video, bool audio)
    {
        source.video = video;
        source.audio = audio;
        setInput(&source);
        videoFrames = &videoQueue;
        audioFrames = &audioQueue;
    }
    ~FakeDecoder() override
    {
        videoFrames = nullptr;
        audioFrames = nullptr;
    }

    bool isRunning() override { return running; }

    void push(bool video, const QVector<double> &times)
    {
        const AudioFrame content = Tone().frame(16);
        for (double time : times)
            (video ? videoQueue : audioQueue).push(new CountedFrame(content.get(), time));
    }
    void pushVideo(const QVector<double> &times) { push(true, times); }
    void pushAudio(const QVector<double> &times) { push(false, times); }

    using ZRPlayerDecoder::audioEnabled;
    using ZRPlayerDecoder::videoEof;

    std::atomic<bool> running{true};
    ZRPlayerQueue<ZRPlayerFrame> videoQueue;
    ZRPlayerQueue<ZRPlayerFrame> audioQueue;

private:
    FakeReader source;
};

struct Happening {
    QString what; // "event 2", "video 1.04", "audio 1.04"
    QString thread;
    double current; // currentTime()
    double at; // seconds of a steady clock

    bool isDelivery() const { return !what.startsWith("event"); }
};

QString name(const char *kind, double value)
{
    return QString("%1 %2").arg(kind).arg(value);
}

// Notes events and deliveries in their order.
class Render : public ZRPlayerRender, public ZRPlayerRenderObserver
{
public:
    explicit Render(ZRPlayerDecoder *decoder)
    {
        setInput(decoder);
        setObserver(this);
        steady.start();
    }
    ~Render() override { stop(); }

    void renderVideoFrame(ZRPlayerFrame *frame) override { note(name("video", frame->time())); }

    int renderAudioFrame(ZRPlayerFrame *frame) override
    {
        if (refusals > 0) {
            --refusals;
            return -1;
        }
        note(name("audio", frame->time()));
        if (slow) {
            entered.release();
            ZRThread::sleep(50);
        }
        return 0;
    }

    void onRenderNotify(ZRPlayerRender *render, int type) override
    {
        note(name(render == this ? "event" : "strange event", type));
    }

    QVector<Happening> all() const
    {
        QMutexLocker lock(&mutex);
        return happened;
    }

    QStringList list() const
    {
        QStringList names;
        for (const Happening &happening : all())
            names.append(happening.what);
        return names;
    }

    int delivered() const
    {
        int count = 0;
        for (const Happening &happening : all())
            count += happening.isDelivery() ? 1 : 0;
        return count;
    }

    void forget()
    {
        QMutexLocker lock(&mutex);
        happened.clear();
    }

    using ZRPlayerRender::audioDelay;
    using ZRPlayerRender::audioFrameCount;
    using ZRPlayerRender::audioPaced;
    using ZRPlayerRender::audioStartTime;
    using ZRPlayerRender::audioThread;
    using ZRPlayerRender::audioTime;
    using ZRPlayerRender::observer;
    using ZRPlayerRender::videoFrameCount;
    using ZRPlayerRender::videoStartTime;
    using ZRPlayerRender::videoThread;
    using ZRPlayerRender::videoTime;

    std::atomic<int> refusals{0};
    std::atomic<bool> slow{false};
    QSemaphore entered; // a slow delivery has begun

private:
    void note(const QString &what)
    {
        QMutexLocker lock(&mutex);
        happened.append({what, QThread::currentThread()->objectName(), currentTime(),
            steady.nsecsElapsed() / 1e9});
    }

    mutable QMutex mutex;
    QVector<Happening> happened;
    QElapsedTimer steady;
};

class Output : public ZRPcmPlayer
{
public:
    explicit Output(bool *deleted = nullptr) : deleted(deleted) { }
    ~Output() override
    {
        if (deleted)
            *deleted = true;
    }

    using ZRPcmPlayer::format;
    using ZRPcmPlayer::stopped;
    using ZRPcmPlayer::volume;

private:
    bool *deleted;
};

class DefaultRender : public ZRPlayerDefaultRender
{
public:
    explicit DefaultRender(Output *output) : ZRPlayerDefaultRender(output) { }

    using ZRPlayerDefaultRender::pcmPlayer;
    using ZRPlayerDefaultRender::videoView;
};

struct Step {
    double clock; // seconds since the start
    int delivered; // frames by then, and no more
};

// Frames of one stream under a clock that moves by steps only.
struct Course {
    QVector<double> times;
    QVector<Step> steps;
    QStringList log; // with "%1" for videoTime or audioTime
    double origin = 1000.0; // of the clock
};

} // namespace

Q_DECLARE_METATYPE(Course)

class tst_ZRPlayerRender : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanup();

    void newRender();
    void startAndStop_data();
    void startAndStop();
    void startAgain();
    void renderAtEntry();
    void currentTime();

    void schedule_data();
    void schedule();
    void unpacedAudio_data();
    void unpacedAudio();
    void audioDelay();
    void twoSchedules();
    void flush();
    void flushOfAudio();
    void wallClock();

    void events();
    void noObserver();
    void frameIsDeletedBeforeTheWait();
    void playEnded();
    void playEndedAfterTheLastWait();
    void stopDuringTheWait();

    void audioIsTriedAgain();
    void stopWhileAudioIsRefused();
    void stopWithinOneWrite();
    void audioEndsWithDecoder();

    void volume_data();
    void volume();
    void volumeWithoutDecoder();

    void defaultRender();
    void defaultRenderWithoutDevice();
    void defaultRenderDelivers();
};

void tst_ZRPlayerRender::initTestCase()
{
    static_assert(std::is_abstract_v<ZRPlayerRender>);
    static_assert(std::has_virtual_destructor_v<ZRPlayerRender>);
}

void tst_ZRPlayerRender::cleanup()
{
    clockHeld = false;
    QCOMPARE(framesAlive.load(), 0);
}

void tst_ZRPlayerRender::newRender()
{
    FakeDecoder decoder(true, true);
    Render render(&decoder);
    QVERIFY(!render.videoThread);
    QVERIFY(!render.audioThread);
    QCOMPARE(render.videoStartTime, -1.0);
    QCOMPARE(render.audioStartTime, -1.0);
    QCOMPARE(render.volume(), 1.0);
    QVERIFY(!render.audioPaced);
    QCOMPARE(render.audioDelay, 0.0);
    QCOMPARE(render.currentTime(), 0.0);
    QVERIFY(!render.isRunning());
    render.stop();
    QVERIFY(!render.isRunning());
}

void tst_ZRPlayerRender::startAndStop_data()
{
    QTest::addColumn<bool>("video");
    QTest::addColumn<bool>("audio");
    QTest::newRow("both") << true << true;
    QTest::newRow("video") << true << false;
    QTest::newRow("audio") << false << true;
    QTest::newRow("neither") << false << false;
}

void tst_ZRPlayerRender::startAndStop()
{
    QFETCH(bool, video);
    QFETCH(bool, audio);
    FakeDecoder decoder(video, audio);
    Render render(&decoder);
    QCOMPARE(render.start(), 0);
    QCOMPARE(render.videoThread != nullptr, video);
    QCOMPARE(render.audioThread != nullptr, audio);
    QCOMPARE(render.isRunning(), video || audio);
    decoder.pushVideo({1.0});
    decoder.pushAudio({1.0});
    QTRY_COMPARE_WITH_TIMEOUT(render.delivered(), int(video) + int(audio), patience);
    for (const Happening &happening : render.all()) {
        QCOMPARE(happening.thread,
            QString(happening.what.startsWith("audio") ? "ZRPlayerRenderAudioThread"
                                                       : "ZRPlayerRenderVideoThread"));
    }
    QCOMPARE(render.isRunning(), video || audio);

    render.stop();
    QVERIFY(!render.videoThread);
    QVERIFY(!render.audioThread);
    QVERIFY(!render.isRunning());
    QCOMPARE(render.currentTime(), 0.0);
}

// After a stop the first frame is event 0 again and anchors the schedule anew.
void tst_ZRPlayerRender::startAgain()
{
    holdClock(1000);
    FakeDecoder decoder(true, true);
    Render render(&decoder);
    render.start();
    decoder.pushVideo({10.0, 10.04});
    decoder.pushAudio({10.0, 10.04});
    QTRY_COMPARE_WITH_TIMEOUT(render.delivered(), 4, patience);
    render.stop();
    QCOMPARE(render.videoFrameCount, 2);
    QCOMPARE(render.audioFrameCount, 2);

    decoder.running = false; // so the audio thread ends and leaves what start() wrote
    render.start();
    QTRY_VERIFY_WITH_TIMEOUT(!render.audioThread->isRunning(), patience);
    QCOMPARE(render.audioTime, 0.0);
    QCOMPARE(render.audioFrameCount, 0);
    QTRY_COMPARE_WITH_TIMEOUT(render.currentTime(), -1.0, patience); // no frame yet
    QCOMPARE(render.videoFrameCount, 0);

    render.forget();
    heldClock = 1500;
    decoder.pushVideo({10.08, 10.12, 10.16});
    QTRY_COMPARE_WITH_TIMEOUT(render.delivered(), 2, patience);
    heldClock = 1500.039;
    const int readings = clockReadings;
    QTRY_VERIFY_WITH_TIMEOUT(clockReadings > readings + 3, patience);
    QCOMPARE(render.delivered(), 2);
    heldClock = 1500.041;
    QTRY_COMPARE_WITH_TIMEOUT(render.delivered(), 3, patience);
    QCOMPARE(render.list(),
        QStringList(
            {"event 0", "video 10.08", "event 2", "video 10.12", "event 2", "video 10.16"}));
}

// What the bodies of the threads write first; without a thread they return at once.
void tst_ZRPlayerRender::renderAtEntry()
{
    FakeDecoder decoder(true, true);
    Render render(&decoder);
    render.videoTime = 7;
    render.videoFrameCount = 8;
    render.videoStartTime = 9;
    render.renderVideo();
    QCOMPARE(render.videoTime, -1.0);
    QCOMPARE(render.videoFrameCount, 0);
    QCOMPARE(render.videoStartTime, -1.0);

    render.audioTime = 7;
    render.audioFrameCount = 8;
    render.audioStartTime = 9;
    render.renderAudio();
    QCOMPARE(render.audioTime, 7.0);
    QCOMPARE(render.audioFrameCount, 8);
    QCOMPARE(render.audioStartTime, -1.0);
}

void tst_ZRPlayerRender::currentTime()
{
    FakeDecoder sound(false, true);
    Render soundRender(&sound);
    soundRender.start();
    sound.pushAudio({3.0});
    QTRY_COMPARE_WITH_TIMEOUT(soundRender.currentTime(), 3.0, patience);
    sound.running = false; // its thread has ended, and is still there
    QTRY_VERIFY_WITH_TIMEOUT(!soundRender.isRunning(), patience);
    QCOMPARE(soundRender.currentTime(), 3.0);

    FakeDecoder both(true, true);
    Render bothRender(&both);
    bothRender.start();
    both.pushVideo({5.0});
    both.pushAudio({3.0});
    QTRY_COMPARE_WITH_TIMEOUT(bothRender.delivered(), 2, patience);
    QCOMPARE(bothRender.currentTime(), 5.0);
}

void tst_ZRPlayerRender::schedule_data()
{
    QTest::addColumn<bool>("video");
    QTest::addColumn<Course>("course");
    const QVector<double> hourly{10, 10.04, 10.08, 10.12, 10.16};
    const struct {
        const char *name;
        Course course;
    } rows[] = {
        // A frame is waited for after its own delivery: the second comes with the first.
        {"pace",
            {{10, 10.04, 10.08, 10.12}, {{0, 2}, {.039, 2}, {.041, 3}, {.079, 3}, {.081, 4}}, {}}},
        {"from zero: no wait for the second frame",
            {{0, .04, .08, .12}, {{0, 3}, {.079, 3}, {.081, 4}}, {}}},
        {"gap of one second", {{1, 2, 3}, {{0, 2}, {.999, 2}, {1.001, 3}}, {}}},
        {"gap of more than one second",
            {{1, 2.001, 2.041, 2.081}, {{0, 3}, {.039, 3}, {.041, 4}},
                {"interval = 1.001000, frame->time = 2.001000, %1 = 1.000000"}}},
        {"jump back: no wait until the schedule is caught up with",
            {{10, 10.04, 9.6, 9.8, 10.2, 10.3}, {{0, 2}, {.041, 5}, {.199, 5}, {.201, 6}}, {}}},
        {"no timestamps", {{noTime, noTime, noTime, noTime}, {{0, 4}}, {}}},
        {"first frame without timestamp",
            {{noTime, 10, 10.04, 10.08}, {{0, 3}, {.039, 3}, {.041, 4}}, {}}},
        {"negative times", {{-5, -4.96, 10, 10.04, 10.08}, {{0, 4}, {.039, 4}, {.041, 5}}, {}}},
        {"negative time within",
            {{10, 10.04, -1, 10.08, 10.12, 10.16}, {{0, 2}, {.041, 5}, {.119, 5}, {.121, 6}}, {}}},
        {"late frames are delivered all", {{10, 10.04, 10.08, 10.12, 10.16}, {{0, 2}, {5, 5}}, {}}},
        {"more than an hour",
            {hourly, {{0, 2}, {3600.5, 4}, {3600.539, 4}, {3600.541, 5}},
                {"reset display time (1000.000000) - (4600.500000)"}}},
        {"an hour", {hourly, {{0, 2}, {3600, 5}}, {}}},
        {"negative times after more than an hour",
            {{10, 10.04, -1, -0.5}, {{0, 2}, {3601, 4}}, {}}},
        {"more than an hour, from zero", {{0, .04, .08, .12, .16}, {{0, 3}, {3601, 5}}, {}}},
        {"more than an hour, anchored at zero", {hourly, {{0, 2}, {3601, 5}}, {}, 0.0}},
        {"gap after more than an hour",
            {{10, 10.04, 12, 12.04, 12.08}, {{0, 2}, {3601, 4}, {3601.039, 4}, {3601.041, 5}},
                {"interval = 1.960000, frame->time = 12.000000, %1 = 10.040000"}}},
    };
    for (const auto &row : rows) {
        QTest::addRow("video: %s", row.name) << true << row.course;
        QTest::addRow("audio: %s", row.name) << false << row.course;
    }
}

void tst_ZRPlayerRender::schedule()
{
    QFETCH(bool, video);
    QFETCH(Course, course);
    const char *last = video ? "videoTime" : "audioTime";
    holdClock(course.origin);
    FakeDecoder decoder(video, !video);
    Render render(&decoder);
    render.audioPaced = true;
    decoder.push(video, course.times);
    LogCatcher log;
    render.start();
    for (const Step &step : course.steps) {
        heldClock = course.origin + step.clock;
        QTRY_COMPARE_WITH_TIMEOUT(render.delivered(), step.delivered, patience);
        if (step.delivered < course.times.size()) {
            const int readings = clockReadings;
            QTRY_VERIFY_WITH_TIMEOUT(clockReadings > readings + 3, patience);
            QCOMPARE(render.delivered(), step.delivered);
        }
    }
    QCOMPARE(render.delivered(), course.times.size());
    QStringList expected;
    for (const QString &line : course.log)
        expected.append(line.contains("%1") ? line.arg(last) : line);
    QCOMPARE(log.lines(), expected);

    QStringList order;
    for (double time : course.times) {
        if (video)
            order.append(order.isEmpty() ? "event 0" : "event 2");
        order.append(
            name(video ? "video" : "audio", time == noTime ? double(AV_NOPTS_VALUE) / 1000 : time));
    }
    QCOMPARE(render.list(), order);
    QCOMPARE(video ? render.videoFrameCount : render.audioFrameCount, course.times.size());
    const bool anchored =
        std::any_of(course.times.begin(), course.times.end(), [](double t) { return t >= 0; });
    const double startTime = video ? render.videoStartTime : render.audioStartTime;
    QVERIFY(anchored ? startTime >= 0 : startTime == -1.0);
}

void tst_ZRPlayerRender::unpacedAudio_data()
{
    QTest::addColumn<QVector<double>>("times");
    QTest::addColumn<int>("lines");
    QTest::newRow("pace") << QVector<double>{10, 10.04, 10.08, 10.12, 10.16} << 0;
    QTest::newRow("gaps") << QVector<double>{10, 12, 14.5} << 2;
    QTest::newRow("no timestamps") << QVector<double>{noTime, noTime, noTime} << 0;
}

// The schedule is kept and never waited for.
void tst_ZRPlayerRender::unpacedAudio()
{
    QFETCH(QVector<double>, times);
    QFETCH(int, lines);
    holdClock(1000);
    FakeDecoder decoder(false, true);
    Render render(&decoder);
    decoder.pushAudio(times);
    LogCatcher log;
    render.start();
    QTRY_COMPARE_WITH_TIMEOUT(render.delivered(), times.size(), patience);
    QCOMPARE(log.beginning("interval = ").size(), lines);
    QVERIFY(!render.list().contains("event 0"));
}

void tst_ZRPlayerRender::audioDelay()
{
    holdClock(1000);
    FakeDecoder decoder(false, true);
    Render render(&decoder);
    render.audioPaced = true;
    render.audioDelay = 0.5;
    decoder.pushAudio({10, 10.04, 10.08});
    render.start();
    QTRY_COMPARE_WITH_TIMEOUT(render.delivered(), 2, patience);
    heldClock = 1000.539;
    const int readings = clockReadings;
    QTRY_VERIFY_WITH_TIMEOUT(clockReadings > readings + 3, patience);
    QCOMPARE(render.delivered(), 2);
    heldClock = 1000.541;
    QTRY_COMPARE_WITH_TIMEOUT(render.delivered(), 3, patience);
}

// Each stream on its own first frame, whatever the other's times are.
void tst_ZRPlayerRender::twoSchedules()
{
    holdClock(1000);
    FakeDecoder decoder(true, true);
    Render render(&decoder);
    render.audioPaced = true;
    decoder.pushVideo({10, 10.2, 10.4});
    decoder.pushAudio({500, 500.1, 500.2});
    render.start();
    QTRY_COMPARE_WITH_TIMEOUT(render.delivered(), 4, patience);
    heldClock = 1000.101;
    QTRY_COMPARE_WITH_TIMEOUT(render.delivered(), 5, patience);
    QCOMPARE(render.all().last().what, QString("audio 500.2"));
    heldClock = 1000.201;
    QTRY_COMPARE_WITH_TIMEOUT(render.delivered(), 6, patience);
    QCOMPARE(render.all().last().what, QString("video 10.4"));
}

// As after a seek: the next frame is not waited for, and tells the new time.
void tst_ZRPlayerRender::flush()
{
    holdClock(1000);
    FakeDecoder decoder(true, false);
    Render render(&decoder);
    decoder.pushVideo({10, 10.04});
    render.start();
    QTRY_COMPARE_WITH_TIMEOUT(render.delivered(), 2, patience);
    render.flush();
    QCOMPARE(render.videoStartTime, -1.0);
    QCOMPARE(render.audioStartTime, -1.0);
    render.forget();
    heldClock = 1000.041;
    decoder.pushVideo({10.54, 10.58, 10.62});
    QTRY_COMPARE_WITH_TIMEOUT(render.delivered(), 2, patience);
    QCOMPARE(render.videoStartTime, 10.54);
    heldClock = 1000.079;
    const int readings = clockReadings;
    QTRY_VERIFY_WITH_TIMEOUT(clockReadings > readings + 3, patience);
    QCOMPARE(render.delivered(), 2);
    heldClock = 1000.082;
    QTRY_COMPARE_WITH_TIMEOUT(render.delivered(), 3, patience);

    render.flush();
    render.forget();
    decoder.pushVideo({2.0});
    heldClock = 1000.2;
    QTRY_COMPARE_WITH_TIMEOUT(render.delivered(), 1, patience);
    QCOMPARE(render.list(), QStringList({"event 2", "video 2"}));
    QCOMPARE(render.all().first().current, 2.0);
    QCOMPARE(render.videoStartTime, 2.0);
}

void tst_ZRPlayerRender::flushOfAudio()
{
    FakeDecoder decoder(false, true);
    Render render(&decoder);
    decoder.pushAudio({10, 10.04});
    render.start();
    QTRY_COMPARE_WITH_TIMEOUT(render.delivered(), 2, patience);
    QCOMPARE(render.audioStartTime, 10.0);
    render.flush();
    QCOMPARE(render.audioStartTime, -1.0);
    decoder.pushAudio({4});
    QTRY_COMPARE_WITH_TIMEOUT(render.audioStartTime, 4.0, patience);
}

// The same against the clock of the wall.
void tst_ZRPlayerRender::wallClock()
{
    FakeDecoder decoder(true, false);
    Render render(&decoder);
    QVector<double> times;
    for (int i = 0; i < 12; ++i)
        times.append(20 + i * 0.05);
    decoder.pushVideo(times);
    render.start();
    QTRY_COMPARE_WITH_TIMEOUT(render.delivered(), times.size(), patience);
    QVector<Happening> deliveries;
    for (const Happening &happening : render.all()) {
        if (happening.isDelivery())
            deliveries.append(happening);
    }
    const double begin = deliveries.first().at;
    for (int i = 2; i < deliveries.size(); ++i) {
        const double due = (i - 1) * 0.05;
        // The clock counts in milliseconds.
        QVERIFY2(deliveries[i].at - begin > due - 0.005,
            qPrintable(QString("%1: %2").arg(i).arg(deliveries[i].at - begin)));
    }
    QVERIFY(deliveries.last().at - begin < 10);
}

// An event comes before the frame that it tells of, with the frame's time.
void tst_ZRPlayerRender::events()
{
    FakeDecoder decoder(true, true);
    Render render(&decoder);
    decoder.pushVideo({0, 0.01, 0.02});
    render.start();
    QTRY_COMPARE_WITH_TIMEOUT(render.delivered(), 3, patience);
    QCOMPARE(render.list(),
        QStringList({"event 0", "video 0", "event 2", "video 0.01", "event 2", "video 0.02"}));
    const QVector<Happening> all = render.all();
    for (int i = 0; i < all.size(); ++i) {
        QCOMPARE(all[i].current, i / 2 * 0.01);
        QCOMPARE(all[i].thread, QString("ZRPlayerRenderVideoThread"));
    }
}

void tst_ZRPlayerRender::noObserver()
{
    FakeDecoder decoder(true, true);
    Render render(&decoder);
    render.setObserver(nullptr);
    QVERIFY(!render.observer);
    decoder.pushVideo({1, 1.01});
    decoder.videoEof = true;
    LogCatcher log;
    render.start();
    QTRY_COMPARE_WITH_TIMEOUT(log.count("call play ended"), 1, patience);
    QCOMPARE(render.list(), QStringList({"video 1", "video 1.01"}));
}

void tst_ZRPlayerRender::frameIsDeletedBeforeTheWait()
{
    holdClock(1000);
    FakeDecoder decoder(true, false);
    Render render(&decoder);
    decoder.pushVideo({10, 10.5});
    QCOMPARE(framesAlive.load(), 2);
    render.start();
    QTRY_COMPARE_WITH_TIMEOUT(render.delivered(), 2, patience);
    QTRY_COMPARE_WITH_TIMEOUT(framesAlive.load(), 0, patience); // the clock stands: it waits
}

void tst_ZRPlayerRender::playEnded()
{
    FakeDecoder decoder(true, false);
    Render render(&decoder);
    decoder.pushVideo({1, 1.01});
    LogCatcher log;
    render.start();
    QTRY_COMPARE_WITH_TIMEOUT(render.delivered(), 2, patience);
    QCOMPARE(log.count("call play ended"), 0);

    for (int end = 1; end <= 2; ++end) {
        decoder.videoEof = true;
        QTRY_COMPARE_WITH_TIMEOUT(render.list().count("event 1"), end, patience);
        QTest::qWait(50); // some fifty passes of the loop
        QCOMPARE(render.list().count("event 1"), end);
        QCOMPARE(log.count("call play ended"), end);

        decoder.videoEof = false;
        decoder.pushVideo({1.02 + end * 0.01}); // a later frame, and so a later end
        QTRY_COMPARE_WITH_TIMEOUT(render.delivered(), 2 + end, patience);
    }
    QCOMPARE(render.list(),
        QStringList({"event 0", "video 1", "event 2", "video 1.01", "event 1", "event 2",
            "video 1.03", "event 1", "event 2", "video 1.04"}));
}

// The end is told when the queue is empty, not before the frames in it are up.
void tst_ZRPlayerRender::playEndedAfterTheLastWait()
{
    holdClock(1000);
    FakeDecoder decoder(true, false);
    Render render(&decoder);
    decoder.pushVideo({10, 10.5, 11});
    decoder.videoEof = true;
    render.start();
    QTRY_COMPARE_WITH_TIMEOUT(render.delivered(), 2, patience);
    heldClock = 1000.6;
    QTRY_COMPARE_WITH_TIMEOUT(render.delivered(), 3, patience);
    const int readings = clockReadings;
    QTRY_VERIFY_WITH_TIMEOUT(clockReadings > readings + 3, patience);
    QVERIFY(!render.list().contains("event 1"));
    heldClock = 1001.1;
    QTRY_COMPARE_WITH_TIMEOUT(render.list().last(), QString("event 1"), patience);
}

void tst_ZRPlayerRender::stopDuringTheWait()
{
    holdClock(1000);
    FakeDecoder decoder(true, true);
    Render render(&decoder);
    render.audioPaced = true;
    decoder.pushVideo({10, 10.9, 11});
    decoder.pushAudio({10, 10.9, 11});
    render.start();
    QTRY_COMPARE_WITH_TIMEOUT(render.delivered(), 4, patience);
    render.stop();
    QVERIFY(!render.isRunning());
    QCOMPARE(render.delivered(), 4);
    QCOMPARE(decoder.videoQueue.size(), 1); // what is left is the decoder's
    QCOMPARE(decoder.audioQueue.size(), 1);
}

void tst_ZRPlayerRender::audioIsTriedAgain()
{
    FakeDecoder decoder(false, true);
    Render render(&decoder);
    render.refusals = 20;
    decoder.pushAudio({1, 2});
    QElapsedTimer spent;
    spent.start();
    render.start();
    QTRY_COMPARE_WITH_TIMEOUT(render.delivered(), 2, patience);
    QVERIFY(spent.elapsed() >= 20);
    QCOMPARE(render.list(), QStringList({"audio 1", "audio 2"}));
    QTRY_COMPARE_WITH_TIMEOUT(framesAlive.load(), 0, patience);
}

void tst_ZRPlayerRender::stopWhileAudioIsRefused()
{
    FakeDecoder decoder(false, true);
    Render render(&decoder);
    render.refusals = 1000000000;
    decoder.pushAudio({1, 2});
    render.start();
    QTRY_VERIFY_WITH_TIMEOUT(render.refusals < 1000000000, patience);
    render.stop();
    QCOMPARE(render.delivered(), 0);
    QCOMPARE(decoder.audioQueue.size(), 1);
    QCOMPARE(framesAlive.load(), 1);
}

void tst_ZRPlayerRender::stopWithinOneWrite()
{
    FakeDecoder decoder(false, true);
    Render render(&decoder);
    render.slow = true;
    decoder.pushAudio(QVector<double>(1000, 1.0)); // fifty seconds of writing
    render.start();
    QVERIFY(render.entered.tryAcquire(1, patience));
    QElapsedTimer spent;
    spent.start();
    render.stop();
    QVERIFY2(spent.elapsed() < 10000, qPrintable(QString::number(spent.elapsed())));
    QVERIFY(render.delivered() < 200);
}

// What is queued still is played.
void tst_ZRPlayerRender::audioEndsWithDecoder()
{
    FakeDecoder decoder(true, true);
    Render render(&decoder);
    decoder.running = false;
    decoder.pushAudio({1, 2, 3});
    render.start();
    QTRY_VERIFY_WITH_TIMEOUT(!render.audioThread->isRunning(), patience);
    QCOMPARE(render.delivered(), 3);
    QVERIFY(render.videoThread->isRunning()); // video stays
    QVERIFY(render.isRunning());
    decoder.pushVideo({1});
    QTRY_COMPARE_WITH_TIMEOUT(render.delivered(), 4, patience);
}

void tst_ZRPlayerRender::volume_data()
{
    QTest::addColumn<double>("volume");
    QTest::addColumn<bool>("decoded");
    QTest::newRow("full") << 1.0 << true;
    QTest::newRow("low") << 0.011 << true;
    QTest::newRow("hundredth") << 0.01 << false;
    QTest::newRow("mute") << 0.0 << false;
}

void tst_ZRPlayerRender::volume()
{
    QFETCH(double, volume);
    QFETCH(bool, decoded);
    FakeDecoder decoder(false, true);
    Render render(&decoder);
    decoder.audioEnabled = !decoded;
    render.setVolume(volume);
    QCOMPARE(render.volume(), volume);
    QCOMPARE(decoder.audioEnabled, decoded);

    // The default render hands it to the sound output; the decoder goes on at any volume.
    auto *output = new Output;
    DefaultRender other(output);
    decoder.audioEnabled = true;
    other.setInput(&decoder);
    other.setVolume(volume);
    QCOMPARE(output->volume, float(volume));
    QCOMPARE(other.volume(), 1.0);
    QVERIFY(decoder.audioEnabled);
}

void tst_ZRPlayerRender::volumeWithoutDecoder()
{
    Render render(nullptr);
    render.setVolume(0.0);
    QCOMPARE(render.volume(), 0.0);
}

void tst_ZRPlayerRender::defaultRender()
{
    bool deleted = false;
    {
        auto *output = new Output(&deleted);
        DefaultRender render(output);
        QVERIFY(!render.videoView);
        QCOMPARE(render.pcmPlayer, output);
        RecordingView view;
        render.setVideoView(&view);
        QCOMPARE(render.videoView, &view);
    }
    QVERIFY(deleted);
}

// There is no sound server for this program.
void tst_ZRPlayerRender::defaultRenderWithoutDevice()
{
    FakeDecoder decoder(true, true);
    auto *output = new Output;
    DefaultRender render(output);
    RecordingView view;
    render.setVideoView(&view);
    render.setInput(&decoder);
    LogCatcher log;
    QCOMPARE(render.start(), 0);
    QCOMPARE(log.count("ZRPcmPlayer start 1"), 1);
    QVERIFY(output->stopped);
    QVERIFY(render.isRunning());
    decoder.pushVideo({1, 1.01, 1.02});
    decoder.pushAudio({1, 1.01, 1.02});
    QTRY_COMPARE_WITH_TIMEOUT(view.count(), 3, patience);
    QTRY_COMPARE_WITH_TIMEOUT(framesAlive.load(), 0, patience); // sound is taken, and dropped
    render.stop();
    QVERIFY(output->stopped);
    QVERIFY(!render.isRunning());
}

void tst_ZRPlayerRender::defaultRenderDelivers()
{
    DefaultRender render(new Output);
    const AudioFrame content = Tone().frame(16);
    CountedFrame frame(content.get(), 1.0);
    render.renderVideoFrame(&frame); // without a view
    QCOMPARE(render.renderAudioFrame(&frame), 0);

    RecordingView view;
    render.setVideoView(&view);
    render.renderVideoFrame(&frame);
    QCOMPARE(view.count(), 1);
    QCOMPARE(view.pictures().front()->data[0], frame.frame->data[0]); // shared, not copied
}

QTEST_GUILESS_MAIN(tst_ZRPlayerRender)

#include "tst_ZRPlayerRender.moc"

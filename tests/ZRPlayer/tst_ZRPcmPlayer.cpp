#include "ZRPcmPlayer.h"

#include "AudioCalls.h"
#include "AudioFrames.h"
#include "HostProcess.h"
#include "LogCatcher.h"
#include "SinkRecorder.h"

#include <QAudioDeviceInfo>
#include <QAudioOutput>
#include <QElapsedTimer>
#include <QSemaphore>
#include <QThread>
#include <QtTest>

#include <functional>
#include <memory>

extern "C" {
#include <libavutil/fifo.h>
#include <libavutil/log.h>
}

// What Qt Multimedia answers, where a test says so, and which formats it was asked for.
static int preferredSize = -1; // bits
static QVector<int> periods; // one for each call
static bool startFails = false;
static QVector<QAudioFormat> askedFormats;
static bool refuses = false; // every format
static QVector<QAudioFormat> refusedFormats; // of which the nearest was asked for
static QAudioFormat nearest; // when valid
static QVector<QAudioDeviceInfo> defaultDevices; // one for each call

QAudioDeviceInfo AudioCalls::defaultOutputDevice()
{
    return defaultDevices.isEmpty() ? Real::defaultOutputDevice() : defaultDevices.takeFirst();
}

QAudioFormat AudioCalls::nearestFormat(const QAudioDeviceInfo *info, const QAudioFormat &format)
{
    refusedFormats.append(format);
    return nearest.isValid() ? nearest : Real::nearestFormat(info, format);
}

QAudioFormat AudioCalls::preferredFormat(const QAudioDeviceInfo *info)
{
    QAudioFormat format = Real::preferredFormat(info);
    if (preferredSize >= 0)
        format.setSampleSize(preferredSize);
    return format;
}

bool AudioCalls::isFormatSupported(const QAudioDeviceInfo *info, const QAudioFormat &format)
{
    askedFormats.append(format);
    return !refuses && Real::isFormatSupported(info, format);
}

int AudioCalls::periodSize(const QAudioOutput *output)
{
    return periods.isEmpty() ? Real::periodSize(output) : periods.takeFirst();
}

QIODevice *AudioCalls::start(QAudioOutput *output)
{
    return startFails ? nullptr : Real::start(output);
}

namespace {

// This program, run again, where there is no sound server.
constexpr char withoutDevice[] = "--without-device";

// Takes what is written, as much at a time as `takes` says; once that is empty, all.
class Sink : public QIODevice
{
public:
    Sink() { open(WriteOnly | Unbuffered); }

    QByteArray taken;
    QVector<qint64> asked; // lengths of the writes
    QVector<qint64> takes;
    std::function<void()> onWrite;

protected:
    qint64 readData(char *, qint64) override { return -1; }
    qint64 writeData(const char *data, qint64 size) override
    {
        asked.append(size);
        const qint64 taken = takes.isEmpty() ? size : qMin(size, takes.takeFirst());
        if (taken > 0)
            this->taken.append(data, int(taken));
        if (onWrite)
            onWrite();
        return taken;
    }
};

class Player : public ZRPcmPlayer
{
public:
    using ZRPcmPlayer::aborted;
    using ZRPcmPlayer::converter;
    using ZRPcmPlayer::device;
    using ZRPcmPlayer::format;
    using ZRPcmPlayer::output;
    using ZRPcmPlayer::stopped;
    using ZRPcmPlayer::volume;
    using ZRPcmPlayer::writeData;

    ~Player() override { stop(); }

    // Started, and `sink` in place of the device.
    void startInto(Sink *sink)
    {
        QCOMPARE(start(), 0);
        device = sink;
    }

    void play(const Tone &tone, int samples, int first = 0)
    {
        write(tone.frame(samples, first).get());
    }

    int queued() const { return converter ? av_fifo_size(converter->fifo) : -1; }
};

class Call : public QThread
{
public:
    explicit Call(std::function<void()> body) : body(std::move(body)) { start(); }
    ~Call() override { wait(); }

private:
    void run() override { body(); }

    std::function<void()> body;
};

const Tone direct{AV_SAMPLE_FMT_S16, 48000, 2, 440, 0.5}; // as the sink s16le has it
const Tone decoded{AV_SAMPLE_FMT_FLTP, 48000, 2, 440, 0.5}; // a sample becomes four bytes there

const uint8_t *bytes(const QByteArray &data)
{
    return reinterpret_cast<const uint8_t *>(data.constData());
}

QByteArray firstBytes(const Tone &tone, int samples, int count)
{
    return QByteArray(reinterpret_cast<const char *>(tone.frame(samples)->data[0]), count);
}

void chooseDevice(const QString &sink)
{
    SinkRecorder::choose(sink);
    QTRY_VERIFY_WITH_TIMEOUT(AudioCalls::isChosen(sink), 30000);
}

// What a player without a device does; the lines are checked by the test that starts it.
int runWithoutDevice()
{
    Player player;
    printf("start %d\n", player.start());
    printf("device %d output %d stopped %d\n", player.device != nullptr, player.output != nullptr,
        player.stopped);
    player.play(decoded, 5000);
    player.play(direct, 5000);
    printf("converter %d\n", player.converter != nullptr);
    printf("writeData %d\n", player.writeData(reinterpret_cast<const uint8_t *>("abcd"), 4));
    player.stop();
    printf("end\n");
    return 0;
}

} // namespace

class tst_ZRPcmPlayer : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();

    void newPlayer();
    void newConverter();
    void startAndStop();
    void deviceFormat_data();
    void deviceFormat();
    void askedFormat_data();
    void askedFormat();
    void formatInPlaceOfARefusedOne();
    void deviceIsTakenAnew();
    void formatPreferredByQt();
    void noDevice();
    void deviceThatFails();
    void writeAfterStop();
    void writeBeforeStart();

    void directFrame();
    void directFrame_mono();
    void frameThatNeedsConverter_data();
    void frameThatNeedsConverter();
    void converterTarget_data();
    void converterTarget();
    void samplesAreConverted();
    void drainInBlocks();
    void remainderStays();
    void remainderSurvivesStop();
    void largeFrame();
    void rateChange();
    void formatTable_data();
    void formatTable();
    void layoutOfFrameIsNotRead();
    void impossibleSource_data();
    void impossibleSource();

    void createBuffer();
    void frameInTargetFormat();

    void writeDataResults();
    void chunksOfOnePeriod();
    void negativePeriod();
    void unwillingDevice();
    void waitsForTheDevice();
    void abort();
    void abortKeepsFifo();

    void mute();
    void muteDropsConverted();
    void halfIsFull();

    void tone_data();
    void tone();
    void writeBlocks();
    void soundAfterMute();
    void startedElsewhere();
};

void tst_ZRPcmPlayer::initTestCase()
{
    av_log_set_level(AV_LOG_QUIET);
}

void tst_ZRPcmPlayer::init()
{
    preferredSize = -1;
    periods.clear();
    startFails = false;
    askedFormats.clear();
    refuses = false;
    refusedFormats.clear();
    nearest = QAudioFormat();
    defaultDevices.clear();
    chooseDevice("s16le");
}

void tst_ZRPcmPlayer::newPlayer()
{
    const Player player;
    QVERIFY(!player.device);
    QVERIFY(!player.output);
    QVERIFY(!player.converter);
    QVERIFY(!player.format.isValid());
    QCOMPARE(player.volume, 1.0F);
    QVERIFY(!player.stopped);
    QVERIFY(!player.aborted);
}

void tst_ZRPcmPlayer::newConverter()
{
    const ZRAudioConverter converter;
    QVERIFY(!converter.context);
    QCOMPARE(converter.sourceRate, int64_t(-1));
    QCOMPARE(converter.sourceLayout, int64_t(-1));
    QCOMPARE(converter.sourceChannels, -1);
    QCOMPARE(converter.sourceFormat, -1);
    QVERIFY(!converter.buffer);
    QVERIFY(!converter.fifo);
    QCOMPARE(converter.bufferSamples, 4096);
}

void tst_ZRPcmPlayer::startAndStop()
{
    Player player;
    for (int round = 0; round < 3; ++round) {
        player.aborted = true;
        LogCatcher log;
        QCOMPARE(player.start(), 0);
        QVERIFY(player.device);
        QVERIFY(player.output);
        QVERIFY(!player.stopped);
        QVERIFY(!player.aborted);
        QCOMPARE(log.lines(), QStringList());

        player.stop();
        QVERIFY(!player.device);
        QVERIFY(!player.output);
        QVERIFY(player.stopped);
    }
    player.stop(); // of a stopped one
    QVERIFY(player.stopped);
}

void tst_ZRPcmPlayer::deviceFormat_data()
{
    QTest::addColumn<int>("size");
    QTest::addColumn<int>("type");
    QTest::addColumn<int>("channels");
    QTest::addColumn<bool>("refused");
    QTest::newRow("s16le") << 16 << int(QAudioFormat::SignedInt) << 2 << false;
    // Prefers 32 bits, is asked for 16 and takes them.
    QTest::newRow("s32le") << 16 << int(QAudioFormat::SignedInt) << 2 << false;
    // Prefers 32 bits, is asked for 16, refuses, and gets what is nearest.
    QTest::newRow("float32le") << 32 << int(QAudioFormat::Float) << 2 << true;
    QTest::newRow("u8") << 8 << int(QAudioFormat::UnSignedInt) << 1 << false;
}

void tst_ZRPcmPlayer::deviceFormat()
{
    QFETCH(int, size);
    QFETCH(int, type);
    QFETCH(int, channels);
    QFETCH(bool, refused);
    const QString sink = QTest::currentDataTag();
    chooseDevice(sink);
    const int preferred = QAudioDeviceInfo::defaultOutputDevice().preferredFormat().sampleSize();
    QCOMPARE(preferred, sink.contains("32") ? 32 : size);

    Player player;
    LogCatcher log;
    QCOMPARE(player.start(), 0);
    QCOMPARE(player.format.sampleSize(), size);
    QCOMPARE(int(player.format.sampleType()), type);
    QCOMPARE(player.format.channelCount(), channels);
    QCOMPARE(player.format.sampleRate(), 48000);
    QCOMPARE(player.output->format(), player.format);
    QCOMPARE(log.count("format not support, reformat"), refused ? 1 : 0);
}

void tst_ZRPcmPlayer::askedFormat_data()
{
    QTest::addColumn<int>("preferred");
    QTest::addColumn<int>("asked");
    const struct {
        int preferred;
        int asked;
    } rows[] = {{0, 0}, {8, 8}, {12, 16}, {16, 16}, {24, 16}, {32, 16}, {64, 64}, {128, 16}};
    for (const auto &row : rows)
        QTest::addRow("%d bits", row.preferred) << row.preferred << row.asked;
}

// Nothing but the sample size of what the device prefers is changed.
void tst_ZRPcmPlayer::askedFormat()
{
    QFETCH(int, preferred);
    QFETCH(int, asked);
    // Qt's own search ends the program at a format of no bits.
    nearest = QAudioDeviceInfo::defaultOutputDevice().preferredFormat();
    preferredSize = preferred;
    startFails = true; // not every format can be played
    QAudioFormat expected = QAudioDeviceInfo::defaultOutputDevice().preferredFormat();
    QCOMPARE(expected.sampleSize(), preferred);
    expected.setSampleSize(asked);

    Player player;
    QCOMPARE(player.start(), -1);
    QCOMPARE(askedFormats, QVector<QAudioFormat>({expected}));
}

// Whatever the device calls nearest to what it was asked for, be it far from what it prefers.
void tst_ZRPcmPlayer::formatInPlaceOfARefusedOne()
{
    preferredSize = 32;
    refuses = true;
    startFails = true;
    QAudioFormat asked = QAudioDeviceInfo::defaultOutputDevice().preferredFormat();
    asked.setSampleSize(16);
    nearest = asked;
    nearest.setChannelCount(1);
    nearest.setSampleRate(8000);

    Player player;
    LogCatcher log;
    QCOMPARE(player.start(), -1);
    QCOMPARE(askedFormats, QVector<QAudioFormat>({asked}));
    QCOMPARE(refusedFormats, QVector<QAudioFormat>({asked}));
    QCOMPARE(player.format, nearest);
    QCOMPARE(player.output->format(), nearest);
    QCOMPARE(log.count("format not support, reformat"), 1);
}

// The device that says what it prefers need not be the one that is asked whether it takes it.
void tst_ZRPcmPlayer::deviceIsTakenAnew()
{
    const QAudioDeviceInfo device = QAudioDeviceInfo::defaultOutputDevice();
    startFails = true;
    nearest = device.preferredFormat();
    nearest.setSampleRate(8000);
    for (bool gone : {false, true}) {
        defaultDevices = {device, gone ? QAudioDeviceInfo() : device};
        Player player;
        QCOMPARE(player.start(), -1);
        QVERIFY(defaultDevices.isEmpty());
        QCOMPARE(player.format, gone ? nearest : device.preferredFormat());
    }
}

// The one that the tests replace where Qt knows no other.
void tst_ZRPcmPlayer::formatPreferredByQt()
{
    AudioCalls::preferAsQt();
    SinkRecorder recorder("s16le");
    Player player;
    LogCatcher log;
    QCOMPARE(player.start(), 0);
    QCOMPARE(player.format, QAudioDeviceInfo::defaultOutputDevice().preferredFormat());
    QCOMPARE(player.format.sampleRate(), AudioCalls::ratePreferredByQt);
    QCOMPARE(log.lines(), QStringList());
    Call sound([&] {
        for (int i = 0; i < 100; ++i)
            player.play(decoded, 960, i * 960);
    });
    QTRY_VERIFY_WITH_TIMEOUT(recorder.purity(440) > 0.9, 30000);
    const double amplitude = recorder.amplitude(440);
    QVERIFY2(qAbs(amplitude - 0.5) < 0.05, qPrintable(QString::number(amplitude)));
}

void tst_ZRPcmPlayer::noDevice()
{
    const QStringList command = AudioCalls::withoutServer(
        {HostProcess::path(QCoreApplication::applicationFilePath()), withoutDevice});
    HostProcess process;
    QVERIFY(process.start(command.first(), command.mid(1)));
    const bool succeeded = process.waitForSuccess(60000);
    const QByteArray errors = process.errors();
    QVERIFY2(succeeded, errors);
    QCOMPARE(process.readAll().replace('\r', ""), AudioCalls::linesWithoutServer);
    QCOMPARE(errors.count("ZRPcmPlayer start 1"), 1);
}

// There is a device, and it doesn't start.
void tst_ZRPcmPlayer::deviceThatFails()
{
    startFails = true;
    Player player;
    LogCatcher log;
    QCOMPARE(player.start(), -1);
    QVERIFY(player.stopped);
    QVERIFY(!player.device);
    QCOMPARE(log.count("ZRPcmPlayer start 1"), 1);

    QElapsedTimer spent;
    spent.start();
    for (int i = 0; i < 100; ++i) { // ten seconds in all
        player.play(direct, 4800);
        player.play(decoded, 4800, i * 4800);
    }
    QVERIFY2(spent.elapsed() < 3000, qPrintable(QString::number(spent.elapsed())));
    QCOMPARE(player.writeData(bytes("abcd"), 4), -1);

    player.stop();
    startFails = false;
    QCOMPARE(player.start(), 0);
    QVERIFY(!player.stopped);
}

// The format of an earlier, good start stays: frames are converted and dropped.
void tst_ZRPcmPlayer::writeAfterStop()
{
    Player player;
    QCOMPARE(player.start(), 0);
    player.stop();
    player.play(decoded, 2100);
    QCOMPARE(player.queued(), 8400 - 8192);
    player.play(direct, 100);
    QCOMPARE(player.writeData(bytes("abcd"), 4), -1);
}

void tst_ZRPcmPlayer::writeBeforeStart()
{
    Player player;
    player.play(decoded, 5000);
    QVERIFY(!player.converter);
}

// A frame in the device's own format: its length leaves the channel count out, so of an interleaved
// stereo frame only the front half is played.
void tst_ZRPcmPlayer::directFrame()
{
    Sink sink;
    Player player;
    player.startInto(&sink);
    player.play(direct, 1024);
    QCOMPARE(sink.taken.size(), 2048);
    QCOMPARE(sink.taken, firstBytes(direct, 1024, 2048));
    QVERIFY(!player.converter);
}

void tst_ZRPcmPlayer::directFrame_mono()
{
    chooseDevice("u8");
    Sink sink;
    Player player;
    player.startInto(&sink);
    const Tone tone{AV_SAMPLE_FMT_U8, 48000, 1, 440, 0.5};
    player.play(tone, 1000);
    QCOMPARE(sink.taken, firstBytes(tone, 1000, 1000));
    QVERIFY(!player.converter);
}

void tst_ZRPcmPlayer::frameThatNeedsConverter_data()
{
    QTest::addColumn<int>("format");
    QTest::addColumn<int>("rate");
    QTest::addColumn<int>("channels");
    QTest::newRow("other format") << int(AV_SAMPLE_FMT_FLT) << 48000 << 2;
    QTest::newRow("planar") << int(AV_SAMPLE_FMT_S16P) << 48000 << 2;
    QTest::newRow("other rate") << int(AV_SAMPLE_FMT_S16) << 44100 << 2;
    QTest::newRow("other channels") << int(AV_SAMPLE_FMT_S16) << 48000 << 1;
}

void tst_ZRPcmPlayer::frameThatNeedsConverter()
{
    QFETCH(int, format);
    QFETCH(int, rate);
    QFETCH(int, channels);
    Sink sink;
    Player player;
    player.startInto(&sink);
    player.play({AVSampleFormat(format), rate, channels, 440, 0.5}, 1000);
    QVERIFY(player.converter);
    QCOMPARE(sink.taken.size(), 0); // below one block
    QVERIFY(player.queued() > 3000);
}

void tst_ZRPcmPlayer::converterTarget_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<int>("bytesPerSample");
    QTest::newRow("s16le") << "rate = 48000, layout = 3, channels = 2, format = 1" << 2;
    QTest::newRow("s32le") << "rate = 48000, layout = 3, channels = 2, format = 1" << 2;
    QTest::newRow("float32le") << "rate = 48000, layout = 3, channels = 2, format = 3" << 4;
    QTest::newRow("u8") << "rate = 48000, layout = 4, channels = 1, format = 0" << 1;
}

void tst_ZRPcmPlayer::converterTarget()
{
    QFETCH(QString, line);
    QFETCH(int, bytesPerSample);
    chooseDevice(QTest::currentDataTag());
    Sink sink;
    Player player;
    player.startInto(&sink);
    LogCatcher log;
    player.play(decoded, 500);
    player.play(decoded, 500);
    const ZRAudioConverter *converter = player.converter;
    QCOMPARE(log.lines(),
        QStringList(
            {line, QString("src format = 8, dst format = %1").arg(converter->targetFormat)}));
    QCOMPARE(converter->bytesPerSample, bytesPerSample);
    QCOMPARE(converter->bufferSamples, 4096);
    QCOMPARE(player.queued(), 1000 * bytesPerSample * converter->targetChannels);
}

// The table's rows that no sink here has: a 32-bit device of another kind, and wider or odd ones.
void tst_ZRPcmPlayer::formatTable_data()
{
    QTest::addColumn<int>("size");
    QTest::addColumn<int>("type");
    QTest::addColumn<int>("format");
    QTest::newRow("8 signed") << 8 << int(QAudioFormat::SignedInt) << int(AV_SAMPLE_FMT_U8);
    QTest::newRow("16 float") << 16 << int(QAudioFormat::Float) << int(AV_SAMPLE_FMT_S16);
    QTest::newRow("32 signed") << 32 << int(QAudioFormat::SignedInt) << int(AV_SAMPLE_FMT_S32);
    QTest::newRow("32 float") << 32 << int(QAudioFormat::Float) << int(AV_SAMPLE_FMT_FLT);
    QTest::newRow("64") << 64 << int(QAudioFormat::Float) << int(AV_SAMPLE_FMT_DBL);
    QTest::newRow("24") << 24 << int(QAudioFormat::SignedInt) << -1;
}

void tst_ZRPcmPlayer::formatTable()
{
    QFETCH(int, size);
    QFETCH(int, type);
    QFETCH(int, format);
    Player player;
    QCOMPARE(player.start(), 0);
    player.format.setSampleSize(size);
    player.format.setSampleType(QAudioFormat::SampleType(type));
    player.stop();
    player.play({AV_SAMPLE_FMT_FLTP, 44100, 2, 440, 0.5}, 1000);
    QVERIFY(player.converter);
    QCOMPARE(player.converter->targetFormat, format);
}

void tst_ZRPcmPlayer::samplesAreConverted()
{
    Sink sink;
    Player player;
    player.startInto(&sink);
    player.play(decoded, 2048);
    const QByteArray expected = firstBytes(direct, 2048, 8192);
    QCOMPARE(sink.taken.size(), 8192);
    const auto *left = reinterpret_cast<const int16_t *>(sink.taken.constData());
    const auto *right = reinterpret_cast<const int16_t *>(expected.constData());
    for (int i = 0; i < 4096; ++i)
        QVERIFY2(qAbs(left[i] - right[i]) <= 2, qPrintable(QString::number(i)));
}

void tst_ZRPcmPlayer::drainInBlocks()
{
    Sink sink;
    Player player;
    player.startInto(&sink);
    player.play(decoded, 4500); // 18000 bytes, more than the converter gives at a time
    QCOMPARE(sink.taken.size(), 2 * 8192);
    QCOMPARE(player.queued(), 18000 - 2 * 8192);
}

void tst_ZRPcmPlayer::remainderStays()
{
    Sink sink;
    Player player;
    player.startInto(&sink);
    player.play(decoded, 2000);
    QCOMPARE(player.queued(), 8000);
    player.play(decoded, 47, 2000);
    QCOMPARE(player.queued(), 8188);
    QCOMPARE(sink.taken.size(), 0);
    player.play(decoded, 1, 2047);
    QCOMPARE(sink.taken.size(), 8192);
    QCOMPARE(player.queued(), 0);
}

void tst_ZRPcmPlayer::remainderSurvivesStop()
{
    Sink sink;
    Player player;
    player.startInto(&sink);
    player.play(decoded, 2000);
    const ZRAudioConverter *converter = player.converter;
    player.stop();
    player.startInto(&sink);
    QCOMPARE(player.converter, converter);
    QCOMPARE(player.queued(), 8000);
    player.play(decoded, 48, 2000);
    QCOMPARE(sink.taken.size(), 8192);
}

// More than the FIFO was made for: it is not grown, and what goes beyond it is lost.
void tst_ZRPcmPlayer::largeFrame()
{
    Sink sink;
    Player player;
    player.startInto(&sink);
    player.play(decoded, 20000); // 80000 bytes
    QCOMPARE(sink.taken.size(), 4 * 4096 * 4);
    QCOMPARE(player.queued(), 0);
    player.play(decoded, 2048);
    QCOMPARE(sink.taken.size(), 4 * 4096 * 4 + 8192);
}

void tst_ZRPcmPlayer::rateChange()
{
    Sink sink;
    Player player;
    player.startInto(&sink);
    const Tone half{AV_SAMPLE_FMT_FLTP, 24000, 2, 440, 0.5};
    LogCatcher log;
    player.play(decoded, 100);
    player.play(decoded, 100);
    QCOMPARE(log.count("src format = 8, dst format = 1"), 1);
    QCOMPARE(player.queued(), 800);

    player.play(half, 100); // 200 samples or, with what the resampler adds at its end, more
    QCOMPARE(log.count("src format = 8, dst format = 1"), 2);
    QCOMPARE(player.converter->sourceRate, int64_t(24000));
    QVERIFY2(player.queued() >= 800 + 190 * 4, qPrintable(QString::number(player.queued())));
    QVERIFY2(player.queued() <= 800 + 300 * 4, qPrintable(QString::number(player.queued())));

    const int before = player.queued();
    player.play(decoded, 100);
    QCOMPARE(log.count("src format = 8, dst format = 1"), 3);
    QCOMPARE(player.queued(), before + 400);
    QCOMPARE(log.beginning("rate = ").size(), 1); // the target stays
}

void tst_ZRPcmPlayer::layoutOfFrameIsNotRead()
{
    Player player;
    QCOMPARE(player.start(), 0);
    AudioFrame frame = decoded.frame(500);
    frame->ch_layout.u.mask = AV_CH_LAYOUT_STEREO_DOWNMIX;
    player.write(frame.get());
    QCOMPARE(player.converter->sourceLayout, int64_t(AV_CH_LAYOUT_STEREO));
    player.play({AV_SAMPLE_FMT_FLTP, 48000, 1, 440, 0.5}, 500);
    QCOMPARE(player.converter->sourceLayout, int64_t(AV_CH_LAYOUT_MONO));
    QCOMPARE(player.converter->sourceChannels, 1);
    player.play({AV_SAMPLE_FMT_FLTP, 48000, 6, 440, 0.5}, 500);
    QCOMPARE(player.converter->sourceLayout, int64_t(AV_CH_LAYOUT_STEREO));
    QCOMPARE(player.converter->sourceChannels, 6);
    LogCatcher log;
    player.play(decoded, 500); // the same layout, and yet another source
    QCOMPARE(log.beginning("src format = ").size(), 1);
    QCOMPARE(player.converter->sourceChannels, 2);
    QCOMPARE(player.queued(), 4 * 500 * 4);
}

void tst_ZRPcmPlayer::impossibleSource_data()
{
    QTest::addColumn<int>("format");
    QTest::addColumn<int>("rate");
    QTest::newRow("unknown format") << int(AV_SAMPLE_FMT_NB) << 48000;
    QTest::newRow("no rate") << int(AV_SAMPLE_FMT_FLTP) << 0;
    QTest::newRow("negative rate") << int(AV_SAMPLE_FMT_FLTP) << -48000;
}

// The frame is lost, and sound comes again with the next good one.
void tst_ZRPcmPlayer::impossibleSource()
{
    QFETCH(int, format);
    QFETCH(int, rate);
    Sink sink;
    Player player;
    player.startInto(&sink);
    AudioFrame frame = decoded.frame(3000);
    frame->format = format;
    frame->sample_rate = rate;
    LogCatcher log;
    player.write(frame.get());
    player.write(frame.get());
    QVERIFY(!player.converter->context);
    QCOMPARE(log.beginning("src format = ").size(), 1); // tried once for each kind of source
    QCOMPARE(player.queued(), 0);

    player.play(decoded, 2048);
    QCOMPARE(sink.taken.size(), 8192);
}

void tst_ZRPcmPlayer::createBuffer()
{
    ZRAudioConverter converter;
    converter.targetChannels = 2;
    converter.targetFormat = AV_SAMPLE_FMT_FLT;
    for (int samples : {4096, 100, 4096}) {
        converter.createBuffer(samples);
        QVERIFY(converter.buffer);
        QCOMPARE(converter.bufferSamples, samples);
        QCOMPARE(converter.bytesPerSample, 4);
        QCOMPARE(av_fifo_size(converter.fifo), 0);
        QCOMPARE(av_fifo_space(converter.fifo), 4 * 2 * 4 * samples);
        converter.buffer[2 * 4 * samples - 1] = 1;
    }
    converter.createBuffer(0);
    QVERIFY(!converter.buffer);
    QVERIFY(!converter.fifo);
    QCOMPARE(converter.bufferSamples, 0);
}

// A frame that is as the target: the first sets up the resampler all the same; each further one is
// put into the FIFO as it stands, one channel's worth of it, and once more through the resampler.
void tst_ZRPcmPlayer::frameInTargetFormat()
{
    ZRAudioConverter converter;
    converter.targetRate = 48000;
    converter.targetLayout = AV_CH_LAYOUT_STEREO;
    converter.targetChannels = 2;
    converter.targetFormat = AV_SAMPLE_FMT_S16;
    converter.createBuffer(4096);
    converter.convert(direct.frame(100).get());
    QVERIFY(converter.context);
    QCOMPARE(av_fifo_size(converter.fifo), 400);
    converter.convert(direct.frame(100).get());
    QCOMPARE(av_fifo_size(converter.fifo), 400 + 200 + 400);

    // Nor does it count as a change of the source.
    Tone mono = direct;
    mono.channels = 1;
    converter.convert(mono.frame(100).get());
    QCOMPARE(converter.sourceChannels, 1);
    const int before = av_fifo_size(converter.fifo);
    converter.convert(direct.frame(100).get());
    QCOMPARE(converter.sourceChannels, 1);
    QCOMPARE(av_fifo_size(converter.fifo), before + 200 + 400);
    converter.createBuffer(0);
    converter.closeContext();
}

void tst_ZRPcmPlayer::writeDataResults()
{
    const QByteArray data(100, 'x');
    Sink sink;
    Player player;
    QCOMPARE(player.writeData(bytes(data), 100), -1);
    player.setVolume(0.0F);
    QCOMPARE(player.writeData(bytes(data), 100), -1); // no device comes before mute
    player.startInto(&sink);
    QCOMPARE(player.writeData(bytes(data), 100), 100);
    QCOMPARE(player.writeData(bytes(data), 0), 0);
    QCOMPARE(player.writeData(bytes(data), -5), -5); // mute comes before the size
    player.setVolume(1.0F);
    QCOMPARE(player.writeData(bytes(data), 0), 0);
    QCOMPARE(player.writeData(bytes(data), -5), 0);
    QVERIFY(sink.asked.isEmpty());
    QCOMPARE(player.writeData(bytes(data), 100), 0);
    QCOMPARE(sink.taken, data);
}

void tst_ZRPcmPlayer::chunksOfOnePeriod()
{
    Sink sink;
    Player player;
    player.startInto(&sink);
    const int period = player.output->periodSize();
    QVERIFY(period > 0);
    const QByteArray data(2 * period + 100, 'x');
    QCOMPARE(player.writeData(bytes(data), data.size()), 0);
    QCOMPARE(sink.asked, QVector<qint64>({period, period, 100}));
}

// The device doesn't know its period yet: a sleep for each answer, and no write.
void tst_ZRPcmPlayer::negativePeriod()
{
    Sink sink;
    Player player;
    player.startInto(&sink);
    periods = {-1, -1, 100, -1, 100, 100};
    QElapsedTimer spent;
    spent.start();
    QCOMPARE(player.writeData(bytes(QByteArray(250, 'x')), 250), 0);
    QVERIFY(spent.nsecsElapsed() >= 3 * 1000000);
    QCOMPARE(sink.asked, QVector<qint64>({100, 100, 50}));
    QVERIFY(periods.isEmpty());
}

void tst_ZRPcmPlayer::unwillingDevice()
{
    Sink sink;
    Player player;
    player.startInto(&sink);
    QVERIFY(player.output->periodSize() > 1000);
    QByteArray data;
    for (int i = 0; i < 1000; ++i)
        data.append(char(i % 251));
    sink.takes = {0, 0, 300, -1, 0, 1, 0};
    QElapsedTimer spent;
    spent.start();
    QCOMPARE(player.writeData(bytes(data), data.size()), 0);
    QVERIFY(spent.nsecsElapsed() >= 5 * 1000000); // one sleep for each write of nothing
    QCOMPARE(sink.asked, QVector<qint64>({1000, 1000, 1000, 700, 700, 700, 699, 699}));
    QCOMPARE(sink.taken, data);
}

// A write doesn't give up, however long the device takes nothing.
void tst_ZRPcmPlayer::waitsForTheDevice()
{
    Sink sink;
    Player player;
    player.startInto(&sink);
    sink.takes = QVector<qint64>(2500, 0);
    QCOMPARE(player.writeData(bytes(QByteArray(100, 'x')), 100), 0);
    QCOMPARE(sink.asked.size(), 2501);
    QCOMPARE(sink.taken.size(), 100);
}

void tst_ZRPcmPlayer::abort()
{
    Sink sink;
    Player player;
    player.startInto(&sink);
    sink.takes = {10, 0, 0, 0, 0};
    sink.onWrite = [&] { player.aborted = sink.asked.size() == 3; };
    QCOMPARE(player.writeData(bytes(QByteArray(500, 'x')), 500), 0);
    QCOMPARE(sink.taken.size(), 10);
    QCOMPARE(sink.asked.size(), 3);
    QVERIFY(player.aborted);
}

void tst_ZRPcmPlayer::abortKeepsFifo()
{
    Sink sink;
    Player player;
    player.startInto(&sink);
    player.aborted = true;
    player.play(decoded, 3000);
    QCOMPARE(player.queued(), 12000);
    QVERIFY(sink.asked.isEmpty());

    player.stop();
    player.startInto(&sink); // takes it back
    player.play(decoded, 1, 3000);
    QCOMPARE(sink.taken.size(), 8192);
}

void tst_ZRPcmPlayer::mute()
{
    Sink sink;
    Player player;
    player.startInto(&sink);
    player.setVolume(0.0F);
    player.play(direct, 1024);
    QVERIFY(sink.asked.isEmpty());
    player.setVolume(1.0F);
    player.play(direct, 1024);
    QCOMPARE(sink.taken.size(), 2048);
}

void tst_ZRPcmPlayer::muteDropsConverted()
{
    Sink sink;
    Player player;
    player.startInto(&sink);
    player.setVolume(0.0F);
    player.play(decoded, 3000);
    QCOMPARE(player.queued(), 12000 - 8192);
    QVERIFY(sink.asked.isEmpty());
    player.setVolume(1.0F);
    player.play(decoded, 3000, 3000); // with what was left, two blocks
    QCOMPARE(sink.taken.size(), 8192);
}

void tst_ZRPcmPlayer::halfIsFull()
{
    Sink sink;
    Player player;
    player.startInto(&sink);
    player.setVolume(0.5F);
    player.play(decoded, 2048);
    const QByteArray half = sink.taken;
    QCOMPARE(player.output->volume(), 1.0);
    player.setVolume(1.0F);
    sink.taken.clear();
    player.play(decoded, 2048);
    QCOMPARE(sink.taken.size(), 8192);
    QCOMPARE(half, sink.taken);
}

void tst_ZRPcmPlayer::tone_data()
{
    QTest::addColumn<int>("format");
    QTest::addColumn<int>("rate");
    QTest::addColumn<int>("channels");
    QTest::addColumn<double>("volume");
    QTest::addColumn<double>("amplitude");
    for (const char *sink : {"s16le", "s32le", "float32le", "u8"})
        QTest::newRow(sink) << int(AV_SAMPLE_FMT_FLTP) << 48000 << 2 << 1.0 << 0.5;
    QTest::newRow("s16le, half") << int(AV_SAMPLE_FMT_FLTP) << 48000 << 2 << 0.5 << 0.5;
    // One channel becomes two of the same power.
    QTest::newRow("s16le, telephone") << int(AV_SAMPLE_FMT_S16) << 8000 << 1 << 1.0 << 0.3536;
    QTest::newRow("u8, as it stands") << int(AV_SAMPLE_FMT_U8) << 48000 << 1 << 1.0 << 0.5;
}

// What the sink plays, found again in its record.
void tst_ZRPcmPlayer::tone()
{
    QFETCH(int, format);
    QFETCH(int, rate);
    QFETCH(int, channels);
    QFETCH(double, volume);
    QFETCH(double, amplitude);
    const QString sink = QString(QTest::currentDataTag()).section(',', 0, 0);
    chooseDevice(sink);
    SinkRecorder recorder(sink);
    Player player;
    QCOMPARE(player.start(), 0);
    player.setVolume(float(volume));
    const Tone tone{AVSampleFormat(format), rate, channels, 440, 0.5};
    const int length = rate / 50;
    Call sound([&] {
        for (int i = 0; i < 100; ++i)
            player.play(tone, length, i * length);
    });
    QTRY_VERIFY_WITH_TIMEOUT(recorder.purity(440) > 0.98, 30000);
    QVERIFY2(qAbs(recorder.amplitude(440) - amplitude) < 0.05,
        qPrintable(QString::number(recorder.amplitude(440))));
}

// The device's demand is what sets the speed: only its buffer runs ahead.
void tst_ZRPcmPlayer::writeBlocks()
{
    Player player;
    QCOMPARE(player.start(), 0);
    QElapsedTimer spent;
    spent.start();
    for (int i = 0; i < 100; ++i)
        player.play(decoded, 960, i * 960); // two seconds in all
    QVERIFY2(spent.elapsed() > 1000, qPrintable(QString::number(spent.elapsed())));

    spent.restart();
    player.setVolume(0.0F);
    for (int i = 0; i < 100; ++i)
        player.play(decoded, 960, i * 960);
    QVERIFY2(spent.elapsed() < 1000, qPrintable(QString::number(spent.elapsed())));
}

void tst_ZRPcmPlayer::soundAfterMute()
{
    SinkRecorder recorder("s16le");
    Player player;
    QCOMPARE(player.start(), 0);
    player.setVolume(0.0F);
    for (int i = 0; i < 50; ++i)
        player.play(decoded, 960, i * 960);
    QTRY_VERIFY_WITH_TIMEOUT(recorder.seconds() > 1.0, 30000);
    QVERIFY2(recorder.amplitude(440) < 0.001, qPrintable(QString::number(recorder.amplitude(440))));

    player.setVolume(1.0F);
    Call sound([&] {
        for (int i = 0; i < 100; ++i)
            player.play(decoded, 960, i * 960);
    });
    QTRY_VERIFY_WITH_TIMEOUT(recorder.purity(440) > 0.9, 30000);
}

// As in the player: opened on one thread, written to on another and stopped on a third, while the
// first one lives and when it has ended.
void tst_ZRPcmPlayer::startedElsewhere()
{
    SinkRecorder recorder("s16le");
    Player player;
    for (bool alive : {true, false, true}) {
        recorder.restart();
        int result = -1;
        QSemaphore stopped;
        auto starter = std::make_unique<Call>([&] {
            result = player.start();
            if (alive)
                stopped.acquire();
        });
        QTRY_VERIFY_WITH_TIMEOUT(player.device, 30000);
        if (!alive)
            starter.reset();
        {
            Call sound([&] {
                for (int i = 0; i < 75; ++i)
                    player.play(decoded, 960, i * 960);
            });
            QTRY_VERIFY_WITH_TIMEOUT(recorder.purity(440) > 0.9, 30000);
        }
        player.stop();
        QVERIFY(!player.output);
        stopped.release();
        starter.reset();
        QCOMPARE(result, 0);
    }
}

int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    if (application.arguments().contains(withoutDevice))
        return runWithoutDevice();
    tst_ZRPcmPlayer test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_ZRPcmPlayer.moc"

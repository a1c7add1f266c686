#include "RtspPeer.h"

#include "StreamFacts.h"

extern "C" {
#include <libavformat/avformat.h>
}

#include <QElapsedTimer>
#include <QtTest>

Q_DECLARE_METATYPE(RtspPeer::Faults)
Q_DECLARE_METATYPE(MediaClip::Format)

// The server and each of its faults, as FFmpeg's own client sees them.
class tst_RtspPeer : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void variants_data();
    void variants();
    void realTime();
    void loops();
    void twoClients();
    void pauseAndPlay();
    void openingFails_data();
    void openingFails();
    void openingTakesNoEnd_data();
    void openingTakesNoEnd();
    void openingWorksAllTheSame_data();
    void openingWorksAllTheSame();
    void answersComeLate();
    void beginsAtPicture();
    void burst();
    void stops();
    void closes();
    void drops();
    void cuts();
    void corrupts();
    void wrongParameterSets();
    void silentForAWhile();
    void hangUp();
};

namespace {

using Faults = RtspPeer::Faults;

MediaClip::Format shortFormat(AVCodecID video, AVCodecID audio)
{
    MediaClip::Format format = MediaClip::Format::of(video, audio);
    format.width = 160;
    format.height = 120;
    format.pictures = 30;
    format.keyFrameDistance = 10;
    return format;
}

const MediaClip &shortClip(AVCodecID audio = AV_CODEC_ID_NONE)
{
    return MediaClip::of(shortFormat(AV_CODEC_ID_H264, audio));
}

// FFmpeg's client with a limit on every call.
class Client
{
public:
    ~Client()
    {
        av_packet_free(&packet);
        avformat_close_input(&context);
    }

    int open(const RtspPeer &peer, double seconds = 20.0)
    {
        context = avformat_alloc_context();
        context->interrupt_callback = {isLate, this};
        AVDictionary *options = nullptr;
        av_dict_set(&options, "rtsp_transport", "tcp", 0);
        limit(seconds);
        const int result = avformat_open_input(&context, peer.url().c_str(), nullptr, &options);
        av_dict_free(&options);
        return result;
    }

    // The packet, or null on error.
    const AVPacket *read(double seconds = 20.0)
    {
        limit(seconds);
        av_packet_unref(packet);
        result = av_read_frame(context, packet);
        return result < 0 ? nullptr : packet;
    }

    AVCodecID codec(const AVPacket *of) const
    {
        return context->streams[of->stream_index]->codecpar->codec_id;
    }

    AVFormatContext *context = nullptr;
    int result = 0;

private:
    void limit(double seconds)
    {
        allowed = qint64(seconds * 1000);
        clock.start();
    }

    static int isLate(void *opaque)
    {
        const auto *client = static_cast<const Client *>(opaque);
        return client->clock.hasExpired(client->allowed) ? 1 : 0;
    }

    AVPacket *packet = av_packet_alloc();
    QElapsedTimer clock;
    qint64 allowed = 0;
};

// The bytes, with the short form of all start codes: RTP doesn't carry which one was there, and
// the client puts the longer one's first zero behind the packet before it.
QByteArray bytesOf(const AVPacket *packet)
{
    QByteArray bytes(reinterpret_cast<const char *>(packet->data), packet->size);
    while (bytes.endsWith('\0'))
        bytes.chop(1);
    return bytes.replace(QByteArray("\0\0\0\1", 4), QByteArray("\0\0\1", 3));
}

// Reads so many packets of the codec and gives their bytes.
QByteArrayList readPackets(Client &client, AVCodecID codec, int count)
{
    QByteArrayList read;
    while (read.size() < count) {
        const AVPacket *packet = client.read();
        if (!packet)
            break;
        if (client.codec(packet) == codec)
            read.append(bytesOf(packet));
    }
    return read;
}

QByteArrayList clipPackets(const MediaClip &clip, MediaClip::Stream stream)
{
    QByteArrayList found;
    for (const MediaClip::Packet &packet : clip.packets()) {
        if (packet->stream_index == stream)
            found.append(bytesOf(packet.get()));
    }
    return found;
}

}

void tst_RtspPeer::initTestCase()
{
    av_log_set_level(AV_LOG_FATAL);
}

void tst_RtspPeer::variants_data()
{
    QTest::addColumn<MediaClip::Format>("format");
    QTest::addColumn<int>("video");
    QTest::addColumn<int>("audio");
    const QPair<AVCodecID, const char *> videos[] = {
        {AV_CODEC_ID_H264, "H.264"}, {AV_CODEC_ID_HEVC, "H.265"}, {AV_CODEC_ID_NONE, "none"}};
    const QPair<AVCodecID, const char *> audios[] = {
        {AV_CODEC_ID_AAC, "AAC"}, {AV_CODEC_ID_PCM_ALAW, "PCMA"}, {AV_CODEC_ID_NONE, "none"}};
    for (const auto &video : videos) {
        for (const auto &audio : audios) {
            if (video.first == AV_CODEC_ID_NONE && audio.first == AV_CODEC_ID_NONE)
                continue;
            QTest::addRow("%s, %s", video.second, audio.second)
                << shortFormat(video.first, audio.first) << int(video.first) << int(audio.first);
        }
    }
}

// What arrives is the clip, byte for byte.
void tst_RtspPeer::variants()
{
    QFETCH(MediaClip::Format, format);
    const MediaClip &clip = MediaClip::of(format);
    const RtspPeer peer(clip, RtspPeer::AsFastAsTaken);
    const QPair<int, MediaClip::Stream> streams[] = {
        {format.video, MediaClip::Video}, {format.audio, MediaClip::Audio}};
    for (const auto &stream : streams) {
        if (stream.first == AV_CODEC_ID_NONE)
            continue;
        Client client;
        QVERIFY(client.open(peer) >= 0);
        QCOMPARE(int(client.context->nb_streams), int(clip.hasVideo()) + int(clip.hasAudio()));
        const QByteArrayList sent = clipPackets(clip, stream.second);
        QCOMPARE(readPackets(client, AVCodecID(stream.first), sent.size()), sent);
    }
    QCOMPARE(peer.requests().mid(0, 3), QByteArrayList({"OPTIONS", "DESCRIBE", "SETUP"}));
}

void tst_RtspPeer::realTime()
{
    const RtspPeer peer(shortClip());
    Client client;
    QVERIFY(client.open(peer) >= 0);
    QElapsedTimer clock;
    clock.start();
    QCOMPARE(readPackets(client, AV_CODEC_ID_H264, 26).size(), 26);
    const qint64 taken = clock.elapsed();
    QVERIFY2(taken > 850, qPrintable(QString::number(taken)));
}

void tst_RtspPeer::loops()
{
    const RtspPeer peer(shortClip(), RtspPeer::AsFastAsTaken);
    Client client;
    QVERIFY(client.open(peer) >= 0);
    int64_t last = AV_NOPTS_VALUE;
    for (int i = 0; i < 70; ++i) {
        const AVPacket *packet = client.read();
        QVERIFY(packet);
        if (last != AV_NOPTS_VALUE)
            QCOMPARE(packet->pts - last, int64_t(3600));
        last = packet->pts;
    }
}

void tst_RtspPeer::twoClients()
{
    RtspPeer peer(shortClip(), RtspPeer::AsFastAsTaken);
    {
        Client first;
        Client second;
        QVERIFY(first.open(peer) >= 0);
        QCOMPARE(readPackets(first, AV_CODEC_ID_H264, 5).size(), 5);
        QVERIFY(second.open(peer) >= 0);
        const QByteArrayList sent = clipPackets(shortClip(), MediaClip::Video);
        QCOMPARE(readPackets(second, AV_CODEC_ID_H264, 5), sent.mid(0, 5));
        QCOMPARE(peer.connections(), 2);
    }
    QTRY_COMPARE(peer.connections(), 0);
}

void tst_RtspPeer::pauseAndPlay()
{
    const RtspPeer peer(shortClip());
    Client client;
    QVERIFY(client.open(peer) >= 0);
    const QByteArrayList sent = clipPackets(shortClip(), MediaClip::Video);
    QByteArrayList read = readPackets(client, AV_CODEC_ID_H264, 5);
    QVERIFY(av_read_pause(client.context) >= 0);
    QVERIFY(av_read_play(client.context) >= 0);
    read += readPackets(client, AV_CODEC_ID_H264, 10);
    QCOMPARE(peer.requests().mid(3), QByteArrayList({"PLAY", "PAUSE", "PLAY"}));
    // What the client has thrown away by its pause is missing, and nothing comes twice.
    for (int i = 1; i < read.size(); ++i)
        QVERIFY(sent.indexOf(read[i]) > sent.indexOf(read[i - 1]));
}

void tst_RtspPeer::openingFails_data()
{
    QTest::addColumn<Faults>("faults");
    QTest::addColumn<int>("result");
    const auto row = [](const char *name, const std::function<void(Faults &)> &set, int result) {
        Faults faults;
        set(faults);
        QTest::newRow(name) << faults << result;
    };
    row(
        "refused", [](Faults &f) { f.refuse = true; },
        StreamFacts::refusalIsTold() ? AVERROR(ECONNREFUSED) : AVERROR_EXIT);
    row(
        "401", [](Faults &f) { f.refusedRequest = "DESCRIBE", f.status = 401; },
        AVERROR_HTTP_UNAUTHORIZED);
    row(
        "404", [](Faults &f) { f.refusedRequest = "DESCRIBE", f.status = 404; },
        AVERROR_HTTP_NOT_FOUND);
    row(
        "TCP refused", [](Faults &f) { f.refusedRequest = "SETUP", f.status = 461; },
        AVERROR(EPROTONOSUPPORT));
    row(
        "closed at once", [](Faults &f) { f.hangUpAt = "OPTIONS"; }, AVERROR_INVALIDDATA);
    row(
        "closed at SETUP", [](Faults &f) { f.hangUpAt = "SETUP"; }, AVERROR_INVALIDDATA);
}

void tst_RtspPeer::openingFails()
{
    QFETCH(Faults, faults);
    const RtspPeer peer(shortClip(), faults);
    Client client;
    QTEST(client.open(peer), "result");
}

void tst_RtspPeer::openingTakesNoEnd_data()
{
    QTest::addColumn<Faults>("faults");
    QTest::addColumn<int>("requests");
    const QPair<const char *, int> methods[] = {
        {"OPTIONS", 1}, {"DESCRIBE", 2}, {"SETUP", 3}, {"PLAY", 4}};
    for (const auto &method : methods) {
        Faults faults;
        faults.silentFrom = method.first;
        QTest::addRow("silent from %s", method.first) << faults << method.second;
    }
    Faults faults;
    faults.garbageAt = "DESCRIBE";
    faults.answer = Faults::EndlessHeaders;
    QTest::newRow("endless headers") << faults << 2;
    faults.answer = Faults::HugeLength;
    QTest::newRow("huge length") << faults << 2;
    faults.answer = Faults::RandomBytes;
    QTest::newRow("random bytes") << faults << 2;
}

void tst_RtspPeer::openingTakesNoEnd()
{
    QFETCH(Faults, faults);
    const RtspPeer peer(shortClip(), faults);
    Client client;
    QElapsedTimer clock;
    clock.start();
    QVERIFY(client.open(peer, 0.5) < 0);
    QVERIFY(clock.elapsed() >= 500);
    // The client says good-bye when it gives up.
    QByteArrayList requests = peer.requests();
    requests.removeAll("TEARDOWN");
    QTEST(requests.size(), "requests");
}

void tst_RtspPeer::openingWorksAllTheSame_data()
{
    QTest::addColumn<Faults>("faults");
    QTest::addColumn<int>("streams");
    Faults faults;
    faults.description = Faults::NoMedia;
    QTest::newRow("no media") << faults << 0;
    faults.description = Faults::OtherMedia;
    QTest::newRow("other media") << faults << 1;
    faults = Faults();
    faults.garbageAt = "OPTIONS";
    faults.answer = Faults::WrongSequence;
    QTest::newRow("wrong sequence") << faults << 1;
}

void tst_RtspPeer::openingWorksAllTheSame()
{
    QFETCH(Faults, faults);
    const RtspPeer peer(shortClip(), faults);
    Client client;
    QVERIFY(client.open(peer) >= 0);
    QTEST(int(client.context->nb_streams), "streams");
}

void tst_RtspPeer::answersComeLate()
{
    Faults faults;
    faults.answerDelay = 100;
    const RtspPeer peer(shortClip(), faults);
    Client client;
    QElapsedTimer clock;
    clock.start();
    QVERIFY(client.open(peer) >= 0);
    QVERIFY(clock.elapsed() >= 400);
    QVERIFY(client.read());
}

void tst_RtspPeer::beginsAtPicture()
{
    Faults faults;
    faults.startPicture = 7;
    const RtspPeer peer(shortClip(AV_CODEC_ID_AAC), faults);
    Client client;
    QVERIFY(client.open(peer) >= 0);
    const QByteArrayList sent = clipPackets(shortClip(AV_CODEC_ID_AAC), MediaClip::Video);
    QCOMPARE(readPackets(client, AV_CODEC_ID_H264, 5), sent.mid(7, 5));
}

void tst_RtspPeer::burst()
{
    Faults faults;
    faults.burst = 60; // two rounds of the clip
    RtspPeer peer(shortClip(), faults);
    Client client;
    QVERIFY(client.open(peer) >= 0);
    QElapsedTimer clock;
    clock.start();
    QCOMPARE(readPackets(client, AV_CODEC_ID_H264, 59).size(), 59);
    QVERIFY(clock.elapsed() < 2000);
    // Then the clip goes on in its time, 2.4 s after its beginning.
    QCOMPARE(readPackets(client, AV_CODEC_ID_H264, 3).size(), 3);
    QVERIFY(clock.elapsed() >= 2300);
    // Or on demand.
    peer.burst(250);
    clock.start();
    QCOMPARE(readPackets(client, AV_CODEC_ID_H264, 245).size(), 245);
    QVERIFY(clock.elapsed() < 5000);
}

void tst_RtspPeer::stops()
{
    Faults faults;
    faults.stopAfter = 10;
    const RtspPeer peer(shortClip(), faults, RtspPeer::AsFastAsTaken);
    Client client;
    QVERIFY(client.open(peer) >= 0);
    while (client.read(0.5)) { }
    QCOMPARE(client.result, AVERROR_EXIT);
    QCOMPARE(peer.packetsSent(), 10);
    QCOMPARE(peer.connections(), 1);
}

void tst_RtspPeer::closes()
{
    Faults faults;
    faults.closeAfter = 10;
    const RtspPeer peer(shortClip(), faults, RtspPeer::AsFastAsTaken);
    Client client;
    QVERIFY(client.open(peer) >= 0);
    while (client.read()) { }
    QCOMPARE(client.result, AVERROR_EOF);
    QCOMPARE(peer.packetsSent(), 10);
    QTRY_COMPARE(peer.connections(), 0);
}

void tst_RtspPeer::drops()
{
    Faults faults;
    faults.dropEvery = 5;
    faults.closeAfter = 50;
    const RtspPeer peer(shortClip(), faults, RtspPeer::AsFastAsTaken);
    Client client;
    QVERIFY(client.open(peer) >= 0);
    while (client.read()) { }
    QCOMPARE(peer.packetsSent(), 40);
}

void tst_RtspPeer::cuts()
{
    Faults faults;
    faults.cutEvery = 5;
    faults.closeAfter = 200;
    const RtspPeer peer(shortClip(), faults, RtspPeer::AsFastAsTaken);
    Client client;
    QVERIFY(client.open(peer) >= 0);
    const QByteArrayList sent = clipPackets(shortClip(), MediaClip::Video);
    const QByteArrayList read = readPackets(client, AV_CODEC_ID_H264, 30);
    QVERIFY(read != sent);
}

void tst_RtspPeer::corrupts()
{
    Faults faults;
    faults.corruptEvery = 3;
    faults.closeAfter = 200;
    const auto readAll = [&faults] {
        const RtspPeer peer(shortClip(), faults, RtspPeer::AsFastAsTaken);
        Client client;
        client.open(peer);
        return readPackets(client, AV_CODEC_ID_H264, 1000);
    };
    const QByteArrayList read = readAll();
    QVERIFY(read.mid(0, 30) != clipPackets(shortClip(), MediaClip::Video));
    QCOMPARE(readAll(), read);
    faults.seed = 2;
    QVERIFY(readAll() != read);
}

void tst_RtspPeer::wrongParameterSets()
{
    Faults faults;
    faults.description = Faults::WrongParameterSets;
    const RtspPeer peer(shortClip(), faults, RtspPeer::AsFastAsTaken);
    Client client;
    QVERIFY(client.open(peer) >= 0);
    const auto sets = [](const AVCodecParameters *of) {
        return QByteArray(reinterpret_cast<const char *>(of->extradata), of->extradata_size);
    };
    const QByteArray right = sets(shortClip().parameters(MediaClip::Video));
    const QByteArray wrong = sets(client.context->streams[0]->codecpar);
    QVERIFY(!wrong.isEmpty());
    QVERIFY(wrong != right);
    const QByteArray someOfRight = right.mid(4, 16);
    const QByteArrayList sent = clipPackets(shortClip(), MediaClip::Video);
    const QByteArrayList read = readPackets(client, AV_CODEC_ID_H264, 10);
    QVERIFY(sent[0].contains(someOfRight));
    QVERIFY(!read[0].contains(someOfRight));
    QVERIFY(sent[0].endsWith(read[0]));
    QCOMPARE(read.mid(1), sent.mid(1, 9));
}

void tst_RtspPeer::silentForAWhile()
{
    RtspPeer peer(shortClip());
    Client client;
    QVERIFY(client.open(peer) >= 0);
    const QByteArrayList sent = clipPackets(shortClip(), MediaClip::Video);
    QByteArrayList read = readPackets(client, AV_CODEC_ID_H264, 3);
    peer.setSilent(true);
    while (const AVPacket *packet = client.read(0.5))
        read.append(bytesOf(packet));
    QCOMPARE(client.result, AVERROR_EXIT);
    peer.setSilent(false);
    read += readPackets(client, AV_CODEC_ID_H264, 5);
    QCOMPARE(read, sent.mid(0, read.size()));
}

void tst_RtspPeer::hangUp()
{
    RtspPeer peer(shortClip());
    Client first;
    QVERIFY(first.open(peer) >= 0);
    QVERIFY(first.read());
    peer.hangUp();
    while (first.read()) { }
    QVERIFY(first.result != AVERROR_EXIT);
    Client second;
    QVERIFY(second.open(peer) >= 0);
    QVERIFY(second.read());
}

QTEST_GUILESS_MAIN(tst_RtspPeer)
#include "tst_RtspPeer.moc"

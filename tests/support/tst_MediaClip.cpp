#include "MediaClip.h"

extern "C" {
#include <libavformat/avformat.h>
}

#include <QFileInfo>
#include <QImage>
#include <QtTest>

Q_DECLARE_METATYPE(MediaClip::Format)

// What other tests rely on in the clips that they play.
class tst_MediaClip : public QObject
{
    Q_OBJECT

private slots:
    void pictures_data();
    void pictures();
    void file_data();
    void file();
    void soundAlone();
    void append();
    void once();
    void numberOnScreen();
    void psnr();
};

namespace {

MediaClip::Format sized(AVCodecID video, int width, int height, AVPixelFormat pixels)
{
    MediaClip::Format format = MediaClip::Format::of(video, AV_CODEC_ID_NONE);
    format.width = width;
    format.height = height;
    format.pixels = pixels;
    format.pictures = 30;
    format.keyFrameDistance = 10;
    format.firstNumber = 1000;
    return format;
}

struct Counts {
    int video = 0;
    int keyFrames = 0;
    int audio = 0;
};

Counts countPackets(const MediaClip &clip)
{
    Counts counts;
    for (const MediaClip::Packet &packet : clip.packets()) {
        const bool video = packet->stream_index == MediaClip::Video;
        ++(video ? counts.video : counts.audio);
        counts.keyFrames += video && packet->flags & AV_PKT_FLAG_KEY ? 1 : 0;
    }
    return counts;
}

}

void tst_MediaClip::pictures_data()
{
    QTest::addColumn<MediaClip::Format>("format");
    QTest::newRow("H.264") << sized(AV_CODEC_ID_H264, 320, 240, AV_PIX_FMT_YUV420P);
    QTest::newRow("H.264, full range") << sized(AV_CODEC_ID_H264, 320, 240, AV_PIX_FMT_YUVJ420P);
    QTest::newRow("H.264, small") << sized(AV_CODEC_ID_H264, 66, 50, AV_PIX_FMT_YUV420P);
    QTest::newRow("H.265") << sized(AV_CODEC_ID_HEVC, 320, 240, AV_PIX_FMT_YUV420P);
}

void tst_MediaClip::pictures()
{
    QFETCH(MediaClip::Format, format);
    const MediaClip clip(format);
    QVERIFY(clip.hasVideo());
    QVERIFY(!clip.hasAudio());
    QCOMPARE(clip.seconds(), 1.2);
    const Counts counts = countPackets(clip);
    QCOMPARE(counts.video, format.pictures);
    QCOMPARE(counts.keyFrames, 3);

    const auto decoded = clip.decoded();
    QCOMPARE(int(decoded.size()), format.pictures);
    for (int i = 0; i < format.pictures; ++i) {
        const AVFrame *picture = decoded[size_t(i)].get();
        const int number = format.firstNumber + i;
        QCOMPARE(picture->format, int(format.pixels));
        QCOMPARE(MediaClip::number(picture), number);
        QVERIFY(picture->pict_type != AV_PICTURE_TYPE_B);
        const auto drawn = MediaClip::card(number, format.width, format.height, format.pixels);
        const double quality = MediaClip::psnr(picture, drawn.get());
        QVERIFY2(quality >= 38.0, qPrintable(QString::number(quality)));
    }
}

void tst_MediaClip::file_data()
{
    QTest::addColumn<int>("video");
    QTest::addColumn<int>("audio");
    QTest::addColumn<QString>("suffix");
    const QPair<AVCodecID, const char *> videos[] = {
        {AV_CODEC_ID_H264, "H.264"}, {AV_CODEC_ID_HEVC, "H.265"}, {AV_CODEC_ID_NONE, "none"}};
    for (const auto &video : videos) {
        for (const char *suffix : {"mp4", "mkv", "ts"}) {
            QTest::addRow("%s, AAC, %s", video.second, suffix)
                << int(video.first) << int(AV_CODEC_ID_AAC) << suffix;
        }
        QTest::addRow("%s, PCMA, mkv", video.second)
            << int(video.first) << int(AV_CODEC_ID_PCM_ALAW) << "mkv";
    }
    QTest::newRow("H.264, none, mp4") << int(AV_CODEC_ID_H264) << int(AV_CODEC_ID_NONE) << "mp4";
}

void tst_MediaClip::file()
{
    QFETCH(int, video);
    QFETCH(int, audio);
    QFETCH(QString, suffix);
    const MediaClip &clip =
        MediaClip::of(MediaClip::Format::of(AVCodecID(video), AVCodecID(audio)));
    const QString path = clip.file(suffix);
    QCOMPARE(QFileInfo(path).suffix(), suffix);
    QCOMPARE(clip.file(suffix), path);

    AVFormatContext *input = nullptr;
    QVERIFY(avformat_open_input(&input, path.toUtf8(), nullptr, nullptr) >= 0);
    QVERIFY(avformat_find_stream_info(input, nullptr) >= 0);
    QMap<int, int> found; // packets by codec
    AVPacket *packet = av_packet_alloc();
    while (av_read_frame(input, packet) >= 0) {
        ++found[input->streams[packet->stream_index]->codecpar->codec_id];
        av_packet_unref(packet);
    }
    av_packet_free(&packet);
    avformat_close_input(&input);

    const Counts counts = countPackets(clip);
    QMap<int, int> expected;
    if (video != AV_CODEC_ID_NONE)
        expected[video] = counts.video;
    if (audio != AV_CODEC_ID_NONE)
        expected[audio] = counts.audio;
    QCOMPARE(found, expected);
}

void tst_MediaClip::soundAlone()
{
    const MediaClip &clip =
        MediaClip::of(MediaClip::Format::of(AV_CODEC_ID_NONE, AV_CODEC_ID_PCM_ALAW));
    QVERIFY(!clip.hasVideo());
    QVERIFY(clip.decoded().empty());
    QCOMPARE(clip.parameters(MediaClip::Audio)->sample_rate, 8000);
    int bytes = 0;
    for (const MediaClip::Packet &packet : clip.packets())
        bytes += packet->size;
    QCOMPARE(bytes, 2 * 8000);
}

void tst_MediaClip::append()
{
    MediaClip clip(sized(AV_CODEC_ID_H264, 320, 240, AV_PIX_FMT_YUV420P));
    clip.append(MediaClip(sized(AV_CODEC_ID_H264, 176, 144, AV_PIX_FMT_YUV420P)));
    QCOMPARE(clip.seconds(), 2.4);
    const auto decoded = clip.decoded();
    QCOMPARE(int(decoded.size()), 60);
    QCOMPARE(decoded[29]->width, 320);
    QCOMPARE(decoded[30]->width, 176);
    QCOMPARE(MediaClip::number(decoded[59].get()), 1029);
    QCOMPARE(clip.packets()[30]->pts, int64_t(108000));
    QVERIFY(QFileInfo(clip.file("ts")).size() > 0);
}

void tst_MediaClip::once()
{
    const MediaClip::Format format = sized(AV_CODEC_ID_H264, 66, 50, AV_PIX_FMT_YUV420P);
    MediaClip::Format other = format;
    other.tone = 1000.0;
    QCOMPARE(&MediaClip::of(format), &MediaClip::of(format));
    QVERIFY(&MediaClip::of(format) != &MediaClip::of(other));
}

void tst_MediaClip::numberOnScreen()
{
    const auto card = MediaClip::card(0xA5C3, 321, 241, AV_PIX_FMT_YUV420P);
    QCOMPARE(MediaClip::number(card.get()), 0xA5C3);
    const QImage grey(
        card->data[0], card->width, card->height, card->linesize[0], QImage::Format_Grayscale8);
    QCOMPARE(MediaClip::number(grey), 0xA5C3);
    QCOMPARE(MediaClip::number(grey.scaled(800, 600)), 0xA5C3);
}

void tst_MediaClip::psnr()
{
    const auto card = [](int number, int width) {
        return MediaClip::card(number, width, 240, AV_PIX_FMT_YUV420P);
    };
    QCOMPARE(MediaClip::psnr(card(1, 320).get(), card(1, 320).get()), 100.0);
    QCOMPARE(MediaClip::psnr(card(1, 320).get(), card(1, 322).get()), 0.0);
    // The spot moves on, and the number with it.
    QVERIFY(MediaClip::psnr(card(7, 320).get(), card(8, 320).get()) < 35.0);
}

QTEST_GUILESS_MAIN(tst_MediaClip)
#include "tst_MediaClip.moc"

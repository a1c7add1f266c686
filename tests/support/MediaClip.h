#pragma once

extern "C" {
#include <libavcodec/avcodec.h>
}

#include <QString>

#include <memory>
#include <vector>

class QImage;

// A small clip, encoded when a test asks for it: a smooth test card with a moving spot and its own
// number in a strip of 16 light and dark cells along the top, and a sine tone. One slice a picture,
// no B frames, closed groups of pictures, parameter sets before every key frame.
// Threads: of() and file() on one thread; a finished clip may be read by any.
// Errors: none; what can't be made ends the test program with a message.
class MediaClip
{
public:
    enum Stream { Video, Audio }; // stream_index of the packets
    struct Format {
        AVCodecID video = AV_CODEC_ID_H264; // or HEVC; AV_CODEC_ID_NONE is a clip without picture
        AVCodecID audio = AV_CODEC_ID_AAC; // or PCM_ALAW (8000 Hz, 1 channel); NONE
        int width = 320; // even
        int height = 240; // even
        int fps = 25;
        int pictures = 50; // at fps, and sound as long as they
        int keyFrameDistance = 25; // pictures
        AVPixelFormat pixels = AV_PIX_FMT_YUV420P; // or YUVJ420P
        int firstNumber = 0; // of the pictures
        int sampleRate = 48000;
        int channels = 1;
        double tone = 440.0; // hertz

        static Format of(AVCodecID video, AVCodecID audio);
        bool operator<(const Format &other) const;
    };
    using Packet = std::shared_ptr<const AVPacket>;
    using Picture = std::shared_ptr<const AVFrame>;

    explicit MediaClip(const Format &format);
    // The same, encoded once in a run.
    static const MediaClip &of(const Format &format);

    // The other clip follows this one, as when a camera changes its picture size. Both have the
    // same codecs.
    void append(const MediaClip &other);

    bool hasVideo() const { return video != nullptr; }
    bool hasAudio() const { return audio != nullptr; }
    double seconds() const { return length; }
    // Of both streams, ordered by time; `time_base` of a packet holds for its times. H.264 and
    // H.265 are in Annex B form.
    const std::vector<Packet> &packets() const { return all; }
    // Null where there is no such stream. Of the first clip when others were appended.
    const AVCodecParameters *parameters(Stream stream) const;
    // The pictures as a decoder gives them, in order.
    std::vector<Picture> decoded() const;
    // Path of the clip as a file "mp4", "mkv" or "ts", written once and gone after the run.
    // PCM_ALAW goes into "mkv" only.
    QString file(const QString &suffix) const;

    // The card as drawn, before it is encoded. Any size.
    static Picture card(int number, int width, int height, AVPixelFormat pixels);
    // The number in a picture, from its luma plane or from the screen.
    static int number(const AVFrame *picture);
    static int number(const QImage &image);
    // Peak signal to noise over all three 8-bit planes of 4:2:0, in dB: 100 when equal, 0 when the
    // sizes differ.
    static double psnr(const AVFrame *left, const AVFrame *right);

private:
    using Parameters = std::shared_ptr<const AVCodecParameters>;

    void encodeVideo(const Format &format);
    void encodeAudio(const Format &format);
    void order();
    void write(const QString &path) const;

    Parameters video;
    Parameters audio;
    std::vector<Packet> all;
    double length;
    mutable std::vector<QString> files;
};

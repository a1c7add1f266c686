#include "StreamViewer.h"

#include "FleetTimeCode.h"

#include <QDateTime>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
}

#include <memory>
#include <vector>

namespace {

struct Free {
    void operator()(AVCodecContext *context) const { avcodec_free_context(&context); }
    void operator()(AVFrame *frame) const { av_frame_free(&frame); }
    void operator()(AVPacket *packet) const { av_packet_free(&packet); }
};

using FramePointer = std::unique_ptr<AVFrame, Free>;
using CodecPointer = std::unique_ptr<AVCodecContext, Free>;

constexpr int textStep = 4; // pixels
constexpr int mostSamples = 150000;

CodecPointer open(const AVStream *stream)
{
    const AVCodec *codec = avcodec_find_decoder(stream->codecpar->codec_id);
    CodecPointer context(avcodec_alloc_context3(codec));
    avcodec_parameters_to_context(context.get(), stream->codecpar);
    context->thread_count = 1;
    context->flags |= AV_CODEC_FLAG_LOW_DELAY;
    if (avcodec_open2(context.get(), codec, nullptr) < 0)
        qFatal("no decoder for %s", avcodec_get_name(stream->codecpar->codec_id));
    return context;
}

StreamViewer::Picture pictureOf(const AVFrame &frame)
{
    return {QDateTime::currentMSecsSinceEpoch(),
        FleetTimeCode::read(frame.data[0], frame.linesize[0], frame.width, frame.height),
        QSize(frame.width, frame.height)};
}

QByteArray textOf(const AVFrame &frame)
{
    QByteArray text;
    for (int y = frame.height * 2 / 3; y < frame.height; y += textStep) {
        for (int x = 0; x < frame.width; x += textStep)
            text.append(char(frame.data[0][y * frame.linesize[0] + x]));
    }
    return text;
}

void addSamples(StreamViewer::Notes &notes, const AVFrame &frame)
{
    for (int i = 0; i < frame.nb_samples && notes.samples.size() < mostSamples; ++i) {
        notes.samples.append(frame.format == AV_SAMPLE_FMT_S16
                ? reinterpret_cast<const int16_t *>(frame.data[0])[i] / 32768.0f
                : reinterpret_cast<const float *>(frame.data[0])[i]);
    }
}

}

StreamViewer::StreamViewer(const QString &url, const char *transport) :
    url(url.toLatin1()),
    transport(transport),
    stopping(false),
    closing(false)
{
    av_log_set_level(AV_LOG_QUIET);
    start();
}

StreamViewer::~StreamViewer()
{
    stop();
}

void StreamViewer::stop()
{
    stopping = true;
    wait();
}

StreamViewer::Notes StreamViewer::notes() const
{
    const QMutexLocker lock(&mutex);
    return noted;
}

template <typename Change> void StreamViewer::change(const Change &make)
{
    const QMutexLocker lock(&mutex);
    make(noted);
}

void StreamViewer::run()
{
    AVFormatContext *format = avformat_alloc_context();
    format->flags |= AVFMT_FLAG_NOBUFFER;
    format->interrupt_callback.opaque = this;
    format->interrupt_callback.callback = [](void *viewer) {
        const auto *self = static_cast<StreamViewer *>(viewer);
        return int(self->stopping && !self->closing);
    };
    AVDictionary *options = nullptr;
    av_dict_set(&options, "rtsp_transport", transport.constData(), 0);
    const int error = avformat_open_input(&format, url.constData(), nullptr, &options);
    av_dict_free(&options);
    change([=](Notes &notes) {
        notes.opened = error >= 0;
        notes.openedAt = QDateTime::currentMSecsSinceEpoch();
        notes.error = error;
        notes.ended = error < 0;
    });
    if (error >= 0) {
        watch(format);
        closing = true;
        avformat_close_input(&format);
    }
}

void StreamViewer::watch(AVFormatContext *format)
{
    std::vector<CodecPointer> codecs;
    for (unsigned i = 0; i < format->nb_streams; ++i) {
        const AVCodecParameters *parameters = format->streams[i]->codecpar;
        const QByteArray name = avcodec_get_name(parameters->codec_id);
        codecs.push_back(open(format->streams[i]));
        change([&](Notes &notes) {
            if (parameters->codec_type == AVMEDIA_TYPE_VIDEO) {
                notes.videoCodec = name;
                notes.parameterBytes = parameters->extradata_size;
            } else {
                notes.audioCodec = name;
                notes.samplesPerSecond = parameters->sample_rate;
            }
        });
    }
    const std::unique_ptr<AVPacket, Free> packet(av_packet_alloc());
    const FramePointer frame(av_frame_alloc());
    int error = 0;
    // What is read once it stops may be half a picture.
    while ((error = av_read_frame(format, packet.get())) >= 0 && !stopping) {
        AVCodecContext *codec = codecs[size_t(packet->stream_index)].get();
        const bool isVideo = codec->codec_type == AVMEDIA_TYPE_VIDEO;
        const bool isKey = packet->flags & AV_PKT_FLAG_KEY;
        const bool bad = avcodec_send_packet(codec, packet.get()) < 0;
        av_packet_unref(packet.get());
        change([=](Notes &notes) {
            ++notes.packets;
            notes.lastPacketAt = QDateTime::currentMSecsSinceEpoch();
            notes.decodeErrors += bad;
            if (isVideo)
                notes.isKey.append(isKey);
        });
        while (avcodec_receive_frame(codec, frame.get()) >= 0) {
            change([&](Notes &notes) {
                if (isVideo) {
                    notes.pictures.append(pictureOf(*frame));
                    notes.text = textOf(*frame);
                } else {
                    addSamples(notes, *frame);
                }
            });
        }
    }
    change([=](Notes &notes) {
        notes.error = error;
        notes.ended = !stopping;
    });
}

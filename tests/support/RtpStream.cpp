#include "RtpStream.h"

extern "C" {
#include <libavformat/avformat.h>
#include <libavutil/opt.h>
}

#include <cmath>

namespace {

const int packetSize = 1400;
const int firstDynamicPayload = 96;

void freeMuxer(AVFormatContext *context)
{
    if (context->pb) {
        av_freep(&context->pb->buffer);
        avio_context_free(&context->pb);
    }
    avformat_free_context(context);
}

// It writes nowhere yet.
std::shared_ptr<AVFormatContext> newMuxer(const AVCodecParameters *parameters, int index)
{
    AVFormatContext *context = nullptr;
    if (avformat_alloc_output_context2(&context, nullptr, "rtp", "rtp://0.0.0.0") < 0)
        qFatal("no RTP muxer");
    const AVStream *stream = avformat_new_stream(context, nullptr);
    avcodec_parameters_copy(stream->codecpar, parameters);
    if (parameters->codec_id != AV_CODEC_ID_PCM_ALAW)
        av_opt_set_int(context->priv_data, "payload_type", firstDynamicPayload + index, 0);
    return {context, freeMuxer};
}

}

RtpStream::RtpStream(const AVCodecParameters *parameters, int index, bool reports) :
    context(newMuxer(parameters, index))
{
    auto *buffer = static_cast<uint8_t *>(av_malloc(packetSize));
    context->pb = avio_alloc_context(buffer, packetSize, 1, this, nullptr, take, nullptr);
    context->pb->max_packet_size = packetSize;
    if (!reports)
        av_opt_set(context->priv_data, "rtpflags", "skip_rtcp", 0);
    if (avformat_write_header(context.get(), nullptr) < 0)
        qFatal("no RTP of this codec");
}

RtpStream::~RtpStream()
{
    av_write_trailer(context.get()); // frees what the header has made
}

// The packetiser hands over one packet at a time.
int RtpStream::take(void *opaque, uint8_t *data, int size)
{
    auto *self = static_cast<RtpStream *>(opaque);
    self->made.append(QByteArray(reinterpret_cast<const char *>(data), size));
    return size;
}

QByteArrayList RtpStream::packets(const AVPacket *packet, double shift)
{
    made.clear();
    AVPacket *copy = av_packet_clone(packet);
    const AVRational timeBase = context->streams[0]->time_base;
    av_packet_rescale_ts(copy, packet->time_base, timeBase);
    copy->pts += std::llround(shift / av_q2d(timeBase));
    copy->dts = copy->pts;
    copy->stream_index = 0;
    av_write_frame(context.get(), copy);
    av_packet_free(&copy);
    return made;
}

bool RtpStream::isRtcp(const QByteArray &packet)
{
    const auto type = uint8_t(packet[1]);
    return type >= 192 && type < 224;
}

QByteArray RtpStream::description(const std::vector<const AVCodecParameters *> &streams)
{
    std::vector<std::shared_ptr<AVFormatContext>> muxers;
    std::vector<AVFormatContext *> plain;
    for (const AVCodecParameters *parameters : streams) {
        muxers.push_back(newMuxer(parameters, int(muxers.size())));
        plain.push_back(muxers.back().get());
    }
    char text[8192] = {};
    if (av_sdp_create(plain.data(), int(plain.size()), text, sizeof text) < 0)
        qFatal("av_sdp_create failed");
    return text;
}

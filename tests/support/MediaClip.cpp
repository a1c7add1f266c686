#include "MediaClip.h"

extern "C" {
#include <libavformat/avformat.h>
#include <libavutil/opt.h>
}

#include <QCoreApplication>
#include <QImage>
#include <QTemporaryDir>

#include <algorithm>
#include <cmath>
#include <functional>
#include <map>
#include <tuple>

namespace {

const double pi = 3.14159265358979;
const int numberBits = 16;
const AVRational videoTimeBase = {1, 90000};

int must(int result, const char *what)
{
    if (result < 0) {
        char text[AV_ERROR_MAX_STRING_SIZE] = {};
        qFatal("%s: %s", what, av_make_error_string(text, sizeof text, result));
    }
    return result;
}

template <class T> T *must(T *pointer, const char *what)
{
    if (!pointer)
        qFatal("%s failed", what);
    return pointer;
}

std::shared_ptr<AVFrame> newFrame()
{
    return {av_frame_alloc(), [](AVFrame *frame) { av_frame_free(&frame); }};
}

std::shared_ptr<AVPacket> newPacket()
{
    return {av_packet_alloc(), [](AVPacket *packet) { av_packet_free(&packet); }};
}

std::shared_ptr<AVPacket> copyOf(const AVPacket *source)
{
    const auto packet = newPacket();
    must(av_packet_ref(packet.get(), source), "av_packet_ref");
    packet->time_base = source->time_base;
    return packet;
}

struct FreeContext {
    void operator()(AVCodecContext *context) const { avcodec_free_context(&context); }
};
using Context = std::unique_ptr<AVCodecContext, FreeContext>;

Context newEncoder(const char *name)
{
    const AVCodec *codec = must(avcodec_find_encoder_by_name(name), name);
    Context context(avcodec_alloc_context3(codec));
    context->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    context->thread_count = 1;
    context->log_level_offset = AV_LOG_INFO - AV_LOG_ERROR; // its figures aren't wanted
    return context;
}

std::shared_ptr<const AVCodecParameters> parametersOf(const AVCodecContext *context)
{
    std::shared_ptr<AVCodecParameters> parameters(avcodec_parameters_alloc(),
        [](AVCodecParameters *freed) { avcodec_parameters_free(&freed); });
    must(avcodec_parameters_from_context(parameters.get(), context), "codec parameters");
    return parameters;
}

// Feeds a frame, or null at the end, and takes the packets that are ready.
void encode(AVCodecContext *context, const AVFrame *frame, AVRational timeBase,
    const std::function<void(std::shared_ptr<AVPacket>)> &take)
{
    must(avcodec_send_frame(context, frame), "avcodec_send_frame");
    for (;;) {
        const auto packet = newPacket();
        const int result = avcodec_receive_packet(context, packet.get());
        if (result == AVERROR(EAGAIN) || result == AVERROR_EOF)
            return;
        must(result, "avcodec_receive_packet");
        av_packet_rescale_ts(packet.get(), context->time_base, timeBase);
        packet->time_base = timeBase;
        take(packet);
    }
}

// Some decoders take the parameter sets from the stream alone.
void prepend(AVPacket *packet, const uint8_t *data, int size)
{
    const int old = packet->size;
    must(av_grow_packet(packet, size), "av_grow_packet");
    memmove(packet->data + size, packet->data, size_t(old));
    memcpy(packet->data, data, size_t(size));
}

void storeSample(AVFrame *frame, int channel, int index, double value)
{
    if (frame->format == AV_SAMPLE_FMT_FLTP)
        reinterpret_cast<float *>(frame->data[channel])[index] = float(value);
    else
        reinterpret_cast<int16_t *>(
            frame->data[0])[index * frame->ch_layout.nb_channels + channel] =
            int16_t(std::lround(value * 32767));
}

double secondsOf(const AVPacket *packet)
{
    return double(packet->dts) * av_q2d(packet->time_base);
}

// Height of the strip with the number.
int stripHeight(int height)
{
    return std::max(8, height / 12);
}

int readNumber(int width, int height, const std::function<int(int, int)> &luma)
{
    int number = 0;
    for (int bit = 0; bit < numberBits; ++bit) {
        const int x = (2 * bit + 1) * width / (2 * numberBits);
        number = 2 * number + (luma(x, stripHeight(height) / 2) > 127 ? 1 : 0);
    }
    return number;
}

uint8_t lumaAt(int x, int y, int number, int width, int height)
{
    if (y < stripHeight(height)) {
        const int bit = numberBits - 1 - x * numberBits / width;
        return (number >> bit) & 1 ? 220 : 32;
    }
    const double spotX = width * (0.5 + 0.3 * std::cos(number * 0.12));
    const double spotY = height * (0.55 + 0.3 * std::sin(number * 0.12));
    const double distance = std::hypot(x - spotX, y - spotY) / (0.15 * height);
    const double ground = 110 + 40 * std::sin(2 * pi * x / width) + 40.0 * y / height;
    return uint8_t(ground + 50 * std::exp(-distance * distance));
}

QString clipFolder()
{
    static const QTemporaryDir folder(QCoreApplication::applicationDirPath() + "/clips-XXXXXX");
    return folder.path();
}

}

MediaClip::Format MediaClip::Format::of(AVCodecID video, AVCodecID audio)
{
    Format format;
    format.video = video;
    format.audio = audio;
    if (audio == AV_CODEC_ID_PCM_ALAW)
        format.sampleRate = 8000;
    return format;
}

bool MediaClip::Format::operator<(const Format &other) const
{
    const auto fields = [](const Format &f) {
        return std::make_tuple(f.video, f.audio, f.width, f.height, f.fps, f.pictures,
            f.keyFrameDistance, f.pixels, f.firstNumber, f.sampleRate, f.channels, f.tone);
    };
    return fields(*this) < fields(other);
}

MediaClip::MediaClip(const Format &format) : length(double(format.pictures) / format.fps)
{
    if (format.video != AV_CODEC_ID_NONE)
        encodeVideo(format);
    if (format.audio != AV_CODEC_ID_NONE)
        encodeAudio(format);
    order();
}

const MediaClip &MediaClip::of(const Format &format)
{
    static std::map<Format, MediaClip> clips;
    const auto found = clips.find(format);
    return found != clips.end() ? found->second : clips.emplace(format, format).first->second;
}

void MediaClip::encodeVideo(const Format &format)
{
    const bool hevc = format.video == AV_CODEC_ID_HEVC;
    const Context context = newEncoder(hevc ? "libx265" : "libx264");
    context->width = format.width;
    context->height = format.height;
    context->pix_fmt = format.pixels;
    context->time_base = {1, format.fps};
    context->framerate = {format.fps, 1};
    context->gop_size = format.keyFrameDistance;
    context->keyint_min = format.keyFrameDistance;
    context->max_b_frames = 0;
    const std::string groups = "keyint=" + std::to_string(format.keyFrameDistance) + ":min-keyint="
        + std::to_string(format.keyFrameDistance) + ":scenecut=0:bframes=0:rc-lookahead=0";
    const std::string parameters = groups
        + (hevc ? ":log-level=error:pools=none:frame-threads=1:open-gop=0"
                : ":sync-lookahead=0:sliced-threads=0:slices=1");
    av_opt_set(context->priv_data, "preset", hevc ? "ultrafast" : "veryfast", 0);
    av_opt_set(context->priv_data, "crf", "14", 0);
    av_opt_set(context->priv_data, hevc ? "x265-params" : "x264-params", parameters.c_str(), 0);
    must(avcodec_open2(context.get(), nullptr, nullptr), "opening the video encoder");
    video = parametersOf(context.get());

    const auto take = [&](const std::shared_ptr<AVPacket> &packet) {
        packet->stream_index = Video;
        packet->duration = videoTimeBase.den / format.fps;
        if (packet->flags & AV_PKT_FLAG_KEY)
            prepend(packet.get(), context->extradata, context->extradata_size);
        all.push_back(packet);
    };
    for (int i = 0; i < format.pictures; ++i) {
        const Picture drawn =
            card(format.firstNumber + i, format.width, format.height, format.pixels);
        const auto frame = newFrame();
        must(av_frame_ref(frame.get(), drawn.get()), "av_frame_ref");
        frame->pts = i;
        encode(context.get(), frame.get(), videoTimeBase, take);
    }
    encode(context.get(), nullptr, videoTimeBase, take);
}

void MediaClip::encodeAudio(const Format &format)
{
    const Context context = newEncoder(format.audio == AV_CODEC_ID_PCM_ALAW ? "pcm_alaw" : "aac");
    context->sample_fmt = context->codec->sample_fmts[0];
    context->sample_rate = format.sampleRate;
    av_channel_layout_default(&context->ch_layout, format.channels);
    context->time_base = {1, format.sampleRate};
    context->bit_rate = 64000;
    must(avcodec_open2(context.get(), nullptr, nullptr), "opening the audio encoder");
    audio = parametersOf(context.get());

    const auto take = [&](const std::shared_ptr<AVPacket> &packet) {
        packet->stream_index = Audio;
        all.push_back(packet);
    };
    const int block = context->frame_size > 0 ? context->frame_size : format.sampleRate / 50;
    const int samples = int(length * format.sampleRate);
    for (int start = 0; start + block <= samples; start += block) {
        const auto frame = newFrame();
        frame->format = context->sample_fmt;
        frame->sample_rate = format.sampleRate;
        av_channel_layout_default(&frame->ch_layout, format.channels);
        frame->nb_samples = block;
        frame->pts = start;
        must(av_frame_get_buffer(frame.get(), 0), "av_frame_get_buffer");
        for (int i = 0; i < block; ++i) {
            const double phase = 2 * pi * format.tone * (start + i) / format.sampleRate;
            for (int channel = 0; channel < format.channels; ++channel)
                storeSample(frame.get(), channel, i, 0.5 * std::sin(phase));
        }
        encode(context.get(), frame.get(), context->time_base, take);
    }
    encode(context.get(), nullptr, context->time_base, take);
}

void MediaClip::order()
{
    std::stable_sort(all.begin(), all.end(), [](const Packet &left, const Packet &right) {
        return secondsOf(left.get()) < secondsOf(right.get());
    });
}

void MediaClip::append(const MediaClip &other)
{
    for (const Packet &source : other.all) {
        const auto packet = copyOf(source.get());
        const auto shift = std::llround(length / av_q2d(packet->time_base));
        packet->pts += shift;
        packet->dts += shift;
        all.push_back(packet);
    }
    length += other.length;
    files.clear();
    order();
}

const AVCodecParameters *MediaClip::parameters(Stream stream) const
{
    return stream == Video ? video.get() : audio.get();
}

std::vector<MediaClip::Picture> MediaClip::decoded() const
{
    std::vector<Picture> pictures;
    if (!video)
        return pictures;
    const Context context(
        avcodec_alloc_context3(must(avcodec_find_decoder(video->codec_id), "a decoder")));
    must(avcodec_parameters_to_context(context.get(), video.get()), "codec parameters");
    must(avcodec_open2(context.get(), nullptr, nullptr), "opening the decoder");
    const auto decode = [&](const AVPacket *packet) {
        must(avcodec_send_packet(context.get(), packet), "avcodec_send_packet");
        for (;;) {
            const auto frame = newFrame();
            if (avcodec_receive_frame(context.get(), frame.get()) < 0)
                return;
            pictures.push_back(frame);
        }
    };
    for (const Packet &packet : all) {
        if (packet->stream_index == Video)
            decode(packet.get());
    }
    decode(nullptr);
    return pictures;
}

QString MediaClip::file(const QString &suffix) const
{
    static int count = 0;
    for (const QString &path : files) {
        if (path.endsWith("." + suffix))
            return path;
    }
    const QString path = QString("%1/%2.%3").arg(clipFolder()).arg(++count).arg(suffix);
    write(path);
    files.push_back(path);
    return path;
}

void MediaClip::write(const QString &path) const
{
    const QByteArray name = path.toUtf8();
    AVFormatContext *output = nullptr;
    must(avformat_alloc_output_context2(&output, nullptr, nullptr, name), "an output format");
    AVStream *streams[] = {nullptr, nullptr};
    for (const Stream stream : {Video, Audio}) {
        if (!parameters(stream))
            continue;
        streams[stream] = must(avformat_new_stream(output, nullptr), "avformat_new_stream");
        must(avcodec_parameters_copy(streams[stream]->codecpar, parameters(stream)),
            "codec parameters");
    }
    must(avio_open(&output->pb, name, AVIO_FLAG_WRITE), name);
    must(avformat_write_header(output, nullptr), "avformat_write_header");
    for (const Packet &source : all) {
        const auto packet = copyOf(source.get());
        const AVStream *stream = streams[packet->stream_index];
        av_packet_rescale_ts(packet.get(), packet->time_base, stream->time_base);
        packet->stream_index = stream->index;
        must(av_interleaved_write_frame(output, packet.get()), "av_interleaved_write_frame");
    }
    must(av_write_trailer(output), "av_write_trailer");
    avio_closep(&output->pb);
    avformat_free_context(output);
}

MediaClip::Picture MediaClip::card(int number, int width, int height, AVPixelFormat pixels)
{
    const auto frame = newFrame();
    frame->format = pixels;
    frame->width = width;
    frame->height = height;
    must(av_frame_get_buffer(frame.get(), 0), "av_frame_get_buffer");
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x)
            frame->data[0][y * frame->linesize[0] + x] = lumaAt(x, y, number, width, height);
    }
    const int chromaWidth = (width + 1) / 2;
    const int chromaHeight = (height + 1) / 2;
    for (int y = 0; y < chromaHeight; ++y) {
        for (int x = 0; x < chromaWidth; ++x) {
            frame->data[1][y * frame->linesize[1] + x] = uint8_t(78 + 100 * x / chromaWidth);
            frame->data[2][y * frame->linesize[2] + x] = uint8_t(78 + 100 * y / chromaHeight);
        }
    }
    return frame;
}

int MediaClip::number(const AVFrame *picture)
{
    return readNumber(picture->width, picture->height,
        [picture](int x, int y) { return picture->data[0][y * picture->linesize[0] + x]; });
}

int MediaClip::number(const QImage &image)
{
    return readNumber(
        image.width(), image.height(), [&image](int x, int y) { return qGray(image.pixel(x, y)); });
}

double MediaClip::psnr(const AVFrame *left, const AVFrame *right)
{
    if (left->width != right->width || left->height != right->height)
        return 0.0;
    double sum = 0.0;
    int samples = 0;
    for (int plane = 0; plane < 3; ++plane) {
        const int width = plane ? (left->width + 1) / 2 : left->width;
        const int height = plane ? (left->height + 1) / 2 : left->height;
        for (int y = 0; y < height; ++y) {
            const uint8_t *leftLine = left->data[plane] + y * left->linesize[plane];
            const uint8_t *rightLine = right->data[plane] + y * right->linesize[plane];
            for (int x = 0; x < width; ++x)
                sum += (leftLine[x] - rightLine[x]) * (leftLine[x] - rightLine[x]);
        }
        samples += width * height;
    }
    return sum == 0.0 ? 100.0 : 10 * std::log10(255.0 * 255.0 * samples / sum);
}

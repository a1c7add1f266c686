#include "ZRPcmPlayer.h"

#include <QAudioDeviceInfo>
#include <QAudioOutput>
#include <QIODevice>
#include <QThread>

#include <algorithm>
#include <cstdlib>

extern "C" {
#include <libavutil/channel_layout.h>
#include <libavutil/fifo.h>
#include <libavutil/frame.h>
#include <libswresample/swresample.h>
}

namespace {

constexpr int drainBytes = 8192; // the FIFO is played in blocks of this size

int64_t layoutOf(int channels)
{
    return channels == 1 ? AV_CH_LAYOUT_MONO : AV_CH_LAYOUT_STEREO;
}

AVSampleFormat sampleFormatOf(const QAudioFormat &format)
{
    switch (format.sampleSize()) {
    case 8:
        return AV_SAMPLE_FMT_U8;
    case 16:
        return AV_SAMPLE_FMT_S16;
    case 32:
        return format.sampleType() == QAudioFormat::Float ? AV_SAMPLE_FMT_FLT : AV_SAMPLE_FMT_S32;
    case 64:
        return AV_SAMPLE_FMT_DBL;
    default:
        return AV_SAMPLE_FMT_NONE;
    }
}

QAudioFormat deviceFormat(const QAudioDeviceInfo &info)
{
    QAudioFormat format = info.preferredFormat();
    const int size = format.sampleSize();
    if (size != 0 && size != 8 && size != 64)
        format.setSampleSize(16);
    const QAudioDeviceInfo device = QAudioDeviceInfo::defaultOutputDevice();
    if (device.isFormatSupported(format))
        return format;
    qDebug("format not support, reformat");
    return device.nearestFormat(format);
}

} // namespace

void ZRAudioConverter::createBuffer(int samples)
{
    std::free(buffer);
    buffer = nullptr;
    av_fifo_freep(&fifo);
    bufferSamples = samples;
    bytesPerSample = av_get_bytes_per_sample(static_cast<AVSampleFormat>(targetFormat));
    if (samples <= 0)
        return;
    const auto size = static_cast<unsigned>(targetChannels * bytesPerSample * samples);
    buffer = static_cast<uint8_t *>(std::malloc(size));
    fifo = av_fifo_alloc(4 * size);
}

void ZRAudioConverter::convert(const AVFrame *frame)
{
    const int rate = frame->sample_rate;
    const int channels = frame->channels;
    const int format = frame->format;
    const int64_t layout = layoutOf(channels); // the frame's own layout is not read
    const bool asTarget = rate == targetRate && channels == targetChannels && format == targetFormat
        && layout == targetLayout;
    if (asTarget && context) {
        av_fifo_generic_write(fifo, frame->data[0], frame->nb_samples * bytesPerSample, nullptr);
    } else if (rate != sourceRate || channels != sourceChannels || format != sourceFormat
        || layout != sourceLayout) {
        _createSwrContext(rate, layout, channels, format);
    }
    if (!context)
        return;

    int samples = swr_convert(context, &buffer, bufferSamples,
        const_cast<const uint8_t **>(frame->data), frame->nb_samples);
    while (samples > 0) {
        av_fifo_generic_write(fifo, buffer, samples * bytesPerSample * targetChannels, nullptr);
        samples = swr_convert(context, &buffer, bufferSamples, nullptr, 0);
    }
}

void ZRAudioConverter::closeContext()
{
    if (context)
        swr_close(context);
    swr_free(&context);
}

void ZRAudioConverter::_createSwrContext(int64_t rate, int64_t layout, int channels, int format)
{
    sourceRate = rate;
    sourceLayout = layout;
    sourceChannels = channels;
    sourceFormat = format;
    closeContext();
    context = swr_alloc_set_opts(nullptr, targetLayout, static_cast<AVSampleFormat>(targetFormat),
        targetRate, layout, static_cast<AVSampleFormat>(format), static_cast<int>(rate), 0,
        nullptr);
    qDebug("src format = %d, dst format = %d", format, targetFormat);
    if (!context || swr_init(context) < 0)
        closeContext();
}

ZRPcmPlayer::ZRPcmPlayer() = default;

ZRPcmPlayer::~ZRPcmPlayer()
{
    delete output;
    if (!converter)
        return;
    converter->createBuffer(0);
    converter->closeContext();
    delete converter;
}

int ZRPcmPlayer::start()
{
    const QAudioDeviceInfo info = QAudioDeviceInfo::defaultOutputDevice();
    if (!info.isNull()) {
        format = deviceFormat(info);
        output = new QAudioOutput(format, nullptr);
        device = output->start();
    }
    const int result = device ? 0 : -1;
    stopped = result < 0;
    aborted = false;
    if (result < 0)
        qDebug("ZRPcmPlayer start 1");
    return result;
}

void ZRPcmPlayer::stop()
{
    stopped = true;
    if (output) {
        output->stop();
        delete output;
        output = nullptr;
    }
    device = nullptr;
}

void ZRPcmPlayer::setVolume(float volume)
{
    this->volume = volume;
}

void ZRPcmPlayer::write(AVFrame *frame)
{
    if (!format.isValid())
        return;
    const AVSampleFormat target = sampleFormatOf(format);
    if (frame->format == target && frame->channels == format.channelCount()
        && frame->sample_rate == format.sampleRate()) {
        // One channel's worth of bytes: of an interleaved stereo frame the front half is played.
        writeData(frame->data[0], frame->nb_samples * av_get_bytes_per_sample(target));
        return;
    }

    if (!converter) {
        converter = new ZRAudioConverter;
        converter->targetRate = format.sampleRate();
        converter->targetLayout = layoutOf(format.channelCount());
        converter->targetChannels = format.channelCount();
        converter->targetFormat = target;
        qDebug("rate = %d, layout = %lld, channels = %d, format = %d", converter->targetRate,
            static_cast<long long>(converter->targetLayout), converter->targetChannels,
            converter->targetFormat);
        converter->createBuffer(4096);
    }
    converter->convert(frame);
    uint8_t block[drainBytes];
    while (!aborted && av_fifo_size(converter->fifo) >= drainBytes) {
        av_fifo_generic_read(converter->fifo, block, drainBytes, nullptr);
        writeData(block, drainBytes);
    }
}

int ZRPcmPlayer::writeData(const uint8_t *data, int size)
{
    if (!device || !output)
        return -1;
    if (volume == 0.0F)
        return size; // dropped, and nothing blocks
    if (size < 1)
        return 0;

    qint64 written = 1;
    while (size > 0 && !aborted) {
        const int period = output->periodSize();
        if (period < 0 || written <= 0) {
            QThread::usleep(1000);
            written = 1;
            continue;
        }
        written = device->write(reinterpret_cast<const char *>(data), std::min(size, period));
        if (written > 0) {
            data += written;
            size -= static_cast<int>(written);
        }
    }
    return 0;
}

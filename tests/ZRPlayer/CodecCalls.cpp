#include "CodecCalls.h"

extern "C" {
#include <libavutil/hwcontext.h>
}

namespace {

CodecCalls *current = nullptr;

QString nameOf(const AVCodecContext *context, const char *call)
{
    const char *kind = context->codec_type == AVMEDIA_TYPE_VIDEO ? "video" : "audio";
    return QStringLiteral("%1 %2").arg(kind, call);
}

void note(const AVCodecContext *context, const char *call)
{
    if (current && context)
        current->log.add(nameOf(context, call));
}

int answerTo(const AVCodecContext *context, const char *call)
{
    return current ? current->takeAnswer(nameOf(context, call)) : CodecCalls::real;
}

}

CodecCalls::CodecCalls()
{
    Q_ASSERT(!current);
    current = this;
}

CodecCalls::~CodecCalls()
{
    current = nullptr;
}

void CodecCalls::answer(const QString &call, const std::deque<int> &results)
{
    QMutexLocker lock(&mutex);
    answers[call] = results;
    endless.remove(call);
}

void CodecCalls::answerForEver(const QString &call, int result)
{
    QMutexLocker lock(&mutex);
    answers[call] = {result};
    endless.insert(call);
}

int CodecCalls::takeAnswer(const QString &call)
{
    QMutexLocker lock(&mutex);
    std::deque<int> &results = answers[call];
    if (results.empty())
        return real;
    const int result = results.front();
    if (!endless.contains(call))
        results.pop_front();
    return result;
}

CodecCalls::Opening CodecCalls::lastOpening() const
{
    QMutexLocker lock(&mutex);
    return opening;
}

void CodecCalls::setOpening(const Opening &opening)
{
    QMutexLocker lock(&mutex);
    this->opening = opening;
}

const void *CodecCalls::lastReceived() const
{
    QMutexLocker lock(&mutex);
    return received;
}

void CodecCalls::noteReceived(const AVFrame *frame)
{
    QMutexLocker lock(&mutex);
    received = frame->data[0];
}

void CodecCalls::receive(AVFrame *frame)
{
    frame->format = AV_PIX_FMT_GRAY8;
    frame->width = 32;
    frame->height = 16;
    frame->pts = nextPts++;
    frame->flags = frameFlags;
    av_frame_get_buffer(frame, 0);
}

extern "C" {

int __real_avcodec_open2(AVCodecContext *, const AVCodec *, AVDictionary **);
int __real_avcodec_close(AVCodecContext *);
void __real_avcodec_free_context(AVCodecContext **);
int __real_avcodec_send_packet(AVCodecContext *, const AVPacket *);
int __real_avcodec_receive_frame(AVCodecContext *, AVFrame *);
void __real_avcodec_flush_buffers(AVCodecContext *);
const AVCodecHWConfig *__real_avcodec_get_hw_config(const AVCodec *, int);
int __real_av_hwdevice_ctx_create(
    AVBufferRef **, AVHWDeviceType, const char *, AVDictionary *, int);
void __real__ZN8ZRThread5sleepEm(unsigned long);

int __wrap_avcodec_open2(AVCodecContext *context, const AVCodec *codec, AVDictionary **options)
{
    if (!current)
        return __real_avcodec_open2(context, codec, options);
    current->log.add(nameOf(context, "open2") + QStringLiteral(" %1").arg(codec->id));
    current->setOpening({context->get_format, context->opaque, context->hw_device_ctx != nullptr,
        options != nullptr, context->thread_count, context->flags, context->flags2});
    const int result = answerTo(context, "open2");
    return result == CodecCalls::real ? __real_avcodec_open2(context, codec, options) : result;
}

int __wrap_avcodec_close(AVCodecContext *context)
{
    note(context, "close");
    return __real_avcodec_close(context);
}

void __wrap_avcodec_free_context(AVCodecContext **context)
{
    note(*context, "free");
    __real_avcodec_free_context(context);
}

int __wrap_avcodec_send_packet(AVCodecContext *context, const AVPacket *packet)
{
    if (current) {
        current->log.add(nameOf(context, "send ")
            + (packet ? QString::number(packet->pts) : QStringLiteral("NULL")));
    }
    const int result = answerTo(context, "send");
    return result == CodecCalls::real ? __real_avcodec_send_packet(context, packet) : result;
}

int __wrap_avcodec_receive_frame(AVCodecContext *context, AVFrame *frame)
{
    note(context, "receive");
    int result = answerTo(context, "receive");
    if (result == CodecCalls::real)
        result = __real_avcodec_receive_frame(context, frame);
    else if (result == 0)
        current->receive(frame);
    if (current && result == 0)
        current->noteReceived(frame);
    return result;
}

void __wrap_avcodec_flush_buffers(AVCodecContext *context)
{
    note(context, "flush");
    __real_avcodec_flush_buffers(context);
}

const AVCodecHWConfig *__wrap_avcodec_get_hw_config(const AVCodec *codec, int index)
{
    if (!current || current->hardwareConfigs.empty())
        return __real_avcodec_get_hw_config(codec, index);
    const auto &configs = current->hardwareConfigs;
    return index < static_cast<int>(configs.size()) ? &configs[size_t(index)] : nullptr;
}

int __wrap_av_hwdevice_ctx_create(
    AVBufferRef **device, AVHWDeviceType type, const char *name, AVDictionary *options, int flags)
{
    if (current)
        current->log.add(QStringLiteral("hwdevice %1").arg(type));
    const int answer = current ? current->takeAnswer("hwdevice") : CodecCalls::real;
    if (answer != CodecCalls::real)
        return answer;
    if (!current || !current->hardwareDevice)
        return __real_av_hwdevice_ctx_create(device, type, name, options, flags);
    *device = av_buffer_ref(current->hardwareDevice);
    current->madeDevices.push_back(*device);
    return 0;
}

// ZRThread::sleep()
void __wrap__ZN8ZRThread5sleepEm(unsigned long milliseconds)
{
    if (current)
        current->log.add(QStringLiteral("sleep %1").arg(milliseconds));
    __real__ZN8ZRThread5sleepEm(milliseconds);
}
}

#include "ScriptedInput.h"

extern "C" {
#include <libavcodec/bsf.h>
}

#include <QThread>

namespace {

ScriptedInput *current = nullptr;

constexpr int largestWithData = 1 << 24;

}

ScriptedInput::ScriptedInput()
{
    Q_ASSERT(!current);
    current = this;
}

ScriptedInput::~ScriptedInput()
{
    current = nullptr;
}

void ScriptedInput::addPackets(int stream, int count, int size)
{
    QMutexLocker lock(&mutex);
    idle = false;
    for (int i = 0; i < count; ++i)
        steps.push_back({0, stream, size, nextPts++});
}

void ScriptedInput::addResult(int result)
{
    QMutexLocker lock(&mutex);
    idle = false;
    steps.push_back({result, 0, 0, 0});
}

int ScriptedInput::unread() const
{
    QMutexLocker lock(&mutex);
    return static_cast<int>(steps.size());
}

bool ScriptedInput::isIdle() const
{
    QMutexLocker lock(&mutex);
    return idle;
}

ScriptedInput::Opening ScriptedInput::lastOpening() const
{
    QMutexLocker lock(&mutex);
    return opening;
}

int ScriptedInput::open(
    AVFormatContext **context, const char *url, const AVInputFormat *format, AVDictionary **options)
{
    Opening asked{url, (*context)->flags, (*context)->interrupt_callback, format != nullptr, {}};
    const AVDictionaryEntry *entry = nullptr;
    while ((entry = av_dict_get(*options, "", entry, AV_DICT_IGNORE_SUFFIX)))
        asked.options[entry->key] = entry->value;
    {
        QMutexLocker lock(&mutex);
        opening = asked;
    }
    calls.add("avformat_open_input");
    if (asked.url != "scripted")
        return 1;
    if (openResult < 0) {
        avformat_free_context(*context);
        *context = nullptr;
        return openResult;
    }
    for (const Stream &stream : streams) {
        AVStream *made = avformat_new_stream(*context, nullptr);
        made->codecpar->codec_type = stream.type;
        made->codecpar->codec_id = stream.codecId;
        made->duration = stream.duration;
        made->time_base = stream.timeBase;
    }
    (*context)->duration = duration;
    opened = *context;
    return openResult;
}

int ScriptedInput::read(AVPacket *packet)
{
    Step step;
    while (!take(&step)) {
        const AVIOInterruptCB interrupt = lastOpening().interrupt;
        if (interrupt.callback(interrupt.opaque))
            return AVERROR_EXIT;
        QThread::msleep(1);
    }
    calls.add("av_read_frame");
    if (step.result < 0)
        return step.result;
    if (step.size <= largestWithData)
        av_new_packet(packet, step.size);
    packet->size = step.size;
    packet->stream_index = step.stream;
    packet->pts = step.pts;
    return 0;
}

bool ScriptedInput::take(Step *step)
{
    QMutexLocker lock(&mutex);
    idle = steps.empty();
    if (idle)
        return false;
    *step = steps.front();
    steps.pop_front();
    return true;
}

bool ScriptedInput::fails(const char *call)
{
    calls.add(call);
    return failingCall == call;
}

extern "C" {

int __real_avformat_open_input(
    AVFormatContext **, const char *, const AVInputFormat *, AVDictionary **);
int __real_avformat_seek_file(AVFormatContext *, int, int64_t, int64_t, int64_t, int);
int __real_av_read_frame(AVFormatContext *, AVPacket *);
int __real_av_read_play(AVFormatContext *);
int __real_av_read_pause(AVFormatContext *);
int __real_avformat_flush(AVFormatContext *);
int __real_avformat_find_stream_info(AVFormatContext *, AVDictionary **);
void __real_avformat_close_input(AVFormatContext **);
int __real_avcodec_parameters_copy(AVCodecParameters *, const AVCodecParameters *);
int __real_av_bsf_alloc(const AVBitStreamFilter *, AVBSFContext **);
int __real_av_bsf_init(AVBSFContext *);
void __real_av_bsf_free(AVBSFContext **);
int __real_av_bsf_send_packet(AVBSFContext *, AVPacket *);
int __real_av_bsf_receive_packet(AVBSFContext *, AVPacket *);
double __real__ZN8ZRThread14currentSecondsEv();

int __wrap_avformat_open_input(
    AVFormatContext **context, const char *url, const AVInputFormat *format, AVDictionary **options)
{
    const int result = current ? current->open(context, url, format, options) : 1;
    return result <= 0 ? result : __real_avformat_open_input(context, url, format, options);
}

int __wrap_avformat_seek_file(
    AVFormatContext *context, int stream, int64_t least, int64_t target, int64_t most, int flags)
{
    if (current) {
        current->calls.add(QStringLiteral("avformat_seek_file %1 %2 %3 %4 %5")
                               .arg(stream)
                               .arg(least)
                               .arg(target)
                               .arg(most)
                               .arg(flags));
        if (current->isOpened(context))
            return current->seekResult;
    }
    return __real_avformat_seek_file(context, stream, least, target, most, flags);
}

int __wrap_av_read_frame(AVFormatContext *context, AVPacket *packet)
{
    if (current && current->isOpened(context))
        return current->read(packet);
    return __real_av_read_frame(context, packet);
}

int __wrap_av_read_play(AVFormatContext *context)
{
    if (current)
        current->calls.add("av_read_play");
    return current && current->isOpened(context) ? 0 : __real_av_read_play(context);
}

int __wrap_av_read_pause(AVFormatContext *context)
{
    if (current)
        current->calls.add("av_read_pause");
    return current && current->isOpened(context) ? 0 : __real_av_read_pause(context);
}

int __wrap_avformat_flush(AVFormatContext *context)
{
    if (current)
        current->calls.add("avformat_flush");
    return __real_avformat_flush(context);
}

int __wrap_avformat_find_stream_info(AVFormatContext *context, AVDictionary **options)
{
    if (current)
        current->calls.add("avformat_find_stream_info");
    return __real_avformat_find_stream_info(context, options);
}

void __wrap_avformat_close_input(AVFormatContext **context)
{
    if (current)
        current->calls.add("avformat_close_input");
    __real_avformat_close_input(context);
}

int __wrap_avcodec_parameters_copy(AVCodecParameters *target, const AVCodecParameters *source)
{
    if (current && current->fails("avcodec_parameters_copy"))
        return AVERROR(ENOMEM);
    return __real_avcodec_parameters_copy(target, source);
}

int __wrap_av_bsf_alloc(const AVBitStreamFilter *filter, AVBSFContext **context)
{
    if (current && current->fails("av_bsf_alloc"))
        return AVERROR(ENOMEM);
    return __real_av_bsf_alloc(filter, context);
}

int __wrap_av_bsf_init(AVBSFContext *context)
{
    if (current && current->fails("av_bsf_init"))
        return AVERROR_INVALIDDATA;
    return __real_av_bsf_init(context);
}

void __wrap_av_bsf_free(AVBSFContext **context)
{
    if (current && *context)
        current->calls.add("av_bsf_free");
    __real_av_bsf_free(context);
}

int __wrap_av_bsf_send_packet(AVBSFContext *context, AVPacket *packet)
{
    if (current)
        current->calls.add("av_bsf_send_packet");
    return __real_av_bsf_send_packet(context, packet);
}

int __wrap_av_bsf_receive_packet(AVBSFContext *context, AVPacket *packet)
{
    if (current)
        current->calls.add("av_bsf_receive_packet");
    return __real_av_bsf_receive_packet(context, packet);
}

// ZRThread::currentSeconds()
double __wrap__ZN8ZRThread14currentSecondsEv()
{
    const double clock = current ? current->clock.load() : 0.0;
    return clock > 0.0 ? clock : __real__ZN8ZRThread14currentSecondsEv();
}
}

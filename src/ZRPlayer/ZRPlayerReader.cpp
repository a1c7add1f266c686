#include "ZRPlayerReader.h"

#include "ZRPlayerError.h"
#include "ZRPlayerObserver.h"
#include "ZRPlayerThreads.h"

#include <QCoreApplication>
#include <QtDebug>

#include <cstdint>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavcodec/bsf.h>
#include <libavformat/avformat.h>
}

namespace {

// Chosen by the codec of the video stream alone: the rows for sound never match.
struct Filter {
    AVCodecID codecId;
    const char *name;
};
constexpr Filter filters[] = {
    {AV_CODEC_ID_AAC, "aac_adtstoasc"},
    {AV_CODEC_ID_DTS, "dca_core"},
    {AV_CODEC_ID_H264, "h264_mp4toannexb"},
    {AV_CODEC_ID_HEVC, "hevc_mp4toannexb"},
};

const AVBitStreamFilter *filterFor(AVCodecID codecId)
{
    for (const Filter &filter : filters) {
        if (filter.codecId == codecId)
            return av_bsf_get_by_name(filter.name);
    }
    return nullptr;
}

// In seconds: the context knows it best, then the picture, then the sound.
double durationOf(
    const AVFormatContext *context, const AVStream *videoStream, const AVStream *audioStream)
{
    if (context->duration != AV_NOPTS_VALUE)
        return context->duration / 1000000.0;
    for (const AVStream *stream : {videoStream, audioStream}) {
        if (stream && stream->duration != AV_NOPTS_VALUE)
            return av_q2d(stream->time_base) * static_cast<double>(stream->duration);
    }
    return -1.0;
}

// What the observer makes on this thread can be called from others only through the thread's event
// loop, and there is none: such calls would pile up for as long as the stream lasts. Qt's output of
// sound on Windows has one for each block that was played.
void dropQueuedCalls()
{
    QCoreApplication::removePostedEvents(nullptr, QEvent::MetaCall);
}

template <class T> T *popFrom(const std::unique_ptr<ZRPlayerQueue<T>> &queue)
{
    return queue ? queue->pop() : nullptr;
}

}

// Measures what is read, over a second or more at a time. The counters wrap.
struct ZRPlayerReader::RateMeter {
    double lastTime = ZRThread::currentSeconds();
    uint32_t totalBytes = 0;
    uint32_t lastBytes = 0;

    void add(int bytes, double *rate)
    {
        totalBytes += static_cast<uint32_t>(bytes);
        const double now = ZRThread::currentSeconds();
        if (now - lastTime < 1.0)
            return;
        *rate = (totalBytes - lastBytes) * 0.0009765625 / (now - lastTime);
        lastBytes = totalBytes;
        lastTime = now;
    }
};

ZRPlayerPacket::ZRPlayerPacket(const AVPacket *source, int codecId, int type, AVRational timeBase) :
    packet(av_packet_alloc()),
    codecId(codecId),
    type(type),
    timeBase(timeBase)
{
    av_packet_ref(packet, source);
}

ZRPlayerPacket::~ZRPlayerPacket()
{
    av_packet_free(&packet);
}

void ZRPlayerReaderThread::run()
{
    reader->read();
}

ZRPlayerReader::ZRPlayerReader() :
    videoPackets(new ZRPlayerQueue<ZRPlayerPacket>),
    audioPackets(new ZRPlayerQueue<ZRPlayerPacket>),
    commands(new ZRPlayerQueue<ZRPlayerReaderCommand>)
{ }

ZRPlayerReader::~ZRPlayerReader() = default;

int ZRPlayerReader::start()
{
    _clearQueues();
    startThread(thread, this, "ZRPlayerReaderThread");
    return 0;
}

void ZRPlayerReader::stop()
{
    stopThread(thread);
    _clearQueues();
}

void ZRPlayerReader::play()
{
    if (commands)
        commands->push(new ZRPlayerReaderCommand(ZRPlayerReaderCommand::Play));
}

void ZRPlayerReader::pause()
{
    if (commands)
        commands->push(new ZRPlayerReaderCommand(ZRPlayerReaderCommand::Pause));
}

void ZRPlayerReader::seek(double seconds)
{
    seekTarget = seconds;
    seekRequested = true;
}

double ZRPlayerReader::duration()
{
    return duration_;
}

bool ZRPlayerReader::hasVideo()
{
    return videoStream != nullptr;
}

bool ZRPlayerReader::hasAudio()
{
    return audioStream != nullptr;
}

ZRPlayerPacket *ZRPlayerReader::popVideoPacket()
{
    return popFrom(videoPackets);
}

ZRPlayerPacket *ZRPlayerReader::popAudioPacket()
{
    return popFrom(audioPackets);
}

bool ZRPlayerReader::isEof()
{
    return eof;
}

void ZRPlayerReader::copyCodecParameters(int kind, int /*codecId*/, AVCodecContext *context)
{
    const std::lock_guard<std::mutex> lock(streamLock);
    const AVStream *stream = nullptr;
    if (kind == 0)
        stream = videoStream;
    else if (kind == 1)
        stream = audioStream;
    if (stream)
        avcodec_parameters_to_context(context, stream->codecpar);
}

double ZRPlayerReader::bitrate()
{
    return bitrate_;
}

bool ZRPlayerReader::isRunning()
{
    return thread && thread->isRunning();
}

void ZRPlayerReader::flush()
{
    if (formatContext)
        avformat_flush(formatContext);
    videoPackets->clear();
    audioPackets->clear();
}

void ZRPlayerReader::setObserver(ZRPlayerReaderObserver *observer)
{
    this->observer = observer;
}

void ZRPlayerReader::setUrl(const std::string &url)
{
    this->url = url;
}

void ZRPlayerReader::setRealtime(bool realtime)
{
    this->realtime = realtime;
}

void ZRPlayerReader::setTimeout(double timeout)
{
    this->timeout = timeout;
}

void ZRPlayerReader::read()
{
    if (_openStream() < 0) {
        qWarning("open stream failure");
        _closeStream();
        _notify(OpenFailed);
        return;
    }
    _notify(Opened);

    AVPacket *packet = av_packet_alloc();
    RateMeter meter;
    bool paused = false;
    while (goesOn(thread)) {
        dropQueuedCalls();
        if (_holdBack())
            continue;
        if (seekRequested)
            _serveSeek();
        _serveCommand(&paused);
        if (paused || eof)
            ZRThread::sleep(1); // at the end too: a seek can go on from there
        else if (!_readPacket(packet, &meter))
            break;
    }
    av_packet_free(&packet);
    _closeStream();
    _notify(Ended);
}

// Runs inside of FFmpeg's calls: ends one that blocks when the opening takes too long or the thread
// is to stop.
int ZRPlayerReader::_interrupt(void *opaque)
{
    if (!opaque)
        return -1;
    const auto *reader = static_cast<const ZRPlayerReader *>(opaque);
    const bool limited = reader->timeout > 0 && reader->openStartTime > 0;
    if (limited && ZRThread::currentSeconds() > reader->timeout + reader->openStartTime)
        return 1;
    return goesOn(reader->thread) ? 0 : 1;
}

int ZRPlayerReader::_openStream()
{
    formatContext = avformat_alloc_context();
    formatContext->interrupt_callback = {_interrupt, this};
    if (realtime)
        formatContext->flags = AVFMT_FLAG_NOBUFFER; // in place of the flags that are set by default

    openStartTime = ZRThread::currentSeconds();
    AVDictionary *options = nullptr;
    av_dict_set(&options, "rtsp_transport", "tcp", 0);
    const int result = avformat_open_input(&formatContext, url.c_str(), nullptr, &options);
    av_dict_free(&options);
    openStartTime = 0.0;
    if (result < 0) {
        qWarning("avformat_open_input error = %d\n%s", result, errorText(result).constData());
        return result;
    }
    // The streams are taken as they are after the opening: probing them would cost a second.
    _pickStreams();
    duration_ = durationOf(formatContext, videoStream, audioStream);
    if (videoStream)
        _prepareFilter();
    return result;
}

void ZRPlayerReader::_pickStreams()
{
    videoStream = nullptr;
    audioStream = nullptr;
    for (unsigned i = 0; i < formatContext->nb_streams; ++i) {
        AVStream *stream = formatContext->streams[i];
        if (stream->codecpar->codec_type == AVMEDIA_TYPE_VIDEO)
            videoStream = stream;
        else if (stream->codecpar->codec_type == AVMEDIA_TYPE_AUDIO)
            audioStream = stream;
    }
}

// A filter that can't be had is none; the stream plays all the same.
void ZRPlayerReader::_prepareFilter()
{
    const AVCodecParameters *parameters = videoStream->codecpar;
    bitstreamFilter = filterFor(parameters->codec_id);
    if (!bitstreamFilter)
        return;
    if (av_bsf_alloc(bitstreamFilter, &bitstreamFilterContext) < 0
        || avcodec_parameters_copy(bitstreamFilterContext->par_in, parameters) < 0
        || av_bsf_init(bitstreamFilterContext) < 0)
        av_bsf_free(&bitstreamFilterContext);
}

void ZRPlayerReader::_closeStream()
{
    bitstreamFilter = nullptr;
    av_bsf_free(&bitstreamFilterContext);
    duration_ = -1.0;
    {
        const std::lock_guard<std::mutex> lock(streamLock);
        audioStream = nullptr;
        videoStream = nullptr;
    }
    if (formatContext)
        avformat_close_input(&formatContext);
}

void ZRPlayerReader::_clearQueues()
{
    commands->clear();
    videoPackets->clear();
    audioPackets->clear();
}

void ZRPlayerReader::_notify(Event event)
{
    if (ZRPlayerReaderObserver *const target = observer)
        target->onReaderNotify(this, event);
}

// True when this pass of the loop is to end here, as the decoder is behind. Sound doesn't count.
bool ZRPlayerReader::_holdBack()
{
    if (maxVideoPackets <= 0 || videoPackets->size() <= maxVideoPackets)
        return false;
    if (realtime) {
        flush();
        _notify(Overflowed);
    }
    ZRThread::sleep(1);
    return true;
}

void ZRPlayerReader::_serveSeek()
{
    const auto target = static_cast<int64_t>(seekTarget * 1000000.0);
    flush();
    int result = -1;
    if (formatContext) {
        eof = false;
        qDebug("set eof false");
        // No range around the target, and the flag for frame numbers with a time.
        result = avformat_seek_file(formatContext, -1, target, target, target, AVSEEK_FLAG_FRAME);
    }
    seekRequested = false;
    _notify(result >= 0 ? SeekDone : SeekFailed);
}

// One in a pass.
void ZRPlayerReader::_serveCommand(bool *paused)
{
    const std::unique_ptr<ZRPlayerReaderCommand> command(commands->pop());
    if (!command)
        return;
    if (command->type == ZRPlayerReaderCommand::Play) {
        av_read_play(formatContext);
        *paused = false;
    } else if (command->type == ZRPlayerReaderCommand::Pause) {
        av_read_pause(formatContext);
        *paused = true;
    }
}

// False when the stream is lost.
bool ZRPlayerReader::_readPacket(AVPacket *packet, RateMeter *meter)
{
    const int result = av_read_frame(formatContext, packet);
    if (result >= 0) {
        _queuePacket(packet);
        meter->add(packet->size, &bitrate_);
    }
    av_packet_unref(packet);
    if (result >= 0)
        return true;
    if (result == AVERROR_EOF) {
        eof = true;
        return true;
    }
    qWarning("av_read_frame error = %d\n%s", result, errorText(result).constData());
    return false;
}

void ZRPlayerReader::_queuePacket(const AVPacket *packet)
{
    const struct {
        const AVStream *stream;
        ZRPlayerPacket::Type type;
        ZRPlayerQueue<ZRPlayerPacket> *queue;
    } ways[] = {
        {videoStream, ZRPlayerPacket::Video, videoPackets.get()},
        {audioStream, ZRPlayerPacket::Audio, audioPackets.get()},
    };
    for (const auto &way : ways) {
        if (!way.stream || way.stream->index != packet->stream_index)
            continue;
        auto *record = new ZRPlayerPacket(
            packet, way.stream->codecpar->codec_id, way.type, way.stream->time_base);
        if (packetObserver)
            packetObserver->onPacket(record);
        way.queue->push(record);
        return;
    }
}

#include "ZRPlayerDecoder.h"

#include "ZRPlayerError.h"
#include "ZRPlayerReader.h"
#include "ZRPlayerThreads.h"

#include <QtDebug>

#include <cstdlib>
#include <memory>
#include <utility>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavutil/hwcontext.h>
}

namespace {

constexpr int maxVideoFrames = 2;

// The hardware's format for pictures, AV_PIX_FMT_NONE when the codec has none for that device.
AVPixelFormat get_hw_decoder_format(const AVCodec *codec, AVHWDeviceType deviceType)
{
    for (int i = 0;; ++i) {
        const AVCodecHWConfig *config = avcodec_get_hw_config(codec, i);
        if (!config) {
            qWarning("[%d] Decoder %s does not support device type %s", i, codec->name,
                av_hwdevice_get_type_name(deviceType));
            return AV_PIX_FMT_NONE;
        }
        if ((config->methods & AV_CODEC_HW_CONFIG_METHOD_HW_DEVICE_CTX)
            && config->device_type == deviceType)
            return config->pix_fmt;
    }
}

int hw_decoder_init(AVCodecContext *context, ZRHardwareContext *hardware, AVHWDeviceType deviceType)
{
    const int result = av_hwdevice_ctx_create(&hardware->device, deviceType, nullptr, nullptr, 0);
    if (result < 0)
        qWarning("Failed to create specified HW device");
    else
        context->hw_device_ctx = av_buffer_ref(hardware->device);
    return result;
}

AVPixelFormat get_hw_format(AVCodecContext *context, const AVPixelFormat *formats)
{
    const auto *hardware = static_cast<const ZRHardwareContext *>(context->opaque);
    for (const AVPixelFormat *format = formats; *format != AV_PIX_FMT_NONE; ++format) {
        if (*format == hardware->format)
            return *format;
    }
    constexpr int dxva2Surface = 51;
    qWarning(
        "Failed to get HW surface format, hc->format = %d, %d", hardware->format, dxva2Surface);
    return AV_PIX_FMT_NONE;
}

}

struct ZRPlayerDecoder::Path {
    using Decoder = ZRPlayerDecoder;

    int kind; // of copyCodecParameters()
    const char *name; // in the log
    ZRPlayerPacket *(ZRPlayerReader::*pop)();
    void (Decoder::*send)(const ZRPlayerPacket *, AVFrame *);
    void (Decoder::*receive)(AVFrame *, AVRational);
    int (Decoder::*init)(int);
    bool Decoder::*eof;
    bool Decoder::*flush;
    int Decoder::*codecId;
    const AVCodec *Decoder::*codec;
    AVCodecContext *Decoder::*context;
    AVFrame *Decoder::*frame;
    AVRational Decoder::*timeBase;
    ZRPlayerQueue<ZRPlayerFrame> *Decoder::*frames;

    bool isVideo() const { return kind == 0; }
};

const ZRPlayerDecoder::Path ZRPlayerDecoder::videoPath = {0, "video",
    &ZRPlayerReader::popVideoPacket, &Path::Decoder::_sendVideoPacket,
    &Path::Decoder::_recvVideoFrame, &Path::Decoder::_initVideoCodec, &Path::Decoder::videoEof,
    &Path::Decoder::flushVideo, &Path::Decoder::videoCodecId, &Path::Decoder::videoCodec,
    &Path::Decoder::videoContext, &Path::Decoder::videoFrame, &Path::Decoder::videoTimeBase,
    &Path::Decoder::videoFrames};

const ZRPlayerDecoder::Path ZRPlayerDecoder::audioPath = {1, "audio",
    &ZRPlayerReader::popAudioPacket, &Path::Decoder::_sendAudioPacket,
    &Path::Decoder::_recvAudioFrame, &Path::Decoder::_initAudioCodec, &Path::Decoder::audioEof,
    &Path::Decoder::flushAudio, &Path::Decoder::audioCodecId, &Path::Decoder::audioCodec,
    &Path::Decoder::audioContext, &Path::Decoder::audioFrame, &Path::Decoder::audioTimeBase,
    &Path::Decoder::audioFrames};

void ZRPlayerDecoderVideoThread::run()
{
    decoder->decodeVideo();
}

void ZRPlayerDecoderAudioThread::run()
{
    decoder->decodeAudio();
}

ZRPlayerDecoder::ZRPlayerDecoder() = default;

ZRPlayerDecoder::~ZRPlayerDecoder()
{
    avcodec_free_context(&audioContext); // the closed codec has left it
}

int ZRPlayerDecoder::start()
{
    flushVideo = false;
    flushAudio = false;
    videoEof = false;
    audioEof = false;
    videoCodecId = 0;
    audioCodecId = 0;
    if (reader->hasVideo())
        startThread(videoThread, this, "ZRPlayerDecoderVideoThread");
    if (reader->hasAudio())
        startThread(audioThread, this, "ZRPlayerDecoderAudioThread");
    return 0;
}

void ZRPlayerDecoder::stop()
{
    stopThread(audioThread);
    stopThread(videoThread);
}

void ZRPlayerDecoder::resume() { }

void ZRPlayerDecoder::pause() { }

void ZRPlayerDecoder::setHardwareType(int type)
{
    hardwareType = type;
}

bool ZRPlayerDecoder::isRunning()
{
    return (videoThread && videoThread->isRunning()) || (audioThread && audioThread->isRunning());
}

void ZRPlayerDecoder::flush()
{
    flushVideo = true;
    flushAudio = true;
}

void ZRPlayerDecoder::setInput(ZRPlayerReader *reader)
{
    this->reader = reader;
}

ZRPlayerFrame *ZRPlayerDecoder::popVideoFrame()
{
    return _popFrame(videoPath);
}

ZRPlayerFrame *ZRPlayerDecoder::popAudioFrame()
{
    return _popFrame(audioPath);
}

bool ZRPlayerDecoder::hasVideo()
{
    return reader->hasVideo();
}

bool ZRPlayerDecoder::hasAudio()
{
    return reader->hasAudio();
}

bool ZRPlayerDecoder::isVideoEof()
{
    return videoEof;
}

void ZRPlayerDecoder::setAudioEnabled(bool enabled)
{
    audioEnabled = enabled;
}

void ZRPlayerDecoder::decodeVideo()
{
    keyFrameSeen = false;
    _decode(videoPath);
}

void ZRPlayerDecoder::decodeAudio()
{
    _decode(audioPath);
}

void ZRPlayerDecoder::_decode(const Path &path)
{
    bool gotPacket = false;
    while (_goesOn(path)) {
        if (_isFull(path)) {
            ZRThread::sleep(1);
            continue;
        }
        if (this->*path.flush) {
            _serveFlush(path);
            continue;
        }
        // Asked first: then no packet was queued before the end that is not found here.
        const bool atEnd = reader->isEof();
        const std::unique_ptr<ZRPlayerPacket> record((reader->*path.pop)());
        if (record) {
            this->*path.eof = false;
            gotPacket = true;
            if (!_decodePacket(path, *record))
                break;
            continue;
        }
        if (atEnd) {
            this->*path.eof = true;
            if (gotPacket)
                _drain(path);
            gotPacket = false;
        }
        ZRThread::sleep(1);
    }
    _closeCodec(path);
}

bool ZRPlayerDecoder::_goesOn(const Path &path) const
{
    return path.isVideo() ? goesOn(videoThread) : goesOn(audioThread);
}

bool ZRPlayerDecoder::_isFull(const Path &path) const
{
    const ZRPlayerQueue<ZRPlayerFrame> *queue = this->*path.frames;
    const int limit = path.isVideo() ? maxVideoFrames : maxAudioFrames;
    return limit >= 1 && queue && queue->size() >= limit;
}

void ZRPlayerDecoder::_serveFlush(const Path &path)
{
    qDebug("flush %s", path.name);
    if (auto *queue = this->*path.frames)
        queue->clear();
    _flushCodec(path);
    this->*path.flush = false;
}

// Once in a run of packets.
void ZRPlayerDecoder::_drain(const Path &path)
{
    qDebug("eof send NULL %s packet", path.name);
    (this->*path.send)(nullptr, this->*path.frame);
}

// False when there is no codec for it.
bool ZRPlayerDecoder::_decodePacket(const Path &path, const ZRPlayerPacket &record)
{
    if (this->*path.codecId != record.codecId) {
        _closeCodec(path);
        if ((this->*path.init)(record.codecId) < 0)
            return false;
    }
    if (_takes(path, record))
        (this->*path.send)(&record, this->*path.frame);
    return true;
}

// Any flag of a packet makes it a key frame here.
bool ZRPlayerDecoder::_takes(const Path &path, const ZRPlayerPacket &record)
{
    if (!path.isVideo())
        return audioEnabled;
    keyFrameSeen = keyFrameSeen || record.packet->flags != 0;
    return keyFrameSeen;
}

void ZRPlayerDecoder::_sendVideoPacket(const ZRPlayerPacket *record, AVFrame *frame)
{
    const int result = _sendPacket(videoPath, record, frame);
    if (result < 0) {
        qWarning("_sendVideoPacket error = %d, %s", result, errorText(result).constData());
        _flushCodec(videoPath);
    }
}

void ZRPlayerDecoder::_sendAudioPacket(const ZRPlayerPacket *record, AVFrame *frame)
{
    const int result = _sendPacket(audioPath, record, frame);
    if (result < 0)
        qWarning("_sendAudioPacket error = %d\n%s", result, errorText(result).constData());
}

// Below 0 when the codec refuses the packet for good; nothing is received then.
int ZRPlayerDecoder::_sendPacket(const Path &path, const ZRPlayerPacket *record, AVFrame *frame)
{
    if (record)
        this->*path.timeBase = record->timeBase;
    const AVPacket *packet = record ? record->packet : nullptr;
    while (_goesOn(path) && this->*path.frames) {
        const int result = avcodec_send_packet(this->*path.context, packet);
        if (result >= 0) {
            (this->*path.receive)(frame, this->*path.timeBase);
            return 0;
        }
        if (result == AVERROR_EOF) { // drained: goes on with a new one
            const int codecId = this->*path.codecId;
            _closeCodec(path);
            (this->*path.init)(codecId);
            frame = this->*path.frame;
            continue;
        }
        if (result == AVERROR(EAGAIN))
            (this->*path.receive)(frame, this->*path.timeBase);
        else if (result != AVERROR(ENOMEM) || !path.isVideo())
            return result;
        if (path.isVideo())
            ZRThread::sleep(1);
    }
    return 0;
}

void ZRPlayerDecoder::_recvVideoFrame(AVFrame *frame, AVRational timeBase)
{
    while (_goesOn(videoPath)) {
        const int result = _receiveFrame(videoPath, frame, timeBase);
        if (result == AVERROR(EAGAIN)) {
            if (!videoEof)
                return;
            ZRThread::sleep(1); // until the codec is drained
        } else if (result < 0) {
            _giveUpFrame(videoPath, result);
            return;
        }
    }
}

void ZRPlayerDecoder::_recvAudioFrame(AVFrame *frame, AVRational timeBase)
{
    while (_goesOn(audioPath)) {
        const int result = _receiveFrame(audioPath, frame, timeBase);
        if (result == AVERROR(EAGAIN))
            return;
        if (result < 0) {
            _giveUpFrame(audioPath, result);
            return;
        }
    }
}

// Queues what it gets, also beyond the queue's limit: one packet can give several frames.
int ZRPlayerDecoder::_receiveFrame(const Path &path, AVFrame *frame, AVRational timeBase)
{
    const int result = avcodec_receive_frame(this->*path.context, frame);
    if (result < 0)
        return result;
    auto *taken = new ZRPlayerFrame(frame, timeBase);
    if (frame->flags != 0) // one text for both kinds
        qDebug("recv video frame time = %lf, flags = %d", taken->time(), frame->flags);
    (this->*path.frames)->push(taken);
    av_frame_unref(frame);
    return result;
}

// At the end of a drain too.
void ZRPlayerDecoder::_giveUpFrame(const Path &path, int result)
{
    qWarning("recv %s frame %d, %x, %s", path.name, result, result, errorText(result).constData());
    _flushCodec(path);
}

void ZRPlayerDecoder::_flushCodec(const Path &path)
{
    if (this->*path.frames) // a closed audio context is none to flush
        avcodec_flush_buffers(this->*path.context);
    if (path.isVideo())
        keyFrameSeen = false;
}

int ZRPlayerDecoder::_initVideoCodec(int codecId)
{
    if (_allocCodec(videoPath, codecId) < 0)
        return -1;
    if (hardwareType != AV_HWDEVICE_TYPE_NONE)
        _setUpHardware();
    return _openCodec(videoPath);
}

int ZRPlayerDecoder::_initAudioCodec(int codecId)
{
    return _allocCodec(audioPath, codecId) < 0 ? -1 : _openCodec(audioPath);
}

int ZRPlayerDecoder::_allocCodec(const Path &path, int codecId)
{
    const AVCodec *&codec = this->*path.codec;
    AVCodecContext *&context = this->*path.context;
    this->*path.codecId = codecId;
    avcodec_free_context(&context); // the closed audio codec has left it
    codec = codecId == 0 ? nullptr : avcodec_find_decoder(static_cast<AVCodecID>(codecId));
    if (!codec)
        return -1;
    context = avcodec_alloc_context3(codec);
    reader->copyCodecParameters(path.kind, codecId, context);
    return 0;
}

int ZRPlayerDecoder::_openCodec(const Path &path)
{
    const int result = avcodec_open2(this->*path.context, this->*path.codec, nullptr);
    if (result < 0) {
        qWarning("avcodec_open2(%s = %d) failed = %d", path.name, this->*path.codecId, result);
        _closeCodec(path);
        return -1;
    }
    this->*path.frame = av_frame_alloc();
    _replaceFrames(path, new ZRPlayerQueue<ZRPlayerFrame>);
    return 0;
}

// What can't be had leaves plain software decoding, decided here once. A codec without a format
// for the device does not keep the device from being tried.
void ZRPlayerDecoder::_setUpHardware()
{
    const auto deviceType = static_cast<AVHWDeviceType>(hardwareType);
    auto *hardware = static_cast<ZRHardwareContext *>(std::malloc(sizeof(ZRHardwareContext)));
    hardware->device = nullptr;
    hardware->format = get_hw_decoder_format(videoCodec, deviceType);
    videoContext->opaque = hardware;
    if (hw_decoder_init(videoContext, hardware, deviceType) >= 0) {
        videoContext->get_format = get_hw_format;
        return;
    }
    qWarning(
        "hw decoder init failure, deviceType = %d, format = %d", hardwareType, hardware->format);
    videoContext->opaque = nullptr;
    std::free(hardware);
}

void ZRPlayerDecoder::_closeCodec(const Path &path)
{
    _replaceFrames(path, nullptr);
    av_frame_free(&(this->*path.frame));
    if (!path.isVideo()) {
        avcodec_close(audioContext); // itself stays, for the next set-up or the destructor
    } else if (videoContext) {
        std::free(videoContext->opaque); // and leaves the reference to the hardware's device
        videoContext->opaque = nullptr;
        avcodec_free_context(&videoContext);
    }
    this->*path.codecId = 0;
    this->*path.codec = nullptr;
}

// The queue's frames go with it.
void ZRPlayerDecoder::_replaceFrames(const Path &path, ZRPlayerQueue<ZRPlayerFrame> *queue)
{
    const std::lock_guard<std::mutex> lock(framesLock);
    delete std::exchange(this->*path.frames, queue);
}

ZRPlayerFrame *ZRPlayerDecoder::_popFrame(const Path &path)
{
    const std::lock_guard<std::mutex> lock(framesLock);
    auto *queue = this->*path.frames;
    return queue ? queue->pop() : nullptr;
}

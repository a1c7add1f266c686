#include "ZRPlayer.h"

#include "ZRPcmPlayer.h"
#include "ZRPlayerDecoder.h"
#include "ZRPlayerReader.h"
#include "ZRPlayerRender.h"

ZRPlayer::ZRPlayer() = default;

ZRPlayer::~ZRPlayer() = default;

void ZRPlayer::onReaderNotify(ZRPlayerReader * /*reader*/, int type)
{
    switch (type) {
    case ZRPlayerReader::Opened:
        decoder->start();
        render->start();
        _notify(0);
        break;
    case ZRPlayerReader::OpenFailed:
        _notify(1);
        break;
    case ZRPlayerReader::SeekDone:
    case ZRPlayerReader::SeekFailed: // the reader's queues are empty all the same
        decoder->flush();
        render->flush();
        break;
    case ZRPlayerReader::Overflowed: // the schedule stays
        decoder->flush();
        break;
    default: // 2, reading ended, is told to nobody
        break;
    }
}

double ZRPlayer::bitrate()
{
    return reader ? reader->bitrate() : 0.0;
}

int ZRPlayer::open()
{
    reader = createReader();
    decoder = createDecoder();
    render = createRender();

    reader->setObserver(this);
    render->setObserver(this);
    reader->setUrl(url);
    reader->setRealtime(realtime);
    reader->setTimeout(timeout);
    decoder->setHardwareType(hardwareType);
    if (defaultRender) {
        defaultRender->setVideoView(videoView);
        defaultRender->setVolume(volume);
    }
    decoder->setInput(reader);
    render->setInput(decoder);

    if (reader->start() < 0) {
        close();
        return -1;
    }
    return 0;
}

// The render goes before the decoder, whose queues it polls; the reader object outlives both. The
// reader's observer goes first of all, so that no late event 0 starts threads.
void ZRPlayer::close()
{
    if (reader) {
        reader->setObserver(nullptr);
        reader->stop();
    }
    if (render)
        render->setObserver(nullptr);
    defaultRender = nullptr;
    if (render) {
        render->stop();
        delete render;
        render = nullptr;
    }
    if (decoder) {
        decoder->stop();
        delete decoder;
        decoder = nullptr;
    }
    if (reader) {
        reader->stop(); // clears the queues once more
        delete reader;
        reader = nullptr;
    }
}

bool ZRPlayer::isOpened()
{
    return reader != nullptr;
}

int ZRPlayer::play()
{
    if (reader)
        reader->play();
    if (decoder)
        decoder->resume();
    if (render)
        render->start();
    return 0;
}

int ZRPlayer::pause()
{
    if (render)
        render->stop();
    if (decoder)
        decoder->pause();
    if (reader)
        reader->pause();
    return 0;
}

bool ZRPlayer::isRendering()
{
    return render && render->isRunning();
}

void ZRPlayer::seek(double seconds)
{
    if (reader)
        reader->seek(seconds);
}

void ZRPlayer::flush()
{
    if (render)
        render->flush();
    if (decoder)
        decoder->flush();
    if (reader)
        reader->flush();
}

double ZRPlayer::currentTime()
{
    return render ? render->currentTime() : 0.0;
}

double ZRPlayer::duration()
{
    return reader ? reader->duration() : 0.0;
}

int ZRPlayer::reserved1()
{
    return 0;
}

int ZRPlayer::reserved2()
{
    return 0;
}

bool ZRPlayer::reserved3()
{
    return false;
}

ZRPlayerReader *ZRPlayer::createReader()
{
    return new ZRPlayerReader;
}

ZRPlayerDecoder *ZRPlayer::createDecoder()
{
    return new ZRPlayerDecoder;
}

ZRPlayerRender *ZRPlayer::createRender()
{
    defaultRender = new ZRPlayerDefaultRender(new ZRPcmPlayer);
    return defaultRender;
}

void ZRPlayer::onRenderNotify(ZRPlayerRender * /*render*/, int type)
{
    switch (type) {
    case 0: // first picture
        _notify(2);
        break;
    case 1: // play ended
        _notify(3);
        break;
    case 2: { // further picture
        const double total = duration();
        _notify(4, currentTime(), total);
        break;
    }
    }
}

void ZRPlayer::setRealtime(bool realtime)
{
    this->realtime = realtime;
    if (reader)
        reader->setRealtime(realtime);
}

void ZRPlayer::setHardwareType(int type)
{
    hardwareType = type;
    if (decoder)
        decoder->setHardwareType(type);
}

void ZRPlayer::setVideoView(ZRVideoView *view)
{
    videoView = view;
    if (defaultRender)
        defaultRender->setVideoView(view);
}

void ZRPlayer::setVolume(double volume)
{
    this->volume = volume;
    if (render)
        render->setVolume(volume);
}

void ZRPlayer::setObserver(ZRPlayerObserver *observer)
{
    this->observer = observer;
}

int ZRPlayer::open(const std::string &url)
{
    this->url = url;
    return open();
}

void ZRPlayer::_notify(int type, double current, double total)
{
    if (ZRPlayerObserver *const target = observer)
        target->onPlayerNotify(this, type, current, total);
}

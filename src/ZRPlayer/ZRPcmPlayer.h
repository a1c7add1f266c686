#pragma once

#include <QAudioFormat>

#include <cstdint>

class QAudioOutput;
class QIODevice;
struct AVFifoBuffer;
struct AVFrame;
struct SwrContext;

// Turns decoded sound into the format of the output device: swresample into a byte FIFO.
struct ZRAudioConverter {
    SwrContext *context = nullptr; // owned
    int64_t sourceRate = -1;
    int64_t sourceLayout = -1;
    int sourceChannels = -1;
    int sourceFormat = -1; // AVSampleFormat
    int targetRate = 0;
    int64_t targetLayout = 0;
    int targetChannels = 0;
    int targetFormat = -1;
    uint8_t *buffer = nullptr; // from malloc, owned
    AVFifoBuffer *fifo = nullptr; // owned
    int bufferSamples = 4096;
    int bytesPerSample = 0;

    // Makes buffer and FIFO for so many samples, or frees them for 0.
    void createBuffer(int samples);
    // Appends the frame to the FIFO. A frame that can't be converted is lost.
    void convert(const AVFrame *frame);
    void closeContext();

private:
    void _createSwrContext(int64_t rate, int64_t layout, int channels, int format);
};

// Plays decoded sound on the system's default output device. write() blocks until the device has
// taken the data, however long that is, and that alone sets the speed of sound in the player.
// Thread: start() before and stop() after the one thread that writes; setVolume() from anywhere.
class ZRPcmPlayer
{
public:
    ZRPcmPlayer();
    virtual ~ZRPcmPlayer();

    // 0, or -1 when there is no device: every write then returns at once.
    int start();
    // Any thread: on another than start()'s, Qt's PulseAudio output warns of its timer, which
    // serves threads with an event loop only.
    void stop();
    // 0 is mute; no other value changes anything.
    void setVolume(float volume);
    void write(AVFrame *frame);

protected:
    // Bytes in the device's format.
    int writeData(const uint8_t *data, int size);

    QIODevice *device = nullptr; // of `output`, null while stopped
    QAudioOutput *output = nullptr; // owned
    QAudioFormat format; // what the device really has
    float volume = 1.0F;
    ZRAudioConverter *converter = nullptr; // owned, null until a frame needs it
    bool stopped = false;
    bool aborted = false; // nothing sets it; a write ends when it is set
};

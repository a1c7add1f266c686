#include "AudioCalls.h"

// The linker gives the program the __wrap_ functions, and these the __real_ ones (CMakeLists.txt).
extern "C" {
QAudioDeviceInfo __real__ZN16QAudioDeviceInfo19defaultOutputDeviceEv();
QAudioDeviceInfo __wrap__ZN16QAudioDeviceInfo19defaultOutputDeviceEv()
{
    return AudioCalls::defaultOutputDevice();
}

QAudioFormat __real__ZNK16QAudioDeviceInfo15preferredFormatEv(const QAudioDeviceInfo *info);
QAudioFormat __wrap__ZNK16QAudioDeviceInfo15preferredFormatEv(const QAudioDeviceInfo *info)
{
    return AudioCalls::preferredFormat(info);
}

bool __real__ZNK16QAudioDeviceInfo17isFormatSupportedERK12QAudioFormat(
    const QAudioDeviceInfo *info, const QAudioFormat &format);
bool __wrap__ZNK16QAudioDeviceInfo17isFormatSupportedERK12QAudioFormat(
    const QAudioDeviceInfo *info, const QAudioFormat &format)
{
    return AudioCalls::isFormatSupported(info, format);
}

QAudioFormat __real__ZNK16QAudioDeviceInfo13nearestFormatERK12QAudioFormat(
    const QAudioDeviceInfo *info, const QAudioFormat &format);
QAudioFormat __wrap__ZNK16QAudioDeviceInfo13nearestFormatERK12QAudioFormat(
    const QAudioDeviceInfo *info, const QAudioFormat &format)
{
    return AudioCalls::nearestFormat(info, format);
}

int __real__ZNK12QAudioOutput10periodSizeEv(const QAudioOutput *output);
int __wrap__ZNK12QAudioOutput10periodSizeEv(const QAudioOutput *output)
{
    return AudioCalls::periodSize(output);
}

QIODevice *__real__ZN12QAudioOutput5startEv(QAudioOutput *output);
QIODevice *__wrap__ZN12QAudioOutput5startEv(QAudioOutput *output)
{
    return AudioCalls::start(output);
}
}

const QByteArray AudioCalls::linesWithoutServer =
    "start -1\ndevice 0 output 0 stopped 1\nconverter 0\nwriteData -1\nend\n";

QAudioDeviceInfo AudioCalls::Real::defaultOutputDevice()
{
    return __real__ZN16QAudioDeviceInfo19defaultOutputDeviceEv();
}

QAudioFormat AudioCalls::Real::preferredFormat(const QAudioDeviceInfo *info)
{
    return __real__ZNK16QAudioDeviceInfo15preferredFormatEv(info);
}

bool AudioCalls::Real::isFormatSupported(const QAudioDeviceInfo *info, const QAudioFormat &format)
{
    return __real__ZNK16QAudioDeviceInfo17isFormatSupportedERK12QAudioFormat(info, format);
}

QAudioFormat AudioCalls::Real::nearestFormat(
    const QAudioDeviceInfo *info, const QAudioFormat &format)
{
    return __real__ZNK16QAudioDeviceInfo13nearestFormatERK12QAudioFormat(info, format);
}

int AudioCalls::Real::periodSize(const QAudioOutput *output)
{
    return __real__ZNK12QAudioOutput10periodSizeEv(output);
}

QIODevice *AudioCalls::Real::start(QAudioOutput *output)
{
    return __real__ZN12QAudioOutput5startEv(output);
}

bool AudioCalls::isChosen(const QString &sink)
{
    return QAudioDeviceInfo::defaultOutputDevice().deviceName() == sink;
}

void AudioCalls::preferAsQt() { }

const int AudioCalls::ratePreferredByQt = 48000; // as the sinks

QStringList AudioCalls::withoutServer(const QStringList &command)
{
    return QStringList({"env", "PULSE_SERVER=unix:/nonexistent"}) + command;
}

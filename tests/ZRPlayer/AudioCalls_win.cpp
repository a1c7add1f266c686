#include "AudioCalls.h"

#include "LoadedFunction_win.h"
#include "ReplaceImport.h"

#define DEFAULT_OUTPUT_DEVICE "_ZN16QAudioDeviceInfo19defaultOutputDeviceEv"
#define PREFERRED_FORMAT "_ZNK16QAudioDeviceInfo15preferredFormatEv"
#define IS_FORMAT_SUPPORTED "_ZNK16QAudioDeviceInfo17isFormatSupportedERK12QAudioFormat"
#define NEAREST_FORMAT "_ZNK16QAudioDeviceInfo13nearestFormatERK12QAudioFormat"
#define PERIOD_SIZE "_ZNK12QAudioOutput10periodSizeEv"
#define START "_ZN12QAudioOutput5startEv"
auto *importedDefaultDevice asm(IMPORT(DEFAULT_OUTPUT_DEVICE)) = AudioCalls::defaultOutputDevice;
auto *importedPreferredFormat asm(IMPORT(PREFERRED_FORMAT)) = AudioCalls::preferredFormat;
auto *importedIsFormatSupported asm(IMPORT(IS_FORMAT_SUPPORTED)) = AudioCalls::isFormatSupported;
auto *importedNearestFormat asm(IMPORT(NEAREST_FORMAT)) = AudioCalls::nearestFormat;
auto *importedPeriodSize asm(IMPORT(PERIOD_SIZE)) = AudioCalls::periodSize;
auto *importedStart asm(IMPORT(START)) = AudioCalls::start;

namespace {

template <typename Function> Function real(Function /*like*/, const char *name)
{
    return loadedFunction<Function>(L"Qt5Multimedia", name);
}

// On Windows Qt prefers one format, whatever the device. Here it is that of the chosen sink, so
// that the program meets all of them.
QAudioFormat preferred;

QAudioFormat formatOf(const QString &sink)
{
    const struct {
        const char *sink;
        int size;
        QAudioFormat::SampleType type;
        int channels;
    } rows[] = {{"s16le", 16, QAudioFormat::SignedInt, 2},
        {"s32le", 32, QAudioFormat::SignedInt, 2}, {"float32le", 32, QAudioFormat::Float, 2},
        {"u8", 8, QAudioFormat::UnSignedInt, 1}};
    QAudioFormat format;
    format.setCodec("audio/pcm");
    format.setByteOrder(QAudioFormat::LittleEndian);
    format.setSampleRate(48000);
    for (const auto &row : rows) {
        if (sink == row.sink) {
            format.setSampleSize(row.size);
            format.setSampleType(row.type);
            format.setChannelCount(row.channels);
        }
    }
    return format;
}

}

// Qt names a device, and a format for it, also where there is none.
const QByteArray AudioCalls::linesWithoutServer =
    "start -1\ndevice 0 output 1 stopped 1\nconverter 1\nwriteData -1\nend\n";

QAudioDeviceInfo AudioCalls::Real::defaultOutputDevice()
{
    return real(AudioCalls::defaultOutputDevice, DEFAULT_OUTPUT_DEVICE)();
}

QAudioFormat AudioCalls::Real::preferredFormat(const QAudioDeviceInfo *info)
{
    const QAudioFormat always = real(AudioCalls::preferredFormat, PREFERRED_FORMAT)(info);
    return preferred.isValid() ? preferred : always;
}

bool AudioCalls::Real::isFormatSupported(const QAudioDeviceInfo *info, const QAudioFormat &format)
{
    return real(AudioCalls::isFormatSupported, IS_FORMAT_SUPPORTED)(info, format);
}

QAudioFormat AudioCalls::Real::nearestFormat(
    const QAudioDeviceInfo *info, const QAudioFormat &format)
{
    return real(AudioCalls::nearestFormat, NEAREST_FORMAT)(info, format);
}

int AudioCalls::Real::periodSize(const QAudioOutput *output)
{
    return real(AudioCalls::periodSize, PERIOD_SIZE)(output);
}

QIODevice *AudioCalls::Real::start(QAudioOutput *output)
{
    return real(AudioCalls::start, START)(output);
}

// Qt knows the system's choice by one name only, and follows it at the next start.
bool AudioCalls::isChosen(const QString &sink)
{
    preferred = formatOf(sink);
    return QAudioDeviceInfo::defaultOutputDevice().deviceName() == "Default Output Device";
}

void AudioCalls::preferAsQt()
{
    preferred = QAudioFormat();
}

const int AudioCalls::ratePreferredByQt = 44100;

QStringList AudioCalls::withoutServer(const QStringList &command)
{
    const auto variable = [](const char *name, const QString &value) {
        return QString(name) + '=' + value;
    };
    return QStringList({"env", "PULSE_SERVER=unix:/nonexistent", "WINEDEBUG=-all",
               variable("WINEPREFIX", qEnvironmentVariable("WINEPREFIX")),
               variable("WINEPATH", qEnvironmentVariable("PATH")), "wine"})
        + command;
}

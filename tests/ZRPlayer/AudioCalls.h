#pragma once

#include <QAudioDeviceInfo>
#include <QAudioFormat>
#include <QAudioOutput>
#include <QStringList>

// Qt Multimedia's calls as the program sees them, answered by the test.
namespace AudioCalls {

QAudioDeviceInfo defaultOutputDevice();
QAudioFormat preferredFormat(const QAudioDeviceInfo *info);
bool isFormatSupported(const QAudioDeviceInfo *info, const QAudioFormat &format);
QAudioFormat nearestFormat(const QAudioDeviceInfo *info, const QAudioFormat &format);
int periodSize(const QAudioOutput *output);
QIODevice *start(QAudioOutput *output);

// What Qt answers.
namespace Real {
QAudioDeviceInfo defaultOutputDevice();
QAudioFormat preferredFormat(const QAudioDeviceInfo *info);
bool isFormatSupported(const QAudioDeviceInfo *info, const QAudioFormat &format);
QAudioFormat nearestFormat(const QAudioDeviceInfo *info, const QAudioFormat &format);
int periodSize(const QAudioOutput *output);
QIODevice *start(QAudioOutput *output);
}

// Whether Qt has heard that the system now plays on this sink of the test's sound server.
bool isChosen(const QString &sink);
// From here to the next choice the preferred format is Qt's own, which this is the rate of.
void preferAsQt();
extern const int ratePreferredByQt;

// A command of this system that runs a program where there is no sound server.
QStringList withoutServer(const QStringList &command);
// What this test's program writes there.
extern const QByteArray linesWithoutServer;

}

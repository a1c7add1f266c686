#pragma once

#include "HostProcess.h"

#include <QString>
#include <QVector>

// Hears what a sink of the test's own sound server plays (run-test.sh --sound): "s16le", "s32le",
// "float32le" or "u8". Needs the event loop of the thread that made it.
// Errors: none; without a sound server the test program ends with a message.
class SinkRecorder
{
public:
    static constexpr int rate = 48000; // of the record, which is in one channel
    static constexpr int window = rate / 10; // samples in which a tone is looked for

    // Already hears the sink when it returns.
    explicit SinkRecorder(const QString &sink);
    ~SinkRecorder();

    // Forgets what was heard.
    void restart();
    double seconds();
    // Of the tone in the window where it is loudest; 1.0 is full scale. Exact for multiples of
    // 10 Hz.
    double amplitude(double hertz);
    // What part of that window's power the tone is: 1.0 is a pure tone.
    double purity(double hertz);

    // Makes it the sink that the system plays on. Qt hears of it a little later.
    static void choose(const QString &sink);

private:
    Q_DISABLE_COPY(SinkRecorder)

    void read();
    const float *loudest(double hertz);

    HostProcess process;
    QByteArray rest; // of a sample
    QVector<float> samples;
};

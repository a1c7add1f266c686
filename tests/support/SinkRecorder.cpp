#include "SinkRecorder.h"

#include "Turn.h"

#include <QElapsedTimer>

#include <algorithm>
#include <cmath>
#include <cstring>

namespace {

constexpr int patience = 30000; // milliseconds

double power(const float *samples)
{
    double sum = 0;
    for (int i = 0; i < SinkRecorder::window; ++i)
        sum += double(samples[i]) * samples[i];
    return sum / SinkRecorder::window;
}

// One bin of a discrete Fourier transform over the window, by Goertzel's algorithm.
double amplitudeIn(const float *samples, double hertz)
{
    const double factor = 2 * std::cos(wholeTurn * hertz / SinkRecorder::rate);
    double last = 0;
    double before = 0;
    for (int i = 0; i < SinkRecorder::window; ++i) {
        const double next = double(samples[i]) + factor * last - before;
        before = last;
        last = next;
    }
    const double square = last * last + before * before - factor * last * before;
    return 2 * std::sqrt(std::max(square, 0.0)) / SinkRecorder::window;
}

} // namespace

SinkRecorder::SinkRecorder(const QString &sink)
{
    QObject::connect(&process, &HostProcess::readyRead, &process, [this] { read(); });
    process.start("parec",
        {"--device=" + sink + ".monitor", "--raw", "--format=float32le", "--channels=1",
            QString("--rate=%1").arg(rate), "--latency-msec=20"});
    QElapsedTimer waited;
    waited.start();
    // A sink's monitor gives silence too.
    while (samples.isEmpty()) {
        if (!process.waitForReadyRead(patience) || waited.elapsed() > patience)
            qFatal("can't hear %s: %s", qPrintable(sink), process.errors().constData());
        read();
    }
}

SinkRecorder::~SinkRecorder()
{
    process.disconnect();
}

void SinkRecorder::restart()
{
    read();
    samples.clear();
}

double SinkRecorder::seconds()
{
    read();
    return samples.size() / double(rate);
}

double SinkRecorder::amplitude(double hertz)
{
    const float *found = loudest(hertz);
    return found ? amplitudeIn(found, hertz) : 0.0;
}

double SinkRecorder::purity(double hertz)
{
    const float *found = loudest(hertz);
    const double all = found ? power(found) : 0.0;
    return all > 0 ? std::pow(amplitudeIn(found, hertz), 2) / 2 / all : 0.0;
}

void SinkRecorder::choose(const QString &sink)
{
    if (!HostProcess::run("pactl", {"set-default-sink", sink}))
        qFatal("there is no sink %s", qPrintable(sink));
}

void SinkRecorder::read()
{
    rest += process.readAll();
    const int count = rest.size() / int(sizeof(float));
    const int old = samples.size();
    samples.resize(old + count);
    std::memcpy(samples.data() + old, rest.constData(), count * sizeof(float));
    rest.remove(0, count * int(sizeof(float)));
}

// Null until there is a whole window.
const float *SinkRecorder::loudest(double hertz)
{
    read();
    const float *found = nullptr;
    double most = -1;
    for (int start = 0; start + window <= samples.size(); start += window / 2) {
        const double here = amplitudeIn(samples.constData() + start, hertz);
        if (here > most) {
            most = here;
            found = samples.constData() + start;
        }
    }
    return found;
}

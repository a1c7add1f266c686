#pragma once

#include "ProcessUse.h"

#include <QVector>

// What was measured of one player. Times are seconds, latencies milliseconds.

// A picture that came onto the screen.
struct PreviewPicture {
    double seen; // when
    double made; // its time code
    double latency() const { return (seen - made) * 1000; }
};

struct PreviewStart {
    double first; // from the connection to the first picture
    double wait; // from the connection until that picture was made
    double own() const { return first - wait; }
};

struct PreviewUse {
    double cpu = -1; // in cores; below 0 when it wasn't measured
    double serverCpu = 0; // of the X server
    ProcessUse::Memory memory = {};
};

// A time of playing without a disturbance.
struct PreviewPlaying {
    QVector<PreviewPicture> pictures;
    double began = 0, ended = 0;
    PreviewUse use;
    bool hasSound = false;

    bool isKnown() const { return ended > began; }
    double length() const { return ended - began; }
    QVector<double> latencies(double from, double to) const;
    QVector<double> latencies() const { return latencies(began, ended); }
    // Times without a new picture.
    QVector<double> gaps() const;
};

// After a dead network; -1 for never.
struct PreviewRecovery {
    double sinceBack = -1, sinceData = -1; // until latency was as before
    double dataSinceBack = -1;
    double latencyAfter = 0;
};

struct PreviewFigures {
    QVector<PreviewStart> starts;
    int failedStarts = 0;
    PreviewPlaying small, large; // 1280x720 and 1920x1080
    QVector<PreviewRecovery> recoveries;
    PreviewUse idle; // without a stream
};

// 0 of no values.
double percentile(QVector<double> values, double part);
double median(const QVector<double> &values);
double maximum(const QVector<double> &values);

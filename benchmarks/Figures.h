#pragma once

#include <QString>
#include <QVector>

#include <algorithm>
#include <cstdio>

// One line of figures: what, then minimum, median and maximum of the runs.
inline void printFigures(const QString &what, QVector<double> runs, const char *unit)
{
    std::sort(runs.begin(), runs.end());
    std::printf("%-48s min %8.1f  median %8.1f  max %8.1f %s  (%d runs)\n", qPrintable(what),
        runs.first(), runs[runs.size() / 2], runs.last(), unit, runs.size());
    std::fflush(stdout);
}

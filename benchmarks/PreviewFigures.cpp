#include "PreviewFigures.h"

#include <algorithm>

QVector<double> PreviewPlaying::latencies(double from, double to) const
{
    QVector<double> values;
    for (const PreviewPicture &picture : pictures) {
        if (picture.seen >= from && picture.seen < to)
            values << picture.latency();
    }
    return values;
}

QVector<double> PreviewPlaying::gaps() const
{
    QVector<double> values;
    double last = began;
    for (const PreviewPicture &picture : pictures) {
        values << picture.seen - last;
        last = picture.seen;
    }
    return values << ended - last;
}

double percentile(QVector<double> values, double part)
{
    if (values.isEmpty())
        return 0;
    std::sort(values.begin(), values.end());
    return values[int((values.size() - 1) * part)];
}

double median(const QVector<double> &values)
{
    return percentile(values, 0.5);
}

double maximum(const QVector<double> &values)
{
    return percentile(values, 1.0);
}

#include "PreviewTables.h"

#include <QStringList>

#include <algorithm>
#include <cstdio>

namespace {

const double shortestFreeze = 0.2;
const double minute = 60.0;

// What wasn't measured is a dash.
QString number(double value, int digits, bool isKnown)
{
    return isKnown ? QString::number(value, 'f', digits) : QStringLiteral("-");
}

QString milliseconds(double seconds, bool isKnown)
{
    return number(seconds * 1000, 0, isKnown);
}

void printRow(const QString &name, const QStringList &cells)
{
    std::printf("%-18s", qPrintable(name));
    for (const QString &cell : cells)
        std::printf(" %12s", qPrintable(cell));
    std::printf("\n");
}

void printHead(const char *title, const QStringList &columns)
{
    std::printf("\n%s\n", title);
    printRow(QString(), columns);
}

// One value of each record, where it isn't below 0.
template <typename Record, typename Value>
QVector<double> column(const QVector<Record> &records, Value value)
{
    QVector<double> values;
    for (const Record &record : records) {
        if (value(record) >= 0)
            values << value(record);
    }
    return values;
}

void printMinute(const char *name, const PreviewPlaying &playing, double from)
{
    const QVector<double> latencies = playing.latencies(from, from + minute);
    printRow(QLatin1String(name),
        {number(median(latencies), 1, true), number(percentile(latencies, 0.95), 1, true)});
}

QStringList useCells(const PreviewUse &use)
{
    const bool isKnown = use.cpu >= 0;
    return {number(use.cpu, 3, isKnown), number(use.serverCpu, 3, isKnown),
        number(use.memory.resident, 0, isKnown), number(use.memory.proportional, 0, isKnown)};
}

} // namespace

void PreviewTables::printStarts() const
{
    printHead("First picture, milliseconds after the connection. \"wait\" is until that picture was"
              " made, \"own\" the rest.",
        {"median", "max", "wait", "own", "own max", "runs", "failed"});
    for (const Row &row : rows) {
        const QVector<PreviewStart> &starts = row.figures.starts;
        const auto first = column(starts, [](const PreviewStart &start) { return start.first; });
        const auto wait = column(starts, [](const PreviewStart &start) { return start.wait; });
        const auto own = column(starts, [](const PreviewStart &start) { return start.own(); });
        const bool isKnown = !starts.isEmpty();
        printRow(row.player,
            {milliseconds(median(first), isKnown), milliseconds(maximum(first), isKnown),
                milliseconds(median(wait), isKnown), milliseconds(median(own), isKnown),
                milliseconds(maximum(own), isKnown), QString::number(starts.size()),
                QString::number(row.figures.failedStarts)});
    }
}

void PreviewTables::printLatencies() const
{
    printHead("Latency, milliseconds from time code to screen, 1280x720. Freezes are times over"
              " 200 ms without a new picture.",
        {"median", "p95", "pictures/s", "longest gap", "freezes", "sound"});
    for (const Row &row : rows) {
        const PreviewPlaying &playing = row.figures.small;
        const bool isKnown = playing.isKnown();
        const QVector<double> latencies = playing.latencies();
        const QVector<double> gaps = playing.gaps();
        const auto freezes = std::count_if(
            gaps.begin(), gaps.end(), [](double gap) { return gap > shortestFreeze; });
        printRow(row.player,
            {number(median(latencies), 1, isKnown), number(percentile(latencies, 0.95), 1, isKnown),
                number(latencies.size() / playing.length(), 1, isKnown),
                milliseconds(maximum(gaps), isKnown), number(freezes, 0, isKnown),
                playing.hasSound ? "on" : "off"});
        if (playing.length() > 2 * minute) {
            printMinute("  first minute", playing, playing.began);
            printMinute("  last minute", playing, playing.ended - minute);
        }
    }
}

void PreviewTables::printRecoveries() const
{
    printHead("Recovery from a dead network, milliseconds until the latency is as before, and how"
              " often it never was.",
        {"since back", "max", "since data", "max", "data came", "latency then", "runs", "never"});
    for (const Row &row : rows) {
        const QVector<PreviewRecovery> &recoveries = row.figures.recoveries;
        using R = PreviewRecovery;
        const auto back = column(recoveries, [](const R &r) { return r.sinceBack; });
        const auto data = column(recoveries, [](const R &r) { return r.sinceData; });
        const auto came = column(recoveries, [](const R &r) { return r.dataSinceBack; });
        const auto after = column(recoveries, [](const R &r) { return r.latencyAfter; });
        const bool isKnown = !back.isEmpty();
        printRow(row.player,
            {milliseconds(median(back), isKnown), milliseconds(maximum(back), isKnown),
                milliseconds(median(data), isKnown), milliseconds(maximum(data), isKnown),
                milliseconds(median(came), !came.isEmpty()),
                number(median(after), 1, !after.isEmpty()), QString::number(recoveries.size()),
                QString::number(recoveries.size() - back.size())});
    }
}

void PreviewTables::printUse() const
{
    printHead("CPU in cores (the X server's beside it), and memory in MiB.",
        {"720p", "X server", "RSS", "PSS", "1080p", "X server", "RSS", "PSS"});
    for (const Row &row : rows) {
        printRow(row.player, useCells(row.figures.small.use) + useCells(row.figures.large.use));
        if (row.figures.idle.cpu >= 0)
            printRow(QStringLiteral("  no preview"), useCells(row.figures.idle));
    }
}

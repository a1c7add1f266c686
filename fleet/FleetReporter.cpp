#include "FleetReporter.h"

#include "FleetFrame.h"

#include <QTimer>

#include <algorithm>

namespace {

constexpr int burstSize = 20;
constexpr int burstMs = 10;

int milliseconds(double seconds)
{
    return int(seconds * 1000);
}

}

FleetReporter::FleetReporter(
    FleetReportSite &site, const QVector<FleetReport> &reports, QObject *parent) :
    QObject(parent),
    site(site),
    waiting(reports)
{ }

void FleetReporter::heard(const QString &method, const QString &workstation)
{
    destid = workstation;
    const auto starts =
        std::stable_partition(waiting.begin(), waiting.end(), [&method](const FleetReport &report) {
            return !report.key.isEmpty()
                || (report.on != method && report.on != QLatin1String("any"));
        });
    std::for_each(starts, waiting.end(), [this](const FleetReport &report) { begin(report); });
    waiting.erase(starts, waiting.end());
}

void FleetReporter::begin(const FleetReport &report)
{
    QTimer::singleShot(milliseconds(report.afterSeconds), Qt::PreciseTimer, this,
        [this, report] { play(report, report.times); });
}

bool FleetReporter::press(const QString &key)
{
    bool found = false;
    for (const FleetReport &report : qAsConst(waiting)) {
        if (report.key != key)
            continue;
        found = true;
        begin(report);
    }
    return found;
}

void FleetReporter::play(const FleetReport &report, int times)
{
    if (destid.isEmpty()) {
        site.reportTold("trouble",
            {{QStringLiteral("reason"),
                QStringLiteral("a report before any workstation has spoken")}});
        return;
    }
    sendBurst({report.text(site.reportSrcid(), destid), destid, report.count});
    if (times > 1)
        QTimer::singleShot(milliseconds(report.everySeconds), Qt::PreciseTimer, this,
            [this, report, times] { play(report, times - 1); });
}

// The rest goes out later. When the camera falls silent there is no rest.
void FleetReporter::sendBurst(Flood flood)
{
    const QByteArray datagram = FleetFrame::encode(flood.text);
    const int end = std::min(flood.sent + burstSize, flood.count);
    while (flood.sent < end && site.sendReport(datagram))
        ++flood.sent;
    if (flood.sent == end && end < flood.count) {
        QTimer::singleShot(burstMs, Qt::PreciseTimer, this, [this, flood] { sendBurst(flood); });
    } else if (flood.sent > 0) {
        site.reportTold("report",
            {{QStringLiteral("destid"), flood.destid}, {QStringLiteral("count"), flood.sent},
                {QStringLiteral("raw"), QString::fromUtf8(flood.text)}});
    }
}

#include "FactoryReportThread.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QScopedPointer>

namespace {
constexpr unsigned long pollMilliseconds = 5;
constexpr int mostDroppedLines = 10;
}

FactoryReportThread::FactoryReportThread(
    const QString &srcid, const Source &source, const Sink &sink) :
    srcid(srcid),
    source(source),
    sink(sink)
{
    setName("FactoryReportThread");
}

FactoryReportThread::~FactoryReportThread() = default;

void FactoryReportThread::run()
{
    while (!isStopped()) {
        const QScopedPointer<QJsonObject> message(source());
        if (message)
            handle(*message);
        else
            sleep(pollMilliseconds);
    }
    if (dropped > 0)
        qDebug("dropped %d messages", dropped);
}

void FactoryReportThread::handle(const QJsonObject &message)
{
    const VorlynReport report = VorlynReport::fromJson(message);
    if (report.isValid() && report.srcid == srcid) {
        sink(report);
    } else if (++dropped <= mostDroppedLines) {
        qDebug("dropped %s", QJsonDocument(message).toJson(QJsonDocument::Compact).constData());
    }
}

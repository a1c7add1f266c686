#pragma once

#include "VorlynReport.h"
#include "ZRThread.h"

#include <functional>

// Takes messages from a queue as they come and hands on the reports of one camera. Messages that
// are none, or another camera's, are thrown away, the first few of them with a line in the log.
class FactoryReportThread : public ZRThread
{
public:
    // Both run on this thread. The source gives null when it has nothing; what it gives is the
    // thread's.
    using Source = std::function<QJsonObject *()>;
    using Sink = std::function<void(const VorlynReport &)>;

    FactoryReportThread(const QString &srcid, const Source &source, const Sink &sink);
    ~FactoryReportThread() override;

    void run() override;

private:
    void handle(const QJsonObject &message);

    const QString srcid;
    const Source source;
    const Sink sink;
    int dropped = 0;
};

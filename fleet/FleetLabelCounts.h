#pragma once

#include <QJsonObject>
#include <QString>

// How often calls were given since the settings were written. The counts lie in the file
// "label-printer.counts" in the printer's home, as programs may load the library for each label.
class FleetLabelCounts
{
public:
    explicit FleetLabelCounts(const QString &home);

    // Goes on with the counts of this edition of the settings, or begins afresh.
    void begin(const QByteArray &edition);
    // The number of this call, from 1. The file has it when this returns.
    int next(const QString &call);

private:
    const QString path;
    QJsonObject counts; // by the name of the call, and "edition"
};

#pragma once

#include "FleetLabelCounts.h"

#include <QMap>
#include <QStringList>

// How the simulated label printer behaves: the file "label-printer.json" in its home folder. No
// file, and a wrong one, means the defaults. docs/fleet.md has its keys.
class FleetLabelSettings
{
public:
    struct Failure {
        int result; // given instead of obeying
        int at; // only to this call, counted from 1 since the file was written; 0: to every one
    };
    struct Values {
        QString folder; // where labels and calls are written
        double density = 1 / 0.0425; // dots per millimetre
        bool anyPort = true;
        QStringList ports; // that are there, unless anyPort
        QMap<QString, Failure> failures; // by the name of the call
    };

    explicit FleetLabelSettings(const QString &home);

    // Reads the file afresh. One line when it was written anew and is wrong, else an empty text.
    QString refresh();
    // What this call has to fail with, or null. Counts it where that depends on its number.
    const Failure *failureOf(const QString &call);

    const Values &values() const { return current; }

private:
    QString read(const QByteArray &json);

    const QString home;
    QByteArray edition; // of the file as last read
    Values current;
    FleetLabelCounts counts;
};

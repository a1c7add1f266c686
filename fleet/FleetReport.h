#pragma once

#include <QByteArray>
#include <QJsonObject>
#include <QString>

// What a camera tells by itself, and when: an entry of "reports" in a scenario.
struct FleetReport {
    QString on = QStringLiteral("any"); // the method of the request from which it is counted
    QString key; // the line of input from which it is counted, each time, in place of a request
    double afterSeconds = 0;
    double everySeconds = 1;
    int times = 1;
    int count = 1; // datagrams each time
    QJsonObject keys; // of the message
    bool isRaw = false; // a text, also an empty one, in place of a message
    QByteArray raw;

    // Reads an entry; returns what is wrong with it, or an empty text.
    QString read(const QJsonObject &object);
    // The message: the camera's envelope, and the keys over it.
    QByteArray text(const QString &srcid, const QString &destid) const;
};

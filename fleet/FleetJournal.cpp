#include "FleetJournal.h"

#include <QDateTime>
#include <QJsonDocument>
#include <QMetaMethod>

#include <cstdio>

FleetJournal::FleetJournal(QObject *parent) : QObject(parent) { }

bool FleetJournal::open(const QString &path, QString *error)
{
    if (path.isEmpty())
        return true;
    bool good;
    if (path == QLatin1String("-")) {
        good = file.open(stdout, QIODevice::WriteOnly);
    } else {
        file.setFileName(path);
        good = file.open(QIODevice::WriteOnly | QIODevice::Truncate);
    }
    if (!good)
        *error = QStringLiteral("journal %1: %2").arg(path, file.errorString());
    return good;
}

void FleetJournal::close()
{
    file.close();
}

bool FleetJournal::isRead() const
{
    static const QMetaMethod signal = QMetaMethod::fromSignal(&FleetJournal::written);
    return file.isOpen() || isSignalConnected(signal);
}

void FleetJournal::write(const char *event, QJsonObject entry)
{
    if (!isRead())
        return;
    entry[QStringLiteral("time")] = QDateTime::currentDateTimeUtc().toString(Qt::ISODateWithMs);
    entry[QStringLiteral("event")] = QLatin1String(event);
    if (file.isOpen()) {
        file.write(QJsonDocument(entry).toJson(QJsonDocument::Compact) + '\n');
        file.flush();
    }
    emit written(entry);
}

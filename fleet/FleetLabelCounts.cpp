#include "FleetLabelCounts.h"

#include <QDebug>
#include <QDir>
#include <QFile>
#include <QJsonDocument>

FleetLabelCounts::FleetLabelCounts(const QString &home) :
    path(QDir(home).filePath(QStringLiteral("label-printer.counts")))
{ }

void FleetLabelCounts::begin(const QByteArray &edition)
{
    const QJsonObject fresh{{QStringLiteral("edition"), QString::fromLatin1(edition)}};
    QFile file(path);
    const QByteArray json = file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    counts = QJsonDocument::fromJson(json).object();
    if (counts[QStringLiteral("edition")] != fresh[QStringLiteral("edition")])
        counts = fresh;
}

int FleetLabelCounts::next(const QString &call)
{
    const int number = counts[call].toInt() + 1;
    counts[call] = number;
    QFile file(path);
    const QByteArray json = QJsonDocument(counts).toJson(QJsonDocument::Compact);
    if (!file.open(QIODevice::WriteOnly) || file.write(json) != json.size() || !file.flush())
        qWarning().noquote() << file.fileName() + ": " + file.errorString();
    return number;
}

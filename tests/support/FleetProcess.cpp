#include "FleetProcess.h"

#include "TestNetwork.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>

namespace {

void writeFile(const QString &path, const QByteArray &content)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
        qFatal("can't write %s", qPrintable(path));
}

}

FleetProcess::FleetProcess(const QString &interface, int count, const QString &firstAddress)
{
    addOptions({"--interface", interface, "--count", QString::number(count), "--first-address",
        firstAddress, "--journal", folder.filePath("journal"), "--restart-seconds", "1"});
}

FleetProcess::~FleetProcess()
{
    stop();
}

void FleetProcess::addOptions(const QStringList &more)
{
    options += more;
}

QJsonObject FleetProcess::unhurried()
{
    const QJsonObject late = {{"on", "search"}, {"delay-ms", 250}};
    return {{"camera", "all"}, {"rules", QJsonArray{late}}};
}

void FleetProcess::setScenario(const QJsonObject &scenario)
{
    const QString path = folder.filePath("scenario.json");
    writeFile(path, QJsonDocument(scenario).toJson());
    addOptions({"--scenario", path});
}

bool FleetProcess::start()
{
    process.start(
        "nsenter", TestNetwork::atCameras(launcher + QStringList(VORLYN_FLEET) + options));
    while (process.state() != QProcess::NotRunning) {
        if (process.canReadLine())
            return process.readLine().startsWith("READY");
        if (!process.waitForReadyRead(20000))
            break;
    }
    qWarning("%s", process.readAllStandardError().constData());
    return false;
}

bool FleetProcess::stop()
{
    if (process.state() == QProcess::NotRunning)
        return true;
    process.terminate();
    return process.waitForFinished(20000) && process.exitStatus() == QProcess::NormalExit
        && process.exitCode() == 0;
}

bool FleetProcess::order(const QByteArray &line)
{
    process.write(line + '\n');
    return process.waitForBytesWritten(20000);
}

void FleetProcess::endInput(const QByteArray &line)
{
    process.write(line);
    process.closeWriteChannel();
}

QVector<QJsonObject> FleetProcess::events(const QString &event) const
{
    QFile journal(folder.filePath("journal"));
    QVector<QJsonObject> found;
    if (!journal.open(QIODevice::ReadOnly))
        return found;
    for (const QByteArray &line : journal.readAll().split('\n')) {
        const QJsonObject entry = QJsonDocument::fromJson(line).object();
        if (entry["event"].toString() == event)
            found.append(entry);
    }
    return found;
}

QVector<QJsonObject> FleetProcess::requests(const QString &method) const
{
    QVector<QJsonObject> found;
    for (const QJsonObject &entry : events("request")) {
        if (entry["method"].toString() == method)
            found.append(QJsonDocument::fromJson(entry["raw"].toString().toUtf8()).object());
    }
    return found;
}
